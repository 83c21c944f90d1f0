# Code for 64-bit Windows from Debian's MinGW compiler, on a machine of another kind: Wine runs what is built, the tests too.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
# The compiler that knows the standard's threads and locks.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# No machine that the module goes to has the compiler's libraries.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -static)
# Debian has the 64-bit program outside the paths that are searched, and its own script wants the 32-bit one too.
# In the language that fixes the code page, and without the two libraries that a new prefix would ask to fetch.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_COMMAND} -E env LC_ALL=C.UTF-8 WINEPREFIX=${CMAKE_BINARY_DIR}/wine WINEDEBUG=-all
    WINEDLLOVERRIDES=mscoree,mshtml= /usr/lib/wine/wine64)
