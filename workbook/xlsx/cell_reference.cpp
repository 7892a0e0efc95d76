// SPDX-License-Identifier: Apache-2.0
//
// Letters and digits of a reference, within a sheet's limits.
#include "workbook/xlsx/cell_reference.h"

#include <algorithm>

#include "workbook/xlsx/xlsx_limits.h"

namespace workbook {

namespace {

void skip_dollar(std::string_view text, std::size_t& i) {
    if (i < text.size() && text[i] == '$') ++i;
}

// One-based column number after the letters at `i`; 0 when there is none within the limits.
int take_column(std::string_view text, std::size_t& i) {
    int number = 0;
    for (; i < text.size(); ++i) {
        const char letter = static_cast<char>(text[i] & ~0x20);
        if (letter < 'A' || letter > 'Z') break;
        number = number * 26 + (letter - 'A' + 1);
        if (number > kMaxColumns) return 0;
    }
    return number;
}

// One-based row number after the digits at `i`; 0 when there is none within the limits.
int take_row(std::string_view text, std::size_t& i) {
    int number = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        number = number * 10 + (text[i] - '0');
        if (number > kMaxRows) return 0;
    }
    return number;
}

/// One end of an area; one-based, 0 for what it does not state.
struct Corner {
    int row = 0, column = 0;
};

std::optional<Corner> parse_corner(std::string_view text) {
    std::size_t i = 0;
    Corner corner;
    skip_dollar(text, i);
    const std::size_t letters = i;
    corner.column = take_column(text, i);
    if (corner.column == 0 && i != letters) return std::nullopt;
    if (i != letters) skip_dollar(text, i);
    const std::size_t digits = i;
    corner.row = take_row(text, i);
    if (corner.row == 0 && i != digits) return std::nullopt;
    if (i != text.size()) return std::nullopt;
    return corner;
}

} // namespace

std::optional<CellReference> parse_cell_reference(std::string_view text) {
    const auto corner = parse_corner(text);
    if (!corner || corner->row == 0 || corner->column == 0) return std::nullopt;
    return CellReference{corner->row - 1, corner->column - 1};
}

std::optional<Rectangle> parse_area_reference(std::string_view text) {
    const std::size_t colon = text.find(':');
    const bool is_one = colon == std::string_view::npos;
    const auto a = parse_corner(text.substr(0, colon));
    const auto b = is_one ? a : parse_corner(text.substr(colon + 1));
    if (!a || !b) return std::nullopt;
    const bool has_rows = a->row > 0, has_columns = a->column > 0;
    const bool is_whole = !has_rows || !has_columns;
    if (has_rows != (b->row > 0) || has_columns != (b->column > 0)) return std::nullopt;
    if (is_whole && (is_one || has_rows == has_columns)) return std::nullopt;
    Rectangle area{0, kMaxRows - 1, 0, kMaxColumns - 1};
    if (has_rows) {
        area.first_row = std::min(a->row, b->row) - 1;
        area.last_row = std::max(a->row, b->row) - 1;
    }
    if (has_columns) {
        area.first_column = std::min(a->column, b->column) - 1;
        area.last_column = std::max(a->column, b->column) - 1;
    }
    return area;
}

} // namespace workbook
