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

// One-based column number behind the letters at `i`; 0 when there is none within the limits.
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

// One-based row number behind the digits at `i`; 0 when there is none within the limits.
int take_row(std::string_view text, std::size_t& i) {
    int number = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        number = number * 10 + (text[i] - '0');
        if (number > kMaxRows) return 0;
    }
    return number;
}

} // namespace

std::optional<CellReference> parse_cell_reference(std::string_view text) {
    std::size_t i = 0;
    skip_dollar(text, i);
    const int column = take_column(text, i);
    skip_dollar(text, i);
    const int row = take_row(text, i);
    if (column == 0 || row == 0 || i != text.size()) return std::nullopt;
    return CellReference{row - 1, column - 1};
}

std::optional<Rectangle> parse_area_reference(std::string_view text) {
    const std::size_t colon = text.find(':');
    const auto first = parse_cell_reference(text.substr(0, colon));
    const auto last =
        colon == std::string_view::npos ? first : parse_cell_reference(text.substr(colon + 1));
    if (!first || !last) return std::nullopt;
    return Rectangle{std::min(first->row, last->row), std::max(first->row, last->row),
                     std::min(first->column, last->column), std::max(first->column, last->column)};
}

} // namespace workbook
