# vesk_test(NAME SOURCES... LIBRARIES...): one GoogleTest program, its cases known to ctest.
include(GoogleTest)

option(VESK_JOINED_TESTS "Compile several sources of a test program at once, whatever the others do" OFF)

# What nearly every test includes, compiled once for all programs.
add_library(test_headers OBJECT ${PROJECT_SOURCE_DIR}/tests/support/TestHeaders.cpp)
target_link_libraries(test_headers PRIVATE host GTest::gmock)
# Has gcc name the precompiled header in what ccache compares.
target_compile_options(test_headers PUBLIC $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
target_precompile_headers(test_headers PRIVATE
  <gmock/gmock.h> <gtest/gtest.h> <QString> <algorithm> <atomic> <chrono> <condition_variable>
  <filesystem> <functional> <map> <memory> <mutex> <optional> <sstream> <string> <thread> <vector>)

function(vesk_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  # A sanitizer takes its multiple of the time, on a busy machine more.
  if(VESK_SANITIZE)
    math(EXPR ARG_TIMEOUT "4 * ${ARG_TIMEOUT}")
  endif()
  add_executable(${name} ${ARG_SOURCES})
  if(VESK_JOINED_TESTS)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 16)
  endif()
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE host ${ARG_LIBRARIES} GTest::gmock_main)
  target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
  # gcc 12, where it optimises, takes short texts and empty optionals for memory that was not set.
  target_compile_options(${name} PRIVATE
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<NOT:$<CONFIG:Debug>>>:-Wno-maybe-uninitialized;-Wno-array-bounds;-Wno-stringop-overflow>)
  target_precompile_headers(${name} REUSE_FROM test_headers)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
endfunction()
