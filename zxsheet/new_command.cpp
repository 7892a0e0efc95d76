// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet new`: a book of empty sheets.
#include <filesystem>

#include "zxsheet/book_access.h"
#include "zxsheet/failure.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {

std::string run_new(const Options& options, ChangeTools& tools) {
    std::error_code ignored;
    if (mode_of(options) == spreadsheet::book::interactive::file && !options.force &&
        std::filesystem::exists(native_path(options.book), ignored))
        throw Failure(ExitCode::NotWritten,
                      options.book + ": There is such a file already; --force replaces it.");
    const auto book = make_book(options, options.sheet_count);
    return save_changes(book, options, tools, "Made with " + counted(options.sheet_count, "sheet"),
                        Origin::Made);
}

} // namespace zxsheet
