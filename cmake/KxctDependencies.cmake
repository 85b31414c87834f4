# Every library from outside that some part of the project needs, found once.
find_package(PkgConfig REQUIRED)
find_package(Boost 1.74 REQUIRED COMPONENTS filesystem regex)
find_package(SQLite3 3.40 REQUIRED)
find_package(OpenSSL REQUIRED COMPONENTS Crypto)
find_package(TCL 8.6 REQUIRED)
pkg_check_modules(GSOAPXX REQUIRED IMPORTED_TARGET gsoap++)
pkg_check_modules(PUGIXML REQUIRED IMPORTED_TARGET pugixml)
pkg_check_modules(EXPAT REQUIRED IMPORTED_TARGET expat)
pkg_check_modules(LIBARCHIVE REQUIRED IMPORTED_TARGET libarchive)
pkg_check_modules(UTF8PROC REQUIRED IMPORTED_TARGET libutf8proc)
find_program(SOAPCPP2 soapcpp2 REQUIRED)

# Tcl's headers and library as one target.
if(NOT TARGET kxct_tcl)
  add_library(kxct_tcl INTERFACE)
  target_include_directories(kxct_tcl SYSTEM INTERFACE ${TCL_INCLUDE_PATH})
  target_link_libraries(kxct_tcl INTERFACE ${TCL_LIBRARY})
endif()
