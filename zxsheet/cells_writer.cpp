// SPDX-License-Identifier: Apache-2.0
#include "zxsheet/cells_writer.h"

#include <string_view>
#include <utility>

#include "foundation/unicode.h"
#include "zxsheet/cell_patch.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/command_error.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;

constexpr std::size_t kMaxTextUnits = 32'767;

/// Serial number of the first day that a book can show whose dates count from 1904.
constexpr double kFirstDay1904 = 1462;

bool is_formula(const CellValue& cell) {
    return cell.type == cell_type::text && cell.text.size() > 1 && cell.text.front() == '=';
}

} // namespace

CellsWriter::CellsWriter(const WriteOptions& options, ChangeTools& tools) : options_(options) {
    const std::pair<bool, const char*> rules[] = {{!options.range.empty(), "--range"},
                                                  {options.append, "--append"},
                                                  {options.skip.has_value(), "--skip"}};
    for (const auto& [is_given, name] : rules)
        if (is_given)
            throw CommandError(ExitCode::Usage, std::string(name) + " has no meaning for cells, "
                                                                    "which have their addresses.");
    if (options.book.is_online())
        throw CommandError(ExitCode::Usage,
                           "Cells can be written to files only; a spreadsheet online takes the "
                           "other formats.");
    tools.progress.set_text("Opening " + options.book.text());
    DataPlace place;
    place.range = "A1"; // cells say where they belong
    target_ = open_write_target(options, place);
    used_before_ = target_.cells.sheet->used_range();
    if (options.replace && used_before_.count() > 0) {
        check_unlocked(target_.cells.sheet, used_before_, options.book);
        target_.cells.sheet->clear(used_before_);
    }
    dates_1904_ = target_.cells.book->are_dates_1904();
    tools.progress.set_text("Writing " + options.book.text());
}

void CellsWriter::check(int row, int column, const CellValue& cell) const {
    const book::format format = target_.cells.book->format();
    const std::string place = place_text(target_.cells.sheet_name, {row, column, row, column});
    std::string problem;
    if (row > book::get_row_limit(format) || column > book::get_col_limit(format))
        problem = "Such a book has no such cell";
    else if (cell.text.size() > kMaxTextUnits &&
             foundation::unicode::to_utf16(cell.text).size() > kMaxTextUnits)
        problem = "The text has more than the " + grouped(kMaxTextUnits) +
                  " characters that a cell holds";
    else if (options_.formulas && is_formula(cell))
        problem = formula_problem(std::string_view(cell.text).substr(1));
    if (!problem.empty())
        throw CommandError(ExitCode::NotWritten,
                           options_.book.text() + ": " + place + ": " + problem + '.');
}

void CellsWriter::add(int row, int column, const CellValue& cell) {
    check(row, column, cell);
    const bool goes_on =
        !run_.empty() && row == row_ && column == first_column_ + static_cast<int>(run_.size());
    if (!goes_on) {
        flush();
        row_ = row;
        first_column_ = column;
    }
    run_.push_back(cell);
    CellValue& added = run_.back();
    if (added.type == cell_type::date && dates_1904_ && added.number < kFirstDay1904) {
        added.type = cell_type::text;
        added.text = date_text(added.number);
    }
    if (written_type(added) != cell_type::text || !added.text.empty()) ++values_;
}

void CellsWriter::flush() {
    if (run_.empty()) return;
    const int last_column = first_column_ + static_cast<int>(run_.size()) - 1;
    const Range range{row_, first_column_, row_, last_column};
    ISheet& sheet = *target_.cells.sheet;
    check_unlocked(target_.cells.sheet, range, options_.book);
    CellPatch patch(range);
    for (std::size_t i = 0; i < run_.size(); ++i)
        if (written_type(run_[i]) != cell_type::text || !run_[i].text.empty())
            patch.set(0, i, run_[i]);
    patch.write(sheet, used_before_, !options_.plain && !target_.is_new_sheet);
    for (std::size_t i = 0; options_.formulas && i < run_.size(); ++i) {
        if (!is_formula(run_[i])) continue;
        const std::string_view formula = std::string_view(run_[i].text).substr(1);
        const int column = first_column_ + static_cast<int>(i);
        if (!write_formulas(sheet, {row_, column, row_, column}, &formula))
            throw CommandError(ExitCode::NotWritten,
                               options_.book.text() + ": Such a book takes no formulas.");
    }
    check_done(target_.cells.book, options_);
    run_.clear();
}

void CellsWriter::finish() {
    flush();
}

} // namespace zxsheet
