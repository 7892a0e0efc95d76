// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet sheets`: the names of the sheets, one a line.
#include "foundation/unicode.h"
#include "zxsheet/book_access.h"
#include "zxsheet/command_table.h"
#include "zxsheet/json_text.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

struct SheetsOptions : BookOptions {
    bool json = false;
};

void run_sheets(const SheetsOptions& options, OutputSink& out) {
    const auto book = open_sheet_list(options.book);
    if (options.json) out.write('[');
    for (std::size_t i = 0; i < book->num_sheets(); ++i) {
        const std::string name = foundation::unicode::to_utf8(sheet_name(*book, i));
        if (options.json && i != 0) out.write(',');
        out.write(options.json ? json_string(name) : one_line(name) + '\n');
    }
    if (options.json) out.write("]\n");
}

} // namespace

Command sheets_command() {
    const auto options = std::make_shared<SheetsOptions>();
    return reading_command("sheets", "Names of the sheets, one a line", options,
                           {json_flag(options->json)}, run_sheets);
}

} // namespace zxsheet
