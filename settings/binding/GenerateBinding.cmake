# cmake -DSOAPCPP2=<program> -DINPUT=<header> -DRAW=<dir> -DOUT=<dir> -P GenerateBinding.cmake
#
# Generates the binding from INPUT into RAW, brings its text to the form of the settings documents
# and puts it into OUT. Every edit states how many places it changes: another release of soapcpp2
# that writes other text stops the build here, and does not change the documents unseen.
cmake_minimum_required(VERSION 3.20)

file(REMOVE_RECURSE ${RAW})
file(MAKE_DIRECTORY ${RAW})
get_filename_component(folder ${INPUT} DIRECTORY)
get_filename_component(name ${INPUT} NAME)
execute_process(
  COMMAND ${SOAPCPP2} -1 -c++ -t -w -x -q kxct -d ${RAW} ${name}
  WORKING_DIRECTORY ${folder}
  RESULT_VARIABLE result OUTPUT_VARIABLE log ERROR_VARIABLE log)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "settings binding: soapcpp2 failed with ${result}:\n${log}")
endif()

function(edit var count regex by what)
  string(REGEX REPLACE "${regex}" "@@KXCT_EDIT@@${by}" text "${${var}}")
  string(REGEX MATCHALL "@@KXCT_EDIT@@" hits "${text}")
  list(LENGTH hits n)
  if(NOT n EQUAL count)
    message(FATAL_ERROR "settings binding, edit \"${what}\": ${n} places instead of ${count}. The edits are made for soapcpp2 2.8.124.")
  endif()
  string(REPLACE "@@KXCT_EDIT@@" "" text "${text}")
  set(${var} "${text}" PARENT_SCOPE)
endfunction()

file(READ ${RAW}/kxctStub.h stub)
edit(stub 18 "        /// Return a new object of type [^\n]*\n        virtual [A-Za-z_]+ \\*soap_alloc\\(void\\) const [^\n]*\n" ""
     "no virtual soap_alloc")
file(READ ${RAW}/kxctC.cpp code)
edit(code 3 "\tif \\(soap_outliteral\\(soap, \"-item\", [^\n]*\n\t\treturn soap->error;\n" ""
     "Key, ContentDefinition, Entity write no __item")
edit(code 9 "(soap_in_(std__vectorTemplateOf)?PointerTokxct__[A-Za-z]+\\(soap, \")([A-Za-z]+\", &a->)" "\\1:\\3"
     "child elements match by local name, with any prefix or none")

file(MAKE_DIRECTORY ${OUT})
file(WRITE ${OUT}/kxctStub.h "${stub}")
file(WRITE ${OUT}/kxctC.cpp "${code}")
file(COPY ${RAW}/kxctH.h ${RAW}/kxct.nsmap DESTINATION ${OUT})
