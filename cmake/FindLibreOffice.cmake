# SPDX-License-Identifier: Apache-2.0
#
# What programs need that drive LibreOffice over UNO. The C++ headers of UNO's types are generated from the
# installation's own descriptions of them.
#
# Imported target: LibreOffice::uno. Variables: LibreOffice_PROGRAM_DIR (where soffice.bin and the libraries are),
# LibreOffice_CPPUMAKER, LibreOffice_TYPES (what that is called with).
set(_LibreOffice_roots /usr/lib/libreoffice /usr/lib64/libreoffice /opt/libreoffice)
find_program(LibreOffice_CPPUMAKER cppumaker HINTS ENV OO_SDK_HOME PATHS ${_LibreOffice_roots}
  PATH_SUFFIXES bin sdk/bin NO_CACHE)
find_path(LibreOffice_INCLUDE_DIR cppuhelper/bootstrap.hxx HINTS ENV OO_SDK_HOME PATHS ${_LibreOffice_roots}
  PATH_SUFFIXES include sdk/include libreoffice)
find_path(LibreOffice_PROGRAM_DIR types/offapi.rdb PATHS ${_LibreOffice_roots} PATH_SUFFIXES program)
set(_LibreOffice_libraries "")
foreach(name cppuhelpergcc3 cppu salhelpergcc3 sal)
  find_library(LibreOffice_${name}_LIBRARY uno_${name} HINTS ENV OO_SDK_HOME PATHS ${_LibreOffice_roots}
    PATH_SUFFIXES lib sdk/lib)
  mark_as_advanced(LibreOffice_${name}_LIBRARY)
  list(APPEND _LibreOffice_libraries LibreOffice_${name}_LIBRARY)
endforeach()
mark_as_advanced(LibreOffice_INCLUDE_DIR LibreOffice_PROGRAM_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(LibreOffice REQUIRED_VARS LibreOffice_CPPUMAKER LibreOffice_INCLUDE_DIR
  LibreOffice_PROGRAM_DIR ${_LibreOffice_libraries})

if(LibreOffice_FOUND AND NOT TARGET LibreOffice::uno)
  set(LibreOffice_TYPES ${LibreOffice_PROGRAM_DIR}/types.rdb ${LibreOffice_PROGRAM_DIR}/types/offapi.rdb)
  add_library(LibreOffice::uno INTERFACE IMPORTED)
  target_include_directories(LibreOffice::uno INTERFACE ${LibreOffice_INCLUDE_DIR})
  # The names that UNO's headers have for the system and for the compiler's calling conventions.
  target_compile_definitions(LibreOffice::uno INTERFACE UNX LINUX CPPU_ENV=gcc3)
  foreach(name IN LISTS _LibreOffice_libraries)
    target_link_libraries(LibreOffice::uno INTERFACE ${${name}})
  endforeach()
endif()
