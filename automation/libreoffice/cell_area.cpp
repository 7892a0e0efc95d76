// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/cell_area.h"

#include <algorithm>

namespace office {
namespace {

/// One end of an address; -1 for what is left out.
struct Corner {
    int row = -1;
    int column = -1;
};

bool take_dollar(std::u16string_view& text) {
    if (!text.starts_with(u'$')) return false;
    text.remove_prefix(1);
    return true;
}

std::optional<Corner> parse_corner(std::u16string_view text) {
    Corner corner;
    take_dollar(text);
    int number = 0;
    for (; !text.empty(); text.remove_prefix(1)) {
        const auto letter = static_cast<char16_t>(text.front() & ~u'\x20');
        if (letter < u'A' || letter > u'Z') break;
        number = number * 26 + (letter - u'A' + 1);
        if (number > kColumns) return std::nullopt;
    }
    corner.column = number - 1;
    if (number > 0) take_dollar(text);
    number = 0;
    for (; !text.empty(); text.remove_prefix(1)) {
        if (text.front() < u'0' || text.front() > u'9') return std::nullopt;
        number = number * 10 + (text.front() - u'0');
        if (number > kRows) return std::nullopt;
    }
    corner.row = number - 1;
    return corner;
}

std::u16string column_letters(int column) {
    std::u16string letters;
    for (int rest = column + 1; rest > 0; rest = (rest - 1) / 26)
        letters.insert(letters.begin(), static_cast<char16_t>(u'A' + (rest - 1) % 26));
    return letters;
}

std::u16string digits(int row) {
    const std::string text = std::to_string(row + 1);
    return {text.begin(), text.end()};
}

} // namespace

bool CellArea::contains(const CellArea& other) const {
    return first_row <= other.first_row && other.last_row <= last_row &&
           first_column <= other.first_column && other.last_column <= last_column;
}

std::optional<CellArea> parse_address(std::u16string_view text) {
    const std::size_t colon = text.find(u':');
    const bool is_pair = colon != std::u16string_view::npos;
    const auto first = parse_corner(text.substr(0, colon));
    const auto last = is_pair ? parse_corner(text.substr(colon + 1)) : first;
    if (!first || !last) return std::nullopt;
    // Both ends leave out the same, and only a pair does.
    if ((first->row < 0) != (last->row < 0) || (first->column < 0) != (last->column < 0))
        return std::nullopt;
    const bool has_rows = first->row >= 0;
    const bool has_columns = first->column >= 0;
    if (is_pair ? !has_rows && !has_columns : !has_rows || !has_columns) return std::nullopt;
    const auto rows = std::minmax({first->row, last->row});
    const auto columns = std::minmax({first->column, last->column});
    return CellArea{has_rows ? rows.first : 0, has_columns ? columns.first : 0,
                    has_rows ? rows.second : kRows - 1,
                    has_columns ? columns.second : kColumns - 1};
}

std::u16string format_address(const CellArea& area) {
    const bool all_rows = area.rows() == kRows;
    const bool all_columns = area.columns() == kColumns;
    const auto corner = [&](int row, int column) {
        std::u16string text;
        if (!all_columns || all_rows) text += u"$" + column_letters(column);
        if (!all_rows) text += u"$" + digits(row);
        return text;
    };
    const std::u16string first = corner(area.first_row, area.first_column);
    if (area.rows() == 1 && area.columns() == 1) return first;
    return first + u":" + corner(area.last_row, area.last_column);
}

} // namespace office
