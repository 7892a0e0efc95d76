# SPDX-License-Identifier: Apache-2.0
# What every target of the project has in common: include root, warnings, sanitizer flags.

function(zx_common target)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/generated)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    -Wnon-virtual-dtor -Woverloaded-virtual)
  # GCC 12 warns about every "text" + std::string(...) once it optimises (GCC bug 105651).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  # Unique symbols would keep the library in a process that has unloaded it.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT WIN32)
    target_compile_options(${target} PRIVATE -fno-gnu-unique)
  endif()
  if(ZX_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# Adds one GoogleTest program: zx_test(name SOURCES ... LIBRARIES ... [LABELS ...])
function(zx_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  zx_common(${name})
  target_compile_definitions(${name} PRIVATE
    ZX_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data" ZX_SHARED_DATA="${ZX_SHARED_DATA}")
  # Tests of the inside link the static libraries; their declarations must not ask for an import.
  if(NOT "zxspreadsheet" IN_LIST arg_LIBRARIES)
    target_compile_definitions(${name} PRIVATE ZXSPREADSHEET_STATIC)
  endif()
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock_main)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES LABELS "${arg_LABELS}")
endfunction()

# Adds one GoogleTest program that runs as a whole beside the emulator of the service:
# zx_test_with_google(name [--tls] SOURCES ... LIBRARIES ...)
function(zx_test_with_google name)
  cmake_parse_arguments(arg "--tls" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  zx_common(${name})
  target_compile_definitions(${name} PRIVATE ZX_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
  if(NOT "zxspreadsheet" IN_LIST arg_LIBRARIES)
    target_compile_definitions(${name} PRIVATE ZXSPREADSHEET_STATIC)
  endif()
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock_main)
  add_test(NAME ${name} COMMAND ${PROJECT_SOURCE_DIR}/tests/with_google_service $<$<BOOL:${arg_--tls}>:--tls>
    ${ZX_GOOGLE_EMULATOR} ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${name}>
    COMMAND_EXPAND_LISTS)
endfunction()
