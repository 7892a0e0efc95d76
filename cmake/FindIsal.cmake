# SPDX-License-Identifier: Apache-2.0
# Finds ISA-L, whose inflate is the fastest one available; without it zlib does the work.
find_path(Isal_INCLUDE_DIR isa-l/igzip_lib.h)
find_library(Isal_LIBRARY NAMES isal)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Isal REQUIRED_VARS Isal_LIBRARY Isal_INCLUDE_DIR)
if(Isal_FOUND AND NOT TARGET Isal::isal)
  add_library(Isal::isal UNKNOWN IMPORTED)
  set_target_properties(Isal::isal PROPERTIES
    IMPORTED_LOCATION "${Isal_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${Isal_INCLUDE_DIR}")
endif()
mark_as_advanced(Isal_INCLUDE_DIR Isal_LIBRARY)
