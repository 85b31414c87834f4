# Run by ctest, not by the build: makes each suite of a GoogleTest program a test. In: `name`,
# `program`, `folder` to run in, `listed` (a file that keeps the suites until the program is built
# anew), `timeout`, `labels`.
if(NOT EXISTS ${program})
  # Fails, and says which program is missing.
  add_test(${name}_NOT_BUILT ${program})
  return()
endif()

if(${program} IS_NEWER_THAN ${listed})
  execute_process(COMMAND ${program} --gtest_list_tests
    WORKING_DIRECTORY ${folder} OUTPUT_VARIABLE tests RESULT_VARIABLE result TIMEOUT 300)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${program} can't list its tests: ${result}")
  endif()
  # "Suite." stands at the start of a line, with a comment behind where it has a type parameter; its
  # tests follow, indented.
  string(REGEX MATCHALL "(^|\n)[A-Za-z0-9_/]+\\.( |\n)" lines "${tests}")
  string(REGEX REPLACE "[\n. ]" "" suites "${lines}")
  if(NOT suites)
    message(FATAL_ERROR "${program} has no tests")
  endif()
  file(WRITE ${listed} "${suites}")
endif()

file(READ ${listed} suites)
foreach(suite IN LISTS suites)
  add_test(${name}.${suite} ${program} --gtest_filter=${suite}.*)
  set_tests_properties(${name}.${suite} PROPERTIES
    WORKING_DIRECTORY ${folder} TIMEOUT ${timeout} LABELS "${labels}")
  # Where everything is at hand nothing may be left out.
  if(DEFINED ENV{CI})
    set_tests_properties(${name}.${suite} PROPERTIES FAIL_REGULAR_EXPRESSION "\\[  SKIPPED \\]")
  endif()
endforeach()
