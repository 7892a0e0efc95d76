// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet clear`, `unmerge` and `autofit`.
#include "zxsheet/book_access.h"
#include "zxsheet/command_error.h"
#include "zxsheet/command_table.h"
#include "zxsheet/online_cells.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

struct RangeOptions : BookOptions {
    std::string sheet;
    std::string range;
};

Selection open_range(const RangeOptions& options) {
    Selection selection =
        open_selection({options.book, options.sheet, options.range}, Extent::WholeSheet);
    check_target(options);
    selection.range = range_in_grid(selection, selection.range);
    return selection;
}

std::string save_selection(const Selection& selection, const RangeOptions& options,
                           ChangeTools& tools, const std::string& done) {
    return save_changes(selection.book, options, tools,
                        done + place_text(selection.sheet_name, selection.range));
}

std::string run_clear(const RangeOptions& options, ChangeTools& tools) {
    const Selection selection = open_range(options);
    check_unlocked(selection.sheet, selection.range, options.book);
    selection.sheet->clear(selection.range);
    return save_selection(selection, options, tools, "Cleared ");
}

std::string run_unmerge(const RangeOptions& options, ChangeTools& tools) {
    const Selection selection = open_range(options);
    selection.sheet->unmerge(selection.range);
    return save_selection(selection, options, tools, "Split the merged cells in ");
}

std::string run_autofit(const RangeOptions& options, ChangeTools& tools) {
    const Selection selection = open_range(options);
    if (selection.range.count() <= 0)
        throw CommandError(ExitCode::NotFound, options.book.text() + ": Sheet " +
                                                   quoted_sheet(selection.sheet_name) +
                                                   " is empty; there is nothing to fit.");
    selection.sheet->auto_fit_column_widths(selection.range);
    check_done(selection.book, options);
    return save_selection(selection, options, tools, "Fitted the columns of ");
}

Command range_command(const char* name, const char* summary,
                      std::string (*run)(const RangeOptions&, ChangeTools&), bool needs_range,
                      const char* example) {
    const auto options = std::make_shared<RangeOptions>();
    Parameter range = range_option(options->range, "A1:D20, B3, A:C, 2:10 or a defined name");
    range.is_required = needs_range;
    return changing_command("", name, summary, options,
                            {sheet_option(options->sheet), range, save_option(options->output)},
                            run, example);
}

} // namespace

std::vector<Command> range_commands() {
    return {range_command("clear", "Empty the cells of a range", run_clear, true,
                          "clear book.xlsx -s Data -r A2:D20"),
            range_command("unmerge", "Split the merged cells in a range", run_unmerge, true,
                          "unmerge book.xlsx -r A1:D1"),
            range_command("autofit", "Make columns as wide as their contents (default: all used)",
                          run_autofit, false, "autofit book.xlsx -r A:D")};
}

} // namespace zxsheet
