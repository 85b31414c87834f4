# What libkxct is made with, after every folder has added its sources.
generate_export_header(kxct EXPORT_FILE_NAME ${CMAKE_CURRENT_BINARY_DIR}/include/kxct/kxct_export.h)
target_compile_features(kxct PUBLIC cxx_std_20)
target_include_directories(kxct
  PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
    $<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
  PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(kxct
  PUBLIC kxctinterfaces kxudmrt kxsigslot kxinterp kxlmcore kxlmosa kxbrowser kxutl
  PRIVATE kxudmrtxmlbinding Boost::filesystem Boost::regex)
if(NOT KXCT_SANITIZE)
  target_link_options(kxct PRIVATE -Wl,-z,defs)
endif()
kxct_own_code(kxct)
set_target_properties(kxct PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN")
install(TARGETS kxct EXPORT kxctTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development FILES_MATCHING PATTERN "*.h")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/include/kxct/kxct_export.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kxct COMPONENT development)
