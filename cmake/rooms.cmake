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
# Without optimisation in builds that are for tests alone and take long: up to twice as fast to compile.
function(compile_plainly_for_tests target)
  if(LUMIVAR_QUICK_TESTS)
    target_compile_options(${target} PRIVATE -O0)
  endif()
endfunction()

# add_room_test(NAME string_test SOURCES string_test.cpp DEPENDS base [LABELS unit] [TIMEOUT 60])
#
# One GoogleTest program; each of its tests becomes a CTest of its own, named PROGRAM.Suite.Test.
function(add_room_test)
  cmake_parse_arguments(TEST "" "NAME;TIMEOUT" "SOURCES;DEPENDS;LABELS;DEFINITIONS" ${ARGN})
  if(NOT TEST_LABELS)
    set(TEST_LABELS unit)
  endif()
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 60)
  endif()
  if(CMAKE_CROSSCOMPILING_EMULATOR)
    # An emulator takes about as many times as long.
    math(EXPR TEST_TIMEOUT "10 * ${TEST_TIMEOUT}")
    list(APPEND TEST_DEFINITIONS LUMIVAR_EMULATED)
  endif()
  add_executable(${TEST_NAME} ${TEST_SOURCES})
  target_compile_options(${TEST_NAME} PRIVATE ${LUMIVAR_TEST_WARNINGS})
  # What runs long is the rooms', or is a test's of these labels.
  if(NOT TEST_LABELS MATCHES "property|golden|slow")
    compile_plainly_for_tests(${TEST_NAME})
    if(LUMIVAR_QUICK_TESTS)
      target_precompile_headers(${TEST_NAME} REUSE_FROM precompiled_googletest)
    endif()
  endif()
  target_compile_definitions(${TEST_NAME} PRIVATE ${TEST_DEFINITIONS})
  target_link_libraries(${TEST_NAME} PRIVATE ${TEST_DEPENDS} GTest::gtest GTest::gtest_main)
  gtest_discover_tests(${TEST_NAME} TEST_PREFIX ${TEST_NAME}. DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120
                       PROPERTIES LABELS "${TEST_LABELS}" TIMEOUT ${TEST_TIMEOUT})
endfunction()
