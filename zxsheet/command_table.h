// SPDX-License-Identifier: Apache-2.0
//
// The table of all commands.
#pragma once

#include <string>
#include <vector>

#include "zxsheet/command.h"

namespace zxsheet {

/// Commands that share a first word, such as "sheet".
struct CommandGroup {
    std::string name;
    std::string summary;
};

struct CommandTable {
    std::vector<CommandGroup> groups;
    std::vector<Command> commands; ///< in the order of the help
};

/// Commands with options of their own: a table serves one parsing.
CommandTable make_command_table();

// Commands by their sources.

Command info_command();
Command sheets_command();
Command types_command();
Command read_command();
Command new_command();
Command write_command();
Command convert_command();
Command diff_command();
std::vector<Command> sheet_commands();
std::vector<Command> range_commands();
std::vector<Command> google_commands();
Command whoami_command();

} // namespace zxsheet
