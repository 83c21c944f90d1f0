# add_room(NAME base SOURCES string.cpp ... HEADERS include/base/string.h ... [DEPENDS osapi ...])
#
# A room is one static library. Others see the headers under its include/ folder and nothing else, so
# a room that does not name another in DEPENDS cannot include from it: the build keeps the layers.
# Headers named under DEPENDS_PRIVATE are for the room's own sources only.
function(add_room)
  cmake_parse_arguments(ROOM "" "NAME" "SOURCES;HEADERS;DEPENDS;DEPENDS_PRIVATE" ${ARGN})
  add_library(${ROOM_NAME} STATIC ${ROOM_SOURCES})
  target_sources(${ROOM_NAME} PUBLIC FILE_SET HEADERS BASE_DIRS include FILES ${ROOM_HEADERS})
  target_compile_options(${ROOM_NAME} PRIVATE ${LUMIVAR_WARNINGS})
  target_link_libraries(${ROOM_NAME} PUBLIC ${ROOM_DEPENDS} PRIVATE ${ROOM_DEPENDS_PRIVATE})
endfunction()

# compile_plainly_for_tests(TARGET)
#
# Without optimisation in builds that are for tests alone: twice as fast to compile.
function(compile_plainly_for_tests target)
  if(LUMIVAR_QUICK_TESTS)
    target_compile_options(${target} PRIVATE -O0)
  endif()
endfunction()

# compile_briefly(TARGET)
#
# With little optimisation, in optimised builds: what takes longer to optimise than it will ever run.
function(compile_briefly target)
  if(NOT LUMIVAR_QUICK_TESTS AND CMAKE_BUILD_TYPE STREQUAL "Release")
    target_compile_options(${target} PRIVATE -O1)
  endif()
endfunction()

# compile_together(TARGET [SOURCES_AT_A_TIME])
#
# Several sources at a time (eight, where nothing is said), with LUMIVAR_TOGETHER: their common headers are read once. They share
# names then: two that both define one, in a nameless namespace too, do not belong into one target, unless one of them has the
# source property SKIP_UNITY_BUILD_INCLUSION. The plug-in's own rooms are not for this: what ships is compiled as it stands.
function(compile_together target)
  if(LUMIVAR_TOGETHER)
    set(batch 8)
    if(ARGC GREATER 1)
      set(batch ${ARGV1})
    endif()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${batch})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # It takes the sources for headers, in which a nameless namespace would be a mistake.
      target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
    endif()
  endif()
endfunction()

# add_room_test_parts(NAME SHARDS TIMEOUT LABELS COMMAND...)
#
# CTest's tests for a GoogleTest program, or for what its arguments name: one, or SHARDS of them side by side.
function(add_room_test_parts name shards timeout labels)
  foreach(shard RANGE 1 ${shards})
    set(part ${name})
    if(shards GREATER 1)
      string(APPEND part .${shard})
    endif()
    math(EXPR index "${shard} - 1")
    add_test(NAME ${part} COMMAND ${ARGN})
    set_tests_properties(${part} PROPERTIES LABELS "${labels}" TIMEOUT ${timeout}
                         ENVIRONMENT "GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${index}")
  endforeach()
endfunction()

# add_room_test(NAME base_test SOURCES array_test.cpp string_test.cpp ... DEPENDS base ... [LABELS unit]
#               [DEFINITIONS NAME=VALUE ...] [TIMEOUT 900] [SHARDS 1] [RELEASE_ONLY Whole/*:Slow.*] [ALL_ROUNDS])
#
# A GoogleTest program: all the tests of a room that have a label in common. A new test source goes into the list of its room's
# program. A source needs a program of its own only where its label differs, or what it is linked with would disturb the others.
#
# CTest runs the program as one test of its name. A failing case is named in the output. With SHARDS of more than one, CTest runs
# as many parts side by side, named base_test.1, base_test.2 and so on; each has its share of the cases.
# RELEASE_ONLY is a GoogleTest filter. The cases that it names become a CTest test of their own, base_test.whole, with the label
# release_only beside the others: the test presets of the sanitizers, of clang++ and of the other processors leave it out. A
# program whose cases are all of this kind has LABELS host release_only instead.
# With ALL_ROUNDS the program plays a third of its random rounds (tests/support/rounds.h), and CTest has it a second time, as
# base_test.all_rounds with the label slow alone, which plays all of them.
#
# Cases share a process: a case that changes what belongs to the process (its folder, its environment, a signal's
# handler) puts it back, or runs in a child (tests/support/child.h). Sources share names: what is not a test stands in a nameless
# namespace. tests/support/test_main.cpp refuses two cases of one name.
#
# Ordinary tests are compiled without optimisation, in every build, with GoogleTest's header compiled once for all of them. What
# runs long is optimised: the rooms, the libraries of tests/support, and tests with the label property, golden or slow.
function(add_room_test)
  cmake_parse_arguments(TEST "ALL_ROUNDS" "NAME;TIMEOUT;SHARDS;RELEASE_ONLY" "SOURCES;DEPENDS;LABELS;DEFINITIONS" ${ARGN})
  if(NOT TEST_LABELS)
    set(TEST_LABELS unit)
  endif()
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 900)
  endif()
  if(NOT TEST_SHARDS)
    set(TEST_SHARDS 1)
  endif()
  if(CMAKE_CROSSCOMPILING_EMULATOR AND NOT WIN32)
    # An emulator of a processor takes about as many times as long; Wine is none.
    math(EXPR TEST_TIMEOUT "10 * ${TEST_TIMEOUT}")
    list(APPEND TEST_DEFINITIONS LUMIVAR_EMULATED)
  endif()
  if(TEST_ALL_ROUNDS)
    list(APPEND TEST_DEFINITIONS LUMIVAR_SOME_ROUNDS)
  endif()
  add_executable(${TEST_NAME} ${TEST_SOURCES})
  target_compile_options(${TEST_NAME} PRIVATE ${LUMIVAR_TEST_WARNINGS})
  if(NOT TEST_LABELS MATCHES "property|golden|slow")
    target_compile_options(${TEST_NAME} PRIVATE -O0)
    target_precompile_headers(${TEST_NAME} REUSE_FROM test_main_test)
  endif()
  target_compile_definitions(${TEST_NAME} PRIVATE ${TEST_DEFINITIONS})
  compile_together(${TEST_NAME})
  target_link_libraries(${TEST_NAME} PRIVATE ${TEST_DEPENDS} test_main)
  if(TEST_RELEASE_ONLY)
    add_room_test_parts(${TEST_NAME}.whole ${TEST_SHARDS} ${TEST_TIMEOUT} "${TEST_LABELS};release_only" ${TEST_NAME}
                        --gtest_filter=${TEST_RELEASE_ONLY})
    list(APPEND TEST_ARGUMENTS --gtest_filter=-${TEST_RELEASE_ONLY})
  endif()
  add_room_test_parts(${TEST_NAME} ${TEST_SHARDS} ${TEST_TIMEOUT} "${TEST_LABELS}" ${TEST_NAME} ${TEST_ARGUMENTS})
  if(TEST_ALL_ROUNDS)
    add_room_test_parts(${TEST_NAME}.all_rounds ${TEST_SHARDS} ${TEST_TIMEOUT} slow
                        ${CMAKE_COMMAND} -E env LUMIVAR_ALL_ROUNDS=1 $<TARGET_FILE:${TEST_NAME}>)
  endif()
endfunction()
