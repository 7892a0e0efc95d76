// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet clear`, `unmerge` and `autofit`.
#include "zxsheet/book_access.h"
#include "zxsheet/failure.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

Selection open_range(const Options& options) {
    Selection selection = open_selection(options, Extent::WholeSheet);
    check_target(options);
    return selection;
}

std::string save_selection(const Selection& selection, const Options& options, ChangeTools& tools,
                           const std::string& done) {
    return save_changes(selection.book, options, tools,
                        done + place_text(selection.sheet_name, selection.range));
}

} // namespace

std::string run_clear(const Options& options, ChangeTools& tools) {
    const Selection selection = open_range(options);
    check_unlocked(*selection.sheet, selection.range, options);
    selection.sheet->clear(selection.range);
    return save_selection(selection, options, tools, "Cleared ");
}

std::string run_unmerge(const Options& options, ChangeTools& tools) {
    const Selection selection = open_range(options);
    selection.sheet->unmerge(selection.range);
    return save_selection(selection, options, tools, "Split the merged cells in ");
}

std::string run_autofit(const Options& options, ChangeTools& tools) {
    const Selection selection = open_range(options);
    if (selection.range.count() <= 0)
        throw Failure(ExitCode::NotFound, options.book + ": Sheet " +
                                              quoted_sheet(selection.sheet_name) +
                                              " is empty; there is nothing to fit.");
    tools.log.forget();
    selection.sheet->auto_fit_column_widths(selection.range);
    check_log(options, tools);
    return save_selection(selection, options, tools, "Fitted the columns of ");
}

} // namespace zxsheet
