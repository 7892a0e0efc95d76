# SPDX-License-Identifier: Apache-2.0
# Copies a text file with the ends of lines that Windows has: cmake -DFROM=... -DTO=... -P ZxCrLf.cmake
file(READ ${FROM} text)
string(REPLACE "\n" "\r\n" text "${text}")
file(WRITE ${TO} "${text}")
