# Flags and helpers that every target of the project shares.

set(zorvan_compile_flags -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
  # Every CPU and compiler gives the same bytes: no fused multiply-add, no fast-math.
  -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # False alarms on the concatenation of a literal and a string.
  list(APPEND zorvan_compile_flags -Wno-restrict)
endif()
# Also where a 64-bit machine compiles for its 32-bit relative (-m32).
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i.86|x86|x86_64|AMD64)$" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  list(APPEND zorvan_compile_flags -msse2 -mfpmath=sse)
endif()
if(ZORVAN_WERROR)
  list(APPEND zorvan_compile_flags -Werror)
endif()
if(ZORVAN_SANITIZE)
  # The recording and the real GL are loaded by name at run time, so the run-time library
  # must come first in the program: -shared-libasan is not used.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# Applies the project's warnings, floating-point rules and protection to one target. Its run path in the build tree
# starts from the file itself, so that the tree can be moved.
function(zorvan_target name)
  target_compile_options(${name} PRIVATE ${zorvan_compile_flags} ${zorvan_hardening_compile_flags})
  target_link_options(${name} PRIVATE ${zorvan_hardening_link_flags})
  set_target_properties(${name} PROPERTIES BUILD_RPATH_USE_ORIGIN ON)
endfunction()

# GLESv2 and EGL as one target: the system's, or the recording stand-in of the tests.
add_library(zorvan_gles INTERFACE)
if(ZORVAN_RECORDING_GL)
  target_link_libraries(zorvan_gles INTERFACE recording_gles recording_egl)
else()
  find_library(ZORVAN_GLES_LIBRARY GLESv2 REQUIRED)
  find_library(ZORVAN_EGL_LIBRARY EGL REQUIRED)
  target_link_libraries(zorvan_gles INTERFACE ${ZORVAN_GLES_LIBRARY} ${ZORVAN_EGL_LIBRARY})
endif()

# GoogleTest: the installed library, or its sources where the installed one does not fit
# (other architecture, sanitizers).
function(zorvan_find_googletest)
  if(TARGET GTest::gtest_main)
    return()
  endif()
  if(CMAKE_CROSSCOMPILING)
    set(BUILD_GMOCK OFF)
    set(INSTALL_GTEST OFF)
    add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    if(NOT TARGET GTest::gtest_main)
      add_library(GTest::gtest_main ALIAS gtest_main)
    endif()
  else()
    find_package(GTest REQUIRED)
  endif()
endfunction()

# zorvan_test(NAME SOURCES ... LIBS ... LABELS label ENV variable=value)
# One GoogleTest program; CTest lists each of its cases.
function(zorvan_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBS;LABELS;ENV" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  zorvan_target(${name})
  target_link_libraries(${name} PRIVATE ${arg_LIBS} GTest::gtest_main)
  include(GoogleTest)
  # An empty value would vanish and let its property take the next one's name for a value.
  set(properties TIMEOUT 600)
  if(arg_LABELS)
    list(APPEND properties LABELS ${arg_LABELS})
  endif()
  # The leak detector guesses the addresses of libraries' thread-local blocks, and with GL drivers loaded reads
  # where there is nothing.
  if(ZORVAN_SANITIZE)
    list(APPEND arg_ENV ASAN_OPTIONS=intercept_tls_get_addr=0)
  endif()
  # As a launcher: the property ENVIRONMENT would keep only the first of several variables on its way here.
  if(arg_ENV)
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR
      "${CMAKE_COMMAND};-E;env;${arg_ENV};${CMAKE_CROSSCOMPILING_EMULATOR}")
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
