// SPDX-License-Identifier: Apache-2.0
//
// Header cells of tables: each is a text, and no two of a table are equal.
#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "foundation/case_folding.h"
#include "foundation/unicode.h"
#include "workbook/xlsx/writing/cell_markup.h"
#include "workbook/xlsx/writing/formula_groups.h"
#include "workbook/xlsx/xlsx_sheet.h"

namespace workbook {

namespace {

std::u16string folded(std::string_view name) {
    return foundation::unicode::fold_case(foundation::unicode::to_utf16(name));
}

} // namespace

// As applications name a column by what is written into its header.
std::string XlsxSheet::header_text(int row, int column, std::size_t position) const {
    switch (cell_type(row, column)) {
    case CellKind::Number: {
        char digits[kNumberRoom];
        return {digits, append_number(digits, read_num(row, column))};
    }
    case CellKind::Boolean:
        return read_bool(row, column) ? "TRUE" : "FALSE";
    default:
        break;
    }
    std::string text = foundation::unicode::to_generalized_utf8(read_str(row, column));
    return text.empty() ? "Column" + std::to_string(position + 1) : text;
}

std::vector<std::string> XlsxSheet::header_names(const TableHeader& table) {
    std::vector<std::string> names = table.columns;
    const int row = table.first.row;
    const auto column_of = [&](std::size_t i) { return table.first.column + static_cast<int>(i); };
    ChangedPlaces changed(cells_.cells, changes_.cleared);
    std::unordered_set<std::u16string> taken;
    std::unordered_map<std::string, unsigned> last_numbers; // by text
    for (std::size_t i = 0; i < names.size(); ++i)
        if (!changed.holds(row, column_of(i))) taken.insert(folded(names[i]));
    for (std::size_t i = 0; i < names.size(); ++i) {
        const int column = column_of(i);
        if (!changed.holds(row, column)) continue;
        const std::string text = header_text(row, column, i);
        names[i] = text;
        unsigned& number = last_numbers[text];
        while (!taken.insert(folded(names[i])).second)
            names[i] = text + std::to_string(std::max(++number, 2u));
        const bool is_there =
            cell_type(row, column) == CellKind::String &&
            foundation::unicode::to_generalized_utf8(read_str(row, column)) == names[i];
        const Format* format =
            cells_.cells.find(row, column) != nullptr ? cell_format(row, column) : nullptr;
        if (is_there) continue;
        replace_header_cell(row, column, foundation::unicode::to_utf16(names[i]), format);
    }
    return names;
}

void XlsxSheet::replace_header_cell(int row, int column, std::u16string_view text,
                                    const Format* format) {
    const StoredCell* old = cells_.cells.find(row, column);
    replaced_headers_.push_back(
        {row, column, old != nullptr ? std::optional(*old) : std::nullopt, uses_added_strings()});
    write_str(row, column, text, format);
}

void XlsxSheet::restore_header_cells() {
    for (auto replaced = replaced_headers_.rbegin(); replaced != replaced_headers_.rend();
         ++replaced) {
        const auto& [row, column, cell, used_added_strings] = *replaced;
        if (cell)
            cells_.cells.put(row, *cell);
        else
            cells_.cells.remove({row, row, column, column});
        set_uses_added_strings(used_added_strings);
    }
    replaced_headers_.clear();
}

} // namespace workbook
