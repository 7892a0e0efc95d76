// SPDX-License-Identifier: Apache-2.0
//
// What a worksheet of a file knows beyond `ISheet`.
#include "spreadsheet/libxl/libxl_sheet.h"
#include "spreadsheet/range_walk.h"

namespace spreadsheet {

Range LibXLSheet::filled_range() const {
    const workbook::Sheet& sheet = library_sheet();
    return {sheet.first_filled_row(), sheet.first_filled_column(), sheet.end_filled_row() - 1,
            sheet.end_filled_column() - 1};
}

std::optional<Range> LibXLSheet::next_row_of_cells(int row) const {
    const auto found = library_sheet().next_row_of_cells(row);
    if (!found) return std::nullopt;
    return Range{found->row, found->first_column, found->row, found->last_column};
}

void LibXLSheet::number_styles(Range range, number_style* out) const {
    const workbook::Sheet& sheet = sheet_with_rows(range.first_row, range.last_row);
    for_each_cell_by_row(range, [&](std::size_t index, int row, int column) {
        out[index] = static_cast<number_style>(sheet.number_style(row, column));
    });
}

std::vector<Range> LibXLSheet::merged_ranges() const {
    const workbook::Sheet& sheet = sheet_with_tail();
    std::vector<Range> merged(static_cast<std::size_t>(sheet.merge_size()));
    for (std::size_t i = 0; i < merged.size(); ++i) {
        Range& region = merged[i];
        sheet.merge(static_cast<int>(i), region.first_row, region.last_row, region.first_column,
                    region.last_column);
    }
    return merged;
}

std::uint64_t LibXLSheet::formulas_without_result() const {
    return library_sheet().formulas_without_result();
}

bool LibXLSheet::read_formulas(int first_row, int last_row, const FormulaBuilder& builder) const {
    const workbook::Sheet& sheet = library_sheet();
    if (!sheet.knows_formulas()) return false;
    const auto visit = [&builder](const workbook::FormulaCell& formula) {
        builder.add(builder.context,
                    {{formula.row, formula.column}, formula.text, formula.has_result});
    };
    if (!sheet.visit_formulas(first_row, last_row, visit))
        fail("[LIBXL SHEET FORMULA MSG]:", error_id::book_not_loaded);
    return true;
}

} // namespace spreadsheet
