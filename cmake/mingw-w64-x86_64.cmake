# SPDX-License-Identifier: Apache-2.0
# Cross-compiles for 64-bit Windows with Debian's mingw-w64, POSIX threads. ZX_DEPS is the folder that
# tools/deps-windows prints: the third-party libraries built for the target.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(NOT ZX_DEPS)
  set(ZX_DEPS "$ENV{ZX_DEPS}" CACHE PATH "Third-party libraries for the target" FORCE)
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZX_DEPS)

# Nothing of the build machine may be found by accident.
set(CMAKE_FIND_ROOT_PATH ${ZX_DEPS} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian has zlib for the target as a DLL too, which would have to travel with the product.
set(ZLIB_LIBRARY /usr/x86_64-w64-mingw32/lib/libz.a CACHE FILEPATH "The static zlib")

# Windows 10 and later.
add_compile_definitions(_WIN32_WINNT=0x0A00 WINVER=0x0A00)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/wine-run)
