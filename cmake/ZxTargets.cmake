# SPDX-License-Identifier: Apache-2.0
# What every target of the project has in common: include root, warnings, precompiled headers.
option(ZX_PRECOMPILED_HEADERS "Precompile the headers that most sources include" ON)

# Never <iostream>: it puts an initialiser into every object.
set(ZX_STANDARD_HEADERS <algorithm> <array> <charconv> <chrono> <cmath> <cstddef> <cstdint> <cstring> <functional>
  <iterator> <limits> <map> <memory> <mutex> <new> <optional> <span> <sstream> <stdexcept> <string> <string_view>
  <unordered_map> <unordered_set> <utility> <variant> <vector>)

# Precompiles the standard headers, and the ones given, for the target. A source still includes what it uses:
# the fuzz preset and clang-tidy compile without them.
function(zx_precompile target)
  if(ZX_PRECOMPILED_HEADERS)
    target_precompile_headers(${target} PRIVATE ${ZX_STANDARD_HEADERS} ${ARGN})
  endif()
endfunction()

function(zx_common target)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/generated)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    -Wnon-virtual-dtor -Woverloaded-virtual)
  # Once it optimises, GCC 12 warns about every "text" + std::string(...) (GCC bug 105651), and about more of the
  # standard library when that was precompiled.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict -Wno-array-bounds
      -Wno-stringop-overflow -Wno-stringop-overread)
  endif()
  # Unique symbols would keep the library in a process that has unloaded it.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT WIN32)
    target_compile_options(${target} PRIVATE -fno-gnu-unique)
  endif()
  if(ZX_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# Precompiles the headers of the tests, once for all programs that compile with the project's common options.
function(zx_precompile_test target)
  if(NOT ZX_PRECOMPILED_HEADERS)
    return()
  endif()
  if(NOT TARGET zx_test_headers)
    file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/zx_test_headers.cpp CONTENT "int main() {}\n")
    # A program, since programs and libraries differ in how they are position independent.
    add_executable(zx_test_headers EXCLUDE_FROM_ALL ${PROJECT_BINARY_DIR}/zx_test_headers.cpp)
    zx_common(zx_test_headers)
    target_link_libraries(zx_test_headers PRIVATE GTest::gmock)
    zx_precompile(zx_test_headers <deque> <filesystem> <fstream> <random> <gmock/gmock.h> <gtest/gtest.h>)
  endif()
  target_precompile_headers(${target} REUSE_FROM zx_test_headers)
endfunction()

# Adds one GoogleTest program: zx_test(name SOURCES ... LIBRARIES ... [LABELS ...] [ENVIRONMENT NAME=VALUE...])
function(zx_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;LABELS;ENVIRONMENT" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  zx_common(${name})
  zx_precompile_test(${name})
  target_compile_definitions(${name} PRIVATE
    ZX_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data" ZX_SHARED_DATA="${ZX_SHARED_DATA}")
  # Tests of the inside link the static libraries; their declarations must not ask for an import.
  if(NOT "zxspreadsheet" IN_LIST arg_LIBRARIES)
    target_compile_definitions(${name} PRIVATE ZXSPREADSHEET_STATIC)
  endif()
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock_main)
  # An empty value would make the next name the value.
  set(environment "")
  if(arg_ENVIRONMENT)
    set(environment ENVIRONMENT "${arg_ENVIRONMENT}")
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES ${environment} LABELS "${arg_LABELS}")
endfunction()

# Adds one GoogleTest program that runs as a whole beside the emulator of the service:
# zx_test_with_google(name [--tls] SOURCES ... LIBRARIES ...)
function(zx_test_with_google name)
  cmake_parse_arguments(arg "--tls" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  zx_common(${name})
  zx_precompile_test(${name})
  target_compile_definitions(${name} PRIVATE ZX_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
  if(NOT "zxspreadsheet" IN_LIST arg_LIBRARIES)
    target_compile_definitions(${name} PRIVATE ZXSPREADSHEET_STATIC)
  endif()
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock_main)
  add_test(NAME ${name} COMMAND ${PROJECT_SOURCE_DIR}/tests/with_google_service $<$<BOOL:${arg_--tls}>:--tls>
    ${ZX_GOOGLE_EMULATOR} ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${name}>
    COMMAND_EXPAND_LISTS)
endfunction()
