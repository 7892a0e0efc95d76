// SPDX-License-Identifier: Apache-2.0
//
// Finds the additional interfaces; without them, what `IBook` and `ISheet` can answer.
#include "spreadsheet/sheet_contents.h"

#include <algorithm>

#include "spreadsheet/book_extras.h"
#include "spreadsheet/sheet_extras.h"
#include "workbook/library.h"

namespace spreadsheet {
namespace {

const ISheetExtras* extras_of(const ISheet& sheet) {
    return dynamic_cast<const ISheetExtras*>(&sheet);
}

} // namespace

Range filled_range(const ISheet& sheet) {
    const ISheetExtras* const extras = extras_of(sheet);
    return extras != nullptr ? extras->filled_range() : sheet.used_range();
}

std::optional<Range> next_row_of_cells(const ISheet& sheet, int row) {
    if (const ISheetExtras* const extras = extras_of(sheet)) return extras->next_row_of_cells(row);
    const Range used = sheet.used_range();
    if (used.count() <= 0 || row > used.last_row) return std::nullopt;
    row = std::max(row, used.first_row);
    return Range{row, used.first_column, row, used.last_column};
}

bool number_styles(const ISheet& sheet, Range range, number_style* out) {
    if (const ISheetExtras* const extras = extras_of(sheet)) {
        extras->number_styles(range, out);
        return true;
    }
    std::fill_n(out, std::max<std::int64_t>(range.count(), 0), number_style::number);
    return false;
}

std::optional<std::vector<Range>> merged_ranges(const ISheet& sheet) {
    const ISheetExtras* const extras = extras_of(sheet);
    if (extras == nullptr) return std::nullopt;
    return extras->merged_ranges();
}

std::uint64_t formulas_without_result(const ISheet& sheet) {
    const ISheetExtras* const extras = extras_of(sheet);
    return extras != nullptr ? extras->formulas_without_result() : 0;
}

bool read_formulas(const ISheet& sheet, int first_row, int last_row,
                   const FormulaBuilder& builder) {
    const ISheetExtras* const extras = extras_of(sheet);
    return extras != nullptr && extras->read_formulas(first_row, last_row, builder);
}

std::string formula_problem(std::string_view formula) {
    return workbook::formula_problem(formula);
}

bool write_formulas(ISheet& sheet, Range range, const std::string_view* formulas) {
    auto* const writer = dynamic_cast<IFormulaWriter*>(&sheet);
    if (writer != nullptr) writer->write_formulas(range, formulas);
    return writer != nullptr;
}

std::optional<SheetSummary> summarize_sheet(const std::shared_ptr<IBook>& book, std::size_t index) {
    auto* const extras = dynamic_cast<IBookExtras*>(book.get());
    return extras != nullptr ? extras->summarize_sheet(index) : std::nullopt;
}

std::optional<std::vector<NamedRange>> named_ranges(const std::shared_ptr<IBook>& book) {
    auto* const extras = dynamic_cast<IBookExtras*>(book.get());
    return extras != nullptr ? extras->named_ranges() : std::nullopt;
}

} // namespace spreadsheet
