// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet new`: a book of empty sheets.
#include "zxsheet/command_error.h"
#include "zxsheet/command_table.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

struct NewOptions : BookOptions {
    std::optional<std::size_t> sheet_count;
    bool force = false;
};

std::string run_new(const NewOptions& options, ChangeTools& tools) {
    const BookLocation& location = options.book;
    if (location.is_online())
        throw CommandError(ExitCode::Usage, location.text() + ": 'zxsheet google create' makes "
                                                              "spreadsheets online.");
    if (!options.force) refuse_existing(location);
    const std::size_t count = options.sheet_count.value_or(1);
    const auto book = make_book(location, count);
    return save_changes(book, options, tools, "Made with " + counted(count, "sheet"), Origin::Made);
}

} // namespace

Command new_command() {
    const auto options = std::make_shared<NewOptions>();
    Command command =
        changing_command("", "new", "Make a book of empty sheets", options,
                         {{"--sheets", "N", "Number of sheets (default: 1)", &options->sheet_count,
                           false, kMaxSheets},
                          {"--force", "", "Replace a file that is there", &options->force}},
                         run_new, "new book.xlsx --sheets 3");
    Parameter& book = command.parameters.front();
    book.what = "Path of the new workbook";
    book.target = [options](const std::string& text) {
        if (text == kStream)
            throw CommandError(ExitCode::Usage, "A new book needs the name of a file");
        options->book.set_text(text);
    };
    return command;
}

} // namespace zxsheet
