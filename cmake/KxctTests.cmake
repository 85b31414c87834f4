# Test programs: how they are compiled, and how ctest runs them.

# Warnings and sanitizers as for all own code, without optimisation: compiling a test takes longer
# than running it, and what it tests is compiled as the preset says. For the same reason the code of
# the tests, which is not what they test, goes without the checks for undefined behaviour.
function(kxct_test_code target)
  kxct_own_code(${target})
  target_compile_options(${target} PRIVATE -O0)
  if(KXCT_SANITIZE MATCHES "undefined")
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
endfunction()

# kxct_test_headers(NAME HEADERS ... [DEPENDS ...])
#
# Headers precompiled once for many test programs, which reuse them from this target. It is a program
# because the flags must be theirs to the letter.
function(kxct_test_headers name)
  cmake_parse_arguments(ARG "" "" "HEADERS;DEPENDS" ${ARGN})
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp CONTENT "int main() {}\n")
  add_executable(${name} ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} GTest::gmock)
  target_precompile_headers(${name} PRIVATE
    <gmock/gmock.h> <gtest/gtest.h>
    <filesystem> <fstream> <functional> <map> <memory> <set> <sstream> <string> <vector>
    ${ARG_HEADERS})
  kxct_test_code(${name})
endfunction()

kxct_test_headers(kxct_common_test_headers)

# kxct_test(NAME SOURCES ... [DEPENDS ...] [LABELS ...] [TIMEOUT seconds])
#
# A GoogleTest program. Each of its test suites becomes a test of ctest, NAME.SUITE: one process for
# each of the thousands of tests would take longer than the tests. A suite has 900 seconds unless
# told: the limit ends one that hangs, also on a slow disk, and is no measure.
function(kxct_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;DEPENDS;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} GTest::gmock GTest::gtest_main)
  if(kxct_mocks IN_LIST ARG_DEPENDS)
    target_precompile_headers(${name} REUSE_FROM kxct_mock_headers)
  else()
    target_precompile_headers(${name} REUSE_FROM kxct_common_test_headers)
  endif()
  kxct_test_code(${name})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 900)
  endif()

  # ctest reads this; the suites are known once the program is built.
  set(suites ${CMAKE_CURRENT_BINARY_DIR}/${name}_suites)
  file(GENERATE OUTPUT ${suites}.cmake CONTENT "set(name [==[${name}]==])
set(program [==[$<TARGET_FILE:${name}>]==])
set(folder [==[${CMAKE_CURRENT_BINARY_DIR}]==])
set(listed [==[${suites}.txt]==])
set(timeout ${ARG_TIMEOUT})
set(labels [==[${ARG_LABELS}]==])
include([==[${PROJECT_SOURCE_DIR}/cmake/KxctSuites.cmake]==])
")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${suites}.cmake)
endfunction()
