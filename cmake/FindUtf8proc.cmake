# SPDX-License-Identifier: Apache-2.0
find_path(Utf8proc_INCLUDE_DIR utf8proc.h)
find_library(Utf8proc_LIBRARY NAMES utf8proc)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Utf8proc REQUIRED_VARS Utf8proc_LIBRARY Utf8proc_INCLUDE_DIR)
if(Utf8proc_FOUND AND NOT TARGET Utf8proc::utf8proc)
  add_library(Utf8proc::utf8proc UNKNOWN IMPORTED)
  set_target_properties(Utf8proc::utf8proc PROPERTIES
    IMPORTED_LOCATION "${Utf8proc_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${Utf8proc_INCLUDE_DIR}")
  if(Utf8proc_LIBRARY MATCHES "\\.a$")
    set_property(TARGET Utf8proc::utf8proc PROPERTY INTERFACE_COMPILE_DEFINITIONS UTF8PROC_STATIC)
  endif()
endif()
mark_as_advanced(Utf8proc_INCLUDE_DIR Utf8proc_LIBRARY)
