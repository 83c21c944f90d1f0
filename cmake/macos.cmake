# What the bundle is built for on a Mac: both processors that the host runs on, and every system from macOS 11 on.
if(NOT CMAKE_OSX_ARCHITECTURES)
  set(CMAKE_OSX_ARCHITECTURES x86_64 arm64)
endif()
if(NOT CMAKE_OSX_DEPLOYMENT_TARGET)
  set(CMAKE_OSX_DEPLOYMENT_TARGET 11.0)
endif()

set(LUMIVAR_SIGN_IDENTITY "" CACHE STRING "Identity that codesign signs the bundle with; unsigned if empty")
