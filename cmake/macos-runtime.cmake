# What a module for macOS is linked with when it is built elsewhere: the compiler's own C++ run-time, which goes into the module,
# and the system's library, which is there. The compiler builds its run-time when it first links a program, and keeps it.
set(PROBE ${CMAKE_BINARY_DIR}/CMakeFiles/macos-runtime)
file(WRITE ${PROBE}/probe.cpp "#include <stdexcept>\nint main(int argc, char**) { if (argc > 1) throw std::runtime_error(\"\"); }\n")
message(STATUS "Looking for the C++ run-time for ${LUMIVAR_MACOS_PROCESSOR} (two minutes the first time)")
separate_arguments(FLAGS UNIX_COMMAND "${CMAKE_CXX_FLAGS}")
execute_process(
  COMMAND ${CMAKE_CXX_COMPILER} ${CMAKE_CXX_COMPILER_ARG1} ${FLAGS} -O2 -v ${PROBE}/probe.cpp -o ${PROBE}/probe
  OUTPUT_VARIABLE SAID ERROR_VARIABLE SAID RESULT_VARIABLE FAILED)
foreach(archive libc++ libc++abi)
  string(REPLACE "+" "[+]" name ${archive})
  if(FAILED OR NOT SAID MATCHES "zig ld [^\n]* ([^ \n]*/${name}[.]a)")
    message(FATAL_ERROR "The compiler linked no ${archive}.a:\n${SAID}")
  endif()
  file(REAL_PATH ${CMAKE_MATCH_1} path)
  link_libraries(${path})
endforeach()
# Not the compiler's library of helpers: it has the C library's functions of memory and texts too, in plain loops.

# The list of what the system's library exports, in words that lld 19 knows: it does not know arm64e.x1 yet, and the list
# says arm64e, as which the system itself is compiled, where arm64 is meant too.
file(READ ${LUMIVAR_ZIG}/lib/libc/darwin/libSystem.tbd EXPORTS)
string(REGEX REPLACE ",[ \n]*arm64e[.]x1-[a-z]+" "" EXPORTS "${EXPORTS}")
string(REPLACE "arm64e-" "arm64-" EXPORTS "${EXPORTS}")
file(CONFIGURE OUTPUT ${PROBE}/libSystem.tbd CONTENT "${EXPORTS}" @ONLY)
link_libraries(${PROBE}/libSystem.tbd)

# The linker, called without a compiler. No symbols of the debugger, which would name every source on the build machine; an
# ad-hoc signature of every page, since arm64 runs no code without one.
set(CMAKE_CXX_CREATE_SHARED_MODULE
    "ld64.lld-19 -bundle -arch ${LUMIVAR_MACOS_PROCESSOR} -platform_version macos ${LUMIVAR_MACOS_MINIMUM} ${LUMIVAR_MACOS_MINIMUM}\
 -adhoc_codesign -dead_strip -S -x <LINK_FLAGS> <OBJECTS> <LINK_LIBRARIES> -o <TARGET>")
unset(CMAKE_CXX_LINKER_WRAPPER_FLAG)
unset(CMAKE_CXX_LINKER_WRAPPER_FLAG_SEP)
