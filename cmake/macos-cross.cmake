# Code for macOS 11 and later, built on Linux. LUMIVAR_MACOS_PROCESSOR is x86_64 or arm64: one build for each, and the second
# joins both into one file (LUMIVAR_OTHER_SLICE in AE/CMakeLists.txt).
#
# The compiler, its C++ run-time and the list of what the system's library exports come with ziglang, whose folder is
# LUMIVAR_ZIG. It links nothing here: its own linker leaves out the list of exports and knows no loadable bundles.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES LUMIVAR_MACOS_PROCESSOR LUMIVAR_ZIG)
set(LUMIVAR_ZIG "" CACHE PATH "Folder of ziglang, with the program zig in it")
set(LUMIVAR_MACOS_PROCESSOR "" CACHE STRING "x86_64 or arm64")
if(NOT EXISTS ${LUMIVAR_ZIG}/zig)
  message(FATAL_ERROR "There is no compiler for macOS at \"${LUMIVAR_ZIG}/zig\": scripts/build-macos brings it")
endif()

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${LUMIVAR_MACOS_PROCESSOR})
set(LUMIVAR_MACOS_MINIMUM 11.0)
set(NAME_OF_x86_64 x86_64)
set(NAME_OF_arm64 aarch64)
set(CMAKE_CXX_COMPILER ${LUMIVAR_ZIG}/zig c++)
set(CMAKE_CXX_FLAGS_INIT "-target ${NAME_OF_${LUMIVAR_MACOS_PROCESSOR}}-macos.${LUMIVAR_MACOS_MINIMUM}")
set(CMAKE_AR llvm-ar-19)
set(CMAKE_RANLIB llvm-ranlib-19)
set(LUMIVAR_LIPO llvm-lipo-19)
# CMake would describe processor and system in options of another vendor's compiler.
set(CMAKE_OSX_ARCHITECTURES "")
set(CMAKE_OSX_SYSROOT "")
set(CMAKE_OSX_DEPLOYMENT_TARGET "")
# Nothing that is built here runs here, and programs are not linked.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
