# Exported targets with a package file, one pkg-config file per library that a consumer names, and
# the data files.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kxct)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/kxctConfig.cmake.in
  ${PROJECT_BINARY_DIR}/kxctConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kxctConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(EXPORT kxctTargets NAMESPACE kxct:: DESTINATION ${package_dir} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/kxctConfig.cmake ${PROJECT_BINARY_DIR}/kxctConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The way back from the pkg-config files to the prefix, so that an installed copy can be moved.
file(RELATIVE_PATH PC_PREFIX_FROM_HERE
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)

# kxct_pkgconfig(NAME DESCRIPTION REQUIRES)
function(kxct_pkgconfig name description requires)
  set(PC_NAME ${name})
  set(PC_DESCRIPTION ${description})
  set(PC_REQUIRES ${requires})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/pc/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pc/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

kxct_pkgconfig(kxutl "Strings, variants and containers" "")
kxct_pkgconfig(kxsigslot "Signals and listeners" "kxutl kxinterp")
kxct_pkgconfig(kxlmosa "Files, directories and time" "kxutl")
kxct_pkgconfig(kxinterp "Registry of interpreters and the Tcl interpreter" "kxutl")
kxct_pkgconfig(kxlmcore "Messages, responder and dialog interfaces" "kxutl")
kxct_pkgconfig(kxbrowser "Browser framework" "kxutl kxinterp")
kxct_pkgconfig(kxudmrt "Data-model runtime" "kxutl")
kxct_pkgconfig(kxctinterfaces "Interfaces of items, controllers, factory and managers" "kxutl kxudmrt")
kxct_pkgconfig(kxct "Managed, versioned tree of content"
  "kxutl kxsigslot kxlmosa kxinterp kxlmcore kxbrowser kxudmrt kxctinterfaces")

install(DIRECTORY ${PROJECT_SOURCE_DIR}/data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/kxct
  COMPONENT runtime)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)
