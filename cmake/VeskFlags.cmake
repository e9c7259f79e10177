# Flags that every target shares, and the sanitizers that a preset asks for.
set(VESK_SANITIZE "" CACHE STRING "Sanitizers to build with: address,undefined or thread")
option(VESK_THREAD_SAFETY "Check lock annotations (clang only)" OFF)

add_library(vesk_flags INTERFACE)
target_compile_features(vesk_flags INTERFACE cxx_std_20)
target_compile_options(vesk_flags INTERFACE -Wall -Wextra -Werror)
target_compile_definitions(vesk_flags INTERFACE QT_NO_KEYWORDS)
if(VESK_SANITIZE)
  target_compile_options(vesk_flags INTERFACE -fsanitize=${VESK_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(vesk_flags INTERFACE -fsanitize=${VESK_SANITIZE})
  if(VESK_SANITIZE MATCHES undefined)
    target_compile_options(vesk_flags INTERFACE -fno-sanitize-recover=undefined)
  endif()
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
