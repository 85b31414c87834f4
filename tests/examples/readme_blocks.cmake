# The code blocks of the README are the example files, letter by letter.
file(READ ${PROJECT}/README.md readme)
foreach(example IN ITEMS cpp tcl)
  file(READ ${PROJECT}/examples/readme/readme.${example} code)
  string(FIND "${readme}" "```${example}\n${code}```\n" position)
  if(position EQUAL -1)
    message(FATAL_ERROR "README.md does not show examples/readme/readme.${example} as it is")
  endif()
endforeach()
