// SPDX-License-Identifier: Apache-2.0
//
// What is made from the table of commands besides the help: the manual page and the completions of
// shells.
#pragma once

#include <string>
#include <vector>

#include "zxsheet/command_table.h"

namespace zxsheet {

/// The text for a word of the help: "--man", "--bash", "--zsh" or "--fish"; empty for any other.
/// `options` are those of the program before a command.
std::string command_docs(const std::string& kind, const CommandTable& table,
                         const std::vector<Parameter>& options);

/// Exit codes, as help and manual have them.
inline constexpr const char* kExitCodes =
    "Exit codes: 0 done; 1 failed for another reason; 2 wrong usage; 3 file or spreadsheet not "
    "found or not readable;\n4 not a workbook of that format; 5 no such sheet, range or name; 6 "
    "could not write or save; 7 service, credential or\nnetwork; 8 application not available.";

} // namespace zxsheet
