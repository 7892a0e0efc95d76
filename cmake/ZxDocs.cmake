# SPDX-License-Identifier: Apache-2.0
# The target `docs`: reference of the installed headers, and the guides, as HTML in build/docs. It is there where
# Doxygen is.
find_program(ZX_DOXYGEN doxygen)
if(NOT ZX_DOXYGEN)
  return()
endif()
get_target_property(headers zxspreadsheet ZX_PUBLIC_HEADER_FILES)
set(doxygen_input ${headers} README.md CHANGELOG.md docs/abi.md docs/architecture.md docs/automation.md
  docs/google.md docs/python.md docs/saving.md)
list(JOIN doxygen_input " " doxygen_input)
set(output ${PROJECT_SOURCE_DIR}/build/docs)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/Doxyfile CONTENT [[
@INCLUDE = docs/Doxyfile
INPUT = @doxygen_input@
OUTPUT_DIRECTORY = @output@
STRIP_FROM_PATH = @PROJECT_SOURCE_DIR@ @PROJECT_BINARY_DIR@/generated
STRIP_FROM_INC_PATH = @PROJECT_SOURCE_DIR@ @PROJECT_BINARY_DIR@/generated
]] @ONLY)
add_custom_target(docs
  COMMAND ${CMAKE_COMMAND} -E make_directory ${output}
  COMMAND ${ZX_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} VERBATIM)
