# Code for i386 from the native compiler of an x86_64 Debian. Programs of both kinds run there, so this is
# no cross build: the system and its processor stay as they are.
#
# The C library's 32-bit headers lean on the kernel's, which both processors share; they lie in the native
# folder, and only a package that drives the cross compilers off the machine would link them into the common one.
set(CMAKE_CXX_FLAGS_INIT "-m32 -idirafter /usr/include/x86_64-linux-gnu")
# GoogleTest asks its questions of the system in C.
set(CMAKE_C_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT}")
