// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet sheets`: the names of the sheets, one a line.
#include "foundation/unicode.h"
#include "zxsheet/book_access.h"
#include "zxsheet/commands.h"

namespace zxsheet {

void run_sheets(const Options& options, OutputSink& out) {
    const auto book = open_sheet_list(options);
    for (std::size_t i = 0; i < book->num_sheets(); ++i)
        out.write(foundation::unicode::to_utf8(sheet_name(*book, i)) + '\n');
}

} // namespace zxsheet
