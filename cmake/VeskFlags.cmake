# Flags that every target shares, and the sanitizers that a preset asks for.
set(VESK_SANITIZE "" CACHE STRING "Sanitizers to build with: address,undefined or thread")
option(VESK_THREAD_SAFETY "Check lock annotations (clang only)" OFF)
option(VESK_COVERAGE "Count which lines and branches run" OFF)
option(VESK_FUZZ "Build the targets of tests/fuzz with libFuzzer (clang only)" OFF)
if(VESK_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "VESK_FUZZ needs clang, which brings libFuzzer")
  endif()
  if(NOT VESK_SANITIZE)
    set(VESK_SANITIZE address,undefined)
  endif()
endif()

add_library(vesk_flags INTERFACE)
target_compile_features(vesk_flags INTERFACE cxx_std_20)
target_compile_options(vesk_flags INTERFACE -Wall -Wextra -Werror)
target_compile_definitions(vesk_flags INTERFACE QT_NO_KEYWORDS)
# Without the build folder in it a release is the same wherever it is built.
foreach(folder IN ITEMS ${PROJECT_SOURCE_DIR}/= ${PROJECT_BINARY_DIR}/=build/)
  target_compile_options(vesk_flags INTERFACE
    $<$<CONFIG:RelWithDebInfo>:-ffile-prefix-map=${folder}>)
endforeach()

# What makes a fault hard to use. What changes the code is for the builds that are installed: glibc
# refuses to check code that is not optimised, and a sanitizer sees such faults itself.
target_link_options(vesk_flags INTERFACE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT VESK_SANITIZE)
  include(CheckPIESupported)
  check_pie_supported()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  target_compile_options(vesk_flags INTERFACE -fstack-protector-strong
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
endif()

if(VESK_SANITIZE)
  target_compile_options(vesk_flags INTERFACE -fsanitize=${VESK_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(vesk_flags INTERFACE -fsanitize=${VESK_SANITIZE})
  if(VESK_SANITIZE MATCHES undefined)
    target_compile_options(vesk_flags INTERFACE -fno-sanitize-recover=undefined)
  endif()
  # clang links an `operator new` of its own beside that of some tests, which are not run then.
  if(VESK_SANITIZE STREQUAL "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_link_options(vesk_flags INTERFACE LINKER:-z,muldefs)
  endif()
endif()
if(VESK_COVERAGE)
  # Updated atomically: the tests run many threads.
  target_compile_options(vesk_flags INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(vesk_flags INTERFACE --coverage)
endif()
if(VESK_FUZZ)
  # What the fuzzer steers by: every library tells which branches an input took.
  target_compile_options(vesk_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(VESK_THREAD_SAFETY)
  target_compile_definitions(vesk_flags INTERFACE VESK_THREAD_SAFETY)
  target_compile_options(vesk_flags INTERFACE -Wthread-safety -Werror=thread-safety)
endif()

# Code that ends up in the module: hidden, relocatable, rooted at the source folder.
function(vesk_module_library name)
  add_library(${name} STATIC ${ARGN})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC host)
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()
