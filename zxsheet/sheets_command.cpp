// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet sheets`: the names of the sheets, one a line.
#include "foundation/unicode.h"
#include "zxsheet/book_access.h"
#include "zxsheet/command_table.h"
#include "zxsheet/json_text.h"
#include "zxsheet/several_books.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

struct SheetsOptions : BookOptions {
    bool json = false;
    std::vector<std::string> more;
};

/// Of several books each line says which book's it is.
void list_sheets(const SheetsOptions& options, const BookLocation& location, OutputSink& out) {
    const auto book = open_sheet_list(location);
    const bool is_one = options.more.empty();
    if (options.json)
        out.write(is_one ? "[" : "{\"path\":" + json_string(location.text()) + ",\"sheets\":[");
    for (std::size_t i = 0; i < book->num_sheets(); ++i) {
        const std::string name = foundation::unicode::to_utf8(sheet_name(*book, i));
        if (options.json && i != 0) out.write(',');
        if (!options.json && !is_one) out.write(one_line(location.text()) + '\t');
        out.write(options.json ? json_string(name) : one_line(name) + '\n');
    }
    if (options.json) out.write(is_one ? "]\n" : "]}\n");
}

void run_sheets(const SheetsOptions& options, OutputSink& out) {
    for_each_book(options, options.more, out,
                  [&](const BookLocation& location) { list_sheets(options, location, out); });
}

} // namespace

Command sheets_command() {
    const auto options = std::make_shared<SheetsOptions>();
    return reading_command(
        "sheets", "Names of the sheets, one a line, after the book's where there are several",
        options, {more_books_argument(options->more), json_flag(options->json)}, run_sheets);
}

} // namespace zxsheet
