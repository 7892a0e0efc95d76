# SPDX-License-Identifier: Apache-2.0
# What leaves the tree: the library, its listed headers, the program, and the files by which CMake and
# pkg-config find them.
include(CMakePackageConfigHelpers)

install(TARGETS zxspreadsheet EXPORT zxspreadsheetTargets
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zxspreadsheet
  FILE_SET generated_headers DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zxspreadsheet)
install(TARGETS zxsheet)
if(TARGET zxspreadsheet_automation)
  install(TARGETS zxspreadsheet_automation LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/zxspreadsheet)
endif()

set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/zxspreadsheet)
install(EXPORT zxspreadsheetTargets NAMESPACE zxspreadsheet:: DESTINATION ${config_folder})
configure_package_config_file(cmake/zxspreadsheetConfig.cmake.in
  ${PROJECT_BINARY_DIR}/zxspreadsheetConfig.cmake INSTALL_DESTINATION ${config_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zxspreadsheetConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zxspreadsheetConfig.cmake
  ${PROJECT_BINARY_DIR}/zxspreadsheetConfigVersion.cmake DESTINATION ${config_folder})

# Relative, so that the installed folder can be moved.
file(RELATIVE_PATH ZX_PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/zxspreadsheet.pc.in ${PROJECT_BINARY_DIR}/zxspreadsheet.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zxspreadsheet.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES LICENSE CHANGELOG.md README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")
