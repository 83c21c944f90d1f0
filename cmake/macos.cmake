# What the macOS bundle is built for: the processors that the host runs on, as far as the SDK still has them.
include(CheckCXXSourceCompiles)

if(NOT CMAKE_OSX_ARCHITECTURES)
  set(CMAKE_OSX_ARCHITECTURES i386)
  check_cxx_source_compiles("#include <string>\nint main() { return std::string().size() != 0; }" LUMIVAR_SDK_HAS_I386)
  set(CMAKE_OSX_ARCHITECTURES x86_64)
  if(LUMIVAR_SDK_HAS_I386)
    list(APPEND CMAKE_OSX_ARCHITECTURES i386)
  endif()
endif()

set(LUMIVAR_SIGN_IDENTITY "" CACHE STRING "Identity that codesign signs the bundle with; unsigned if empty")
