# vesk_test(NAME SOURCES... LIBRARIES...): one GoogleTest program, its cases known to ctest.
include(GoogleTest)

function(vesk_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  # A sanitizer takes its multiple of the time, on a busy machine more.
  if(VESK_SANITIZE)
    math(EXPR ARG_TIMEOUT "4 * ${ARG_TIMEOUT}")
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE vesk_flags ${ARG_LIBRARIES} GTest::gmock_main)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
endfunction()
