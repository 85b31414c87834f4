# The few forms of target that the project is made of. Sources are always listed, never globbed.
include(GenerateExportHeader)

# Flags of our own code: strict warnings, hidden symbols, sanitizers. Never reaches a consumer.
function(kxct_own_code target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-qual -Wformat=2 -Wundef)
  # Optimised, g++ 12 takes every `"text" + string` for an overlapping copy (its bug 105651).
  target_compile_options(${target} PRIVATE
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict>)
  if(KXCT_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    C_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  kxct_instrument(${target})
endfunction()

# Sanitizers and coverage alone, for generated code that can't meet our warnings.
function(kxct_instrument target)
  if(KXCT_SANITIZE)
    # g++ 12 reports variables as uninitialised that only the instrumentation hides from it.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_compile_options(${target} PRIVATE -fsanitize=${KXCT_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${KXCT_SANITIZE})
  endif()
  if(KXCT_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# kxct_platform_library(NAME SOURCES ... [PUBLIC_DEPENDS ...] [PRIVATE_DEPENDS ...] [PCH headers...])
#
# A shared library in platform/NAME with its public headers in platform/NAME/include. Symbols are
# exported with the macro NAME_EXPORT (upper case) of the generated header <NAME/NAME_export.h>.
function(kxct_platform_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_DEPENDS;PRIVATE_DEPENDS;PCH" ${ARGN})
  add_library(${name} SHARED ${ARG_SOURCES})
  add_library(kxct::${name} ALIAS ${name})
  generate_export_header(${name} EXPORT_FILE_NAME ${CMAKE_CURRENT_BINARY_DIR}/include/${name}/${name}_export.h)
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
    $<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
  if(NOT KXCT_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,-z,defs)
  endif()
  kxct_own_code(${name})
  if(ARG_PCH)
    target_precompile_headers(${name} PRIVATE ${ARG_PCH})
  endif()
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${name} EXPORT kxctTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/include)
    install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
      COMPONENT development FILES_MATCHING PATTERN "*.h")
  endif()
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/include/${name}/${name}_export.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${name} COMPONENT development)
endfunction()
