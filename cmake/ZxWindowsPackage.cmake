# SPDX-License-Identifier: Apache-2.0
# Adds to the installation on Windows what a machine without a compiler needs, and the licences of all
# that is inside; the target `package` makes a ZIP file of it.
set(runtime_dlls libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
foreach(dll IN LISTS runtime_dlls)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT EXISTS "${file}")
    message(FATAL_ERROR "The compiler has no ${dll}")
  endif()
  # Debian's copies carry debug data, twelve times the code.
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/runtime)
  execute_process(COMMAND ${CMAKE_STRIP} -o ${PROJECT_BINARY_DIR}/runtime/${dll} ${file} COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${PROJECT_BINARY_DIR}/runtime/${dll} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()

set(licence_folder ${CMAKE_INSTALL_DOCDIR}/licences)
foreach(library boost1.81 cli11 curl libisal nlohmann-json3 pugixml utf8proc)
  install(FILES ${ZX_DEPS}/licences/${library}.txt DESTINATION ${licence_folder})
endforeach()
install(FILES /usr/share/doc/libz-mingw-w64-dev/copyright DESTINATION ${licence_folder} RENAME zlib.txt)
install(FILES /usr/share/doc/gcc-mingw-w64-base/copyright DESTINATION ${licence_folder} RENAME gcc-runtime.txt)
install(FILES /usr/share/common-licenses/GPL-3 DESTINATION ${licence_folder} RENAME gcc-runtime-GPL-3.txt)
install(FILES /usr/share/doc/mingw-w64-common/copyright DESTINATION ${licence_folder} RENAME winpthreads.txt)
configure_file(cmake/README-windows.txt.in ${PROJECT_BINARY_DIR}/README.txt @ONLY NEWLINE_STYLE CRLF)
install(FILES ${PROJECT_BINARY_DIR}/README.txt DESTINATION .)

# The manual page as text, as the program itself prints it.
find_program(ZX_GROFF groff REQUIRED)
set(manual ${PROJECT_BINARY_DIR}/zxsheet.txt)
add_custom_command(OUTPUT ${manual}
  COMMAND zxsheet help --man > ${manual}.man
  COMMAND ${ZX_GROFF} -man -Kutf8 -Tutf8 -rLL=100n -P-cbou ${manual}.man > ${manual}.lf
  COMMAND ${CMAKE_COMMAND} -DFROM=${manual}.lf -DTO=${manual} -P ${PROJECT_SOURCE_DIR}/cmake/ZxCrLf.cmake
  DEPENDS zxsheet ${PROJECT_SOURCE_DIR}/cmake/ZxCrLf.cmake VERBATIM)
add_custom_target(zxsheet_manual ALL DEPENDS ${manual})
install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-win64)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
