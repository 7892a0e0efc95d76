// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet sheets`: the names of the sheets, one a line.
#include "foundation/unicode.h"
#include "zxsheet/book_access.h"
#include "zxsheet/command_table.h"

namespace zxsheet {
namespace {

void run_sheets(const BookOptions& options, OutputSink& out) {
    const auto book = open_sheet_list(options.book);
    for (std::size_t i = 0; i < book->num_sheets(); ++i)
        out.write(foundation::unicode::to_utf8(sheet_name(*book, i)) + '\n');
}

} // namespace

Command sheets_command() {
    return reading_command("sheets", "Names of the sheets, one a line",
                           std::make_shared<BookOptions>(), {}, run_sheets);
}

} // namespace zxsheet
