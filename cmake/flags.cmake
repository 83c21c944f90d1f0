# How every target is compiled: the language, the warnings, the floating-point rules.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

# Same floats everywhere: a contracted multiply-add moves pixels.
add_compile_options(-ffp-contract=off)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86|x86_64|AMD64)$" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  # The old floating-point unit would keep more digits than the pixels are defined with.
  add_compile_options(-msse2 -mfpmath=sse)
endif()
# Messages name sources from the project root, in any build folder.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Unique symbols would keep the module in memory after it is closed.
  add_compile_options(-fno-gnu-unique)
endif()
if(LUMIVAR_SANITIZE)
  add_compile_options(-fsanitize=${LUMIVAR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The checks that a sanitizer adds make this warning cry wolf, in the standard library's <regex> for one.
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND LUMIVAR_SANITIZE MATCHES "address")
    add_compile_definitions(__SANITIZE_ADDRESS__=1)  # g++ says it itself
  endif()
  if(LUMIVAR_SANITIZE MATCHES "undefined")
    add_compile_options(-fsanitize=float-cast-overflow)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
      # It would give the objects of the kernels type information, which the linker shares between processors.
      add_compile_options(-fno-sanitize=function)
    endif()
  endif()
  add_link_options(-fsanitize=${LUMIVAR_SANITIZE})
endif()
if(LUMIVAR_FUZZ)
  # What the code passes through guides the fuzzer. Its main function is linked to the fuzzers alone.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# The rooms, hosts and tools meet these; tests meet the shorter list. Tests name the fields that they set, {.width = 96}: g++
# would warn of all the others.
set(LUMIVAR_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wdouble-promotion
                     -Wnon-virtual-dtor -Wold-style-cast -Wcast-align -Wformat=2)
set(LUMIVAR_TEST_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wno-missing-field-initializers)
