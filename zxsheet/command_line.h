// SPDX-License-Identifier: Apache-2.0
//
// The parser of the command line, made from the table of commands.
#pragma once

#include <string>
#include <vector>

#include "zxsheet/command_table.h"

namespace zxsheet {

struct ParsedLine {
    const Command* command = nullptr; ///< of the table; null when text was asked for
    std::string text;                 ///< the help or the version that was asked for
    std::string google_root;          ///< empty for the service's own addresses
    std::string log_level;            ///< of the library's log; empty for none
};

/// Fills the options of the command that `arguments` name (UTF-8, without the program's name).
/// Throws `CommandError` with `ExitCode::Usage` for arguments that are not understood.
ParsedLine parse_command_line(const std::vector<std::string>& arguments, const CommandTable& table);

} // namespace zxsheet
