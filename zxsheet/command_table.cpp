// SPDX-License-Identifier: Apache-2.0
//
// All commands in the order in which the help lists them.
#include "zxsheet/command_table.h"

#include <iterator>

namespace zxsheet {

CommandTable make_command_table() {
    CommandTable table;
    table.groups = {{"sheet", "Add, remove and change sheets"},
                    {"google", "Files of Google Sheets and Drive"}};
    for (const auto make : {info_command, sheets_command, types_command, read_command, diff_command,
                            new_command, write_command, convert_command})
        table.commands.push_back(make());
    for (const auto make : {sheet_commands, range_commands, google_commands}) {
        std::vector<Command> made = make();
        table.commands.insert(table.commands.end(), std::make_move_iterator(made.begin()),
                              std::make_move_iterator(made.end()));
    }
    return table;
}

} // namespace zxsheet
