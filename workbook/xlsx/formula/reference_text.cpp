// SPDX-License-Identifier: Apache-2.0
//
// A reference is one corner with row and column, or two corners of one form.
#include "workbook/xlsx/formula/reference_text.h"

#include <optional>

#include "workbook/xlsx/xlsx_limits.h"

namespace workbook {

namespace {

/// One-based numbers; 0 where the corner has no row or no column.
struct Corner {
    int row = 0, column = 0;
    bool row_is_fixed = false, column_is_fixed = false;
    std::size_t length = 0;

    bool is_cell() const { return row > 0 && column > 0; }
    bool has_form_of(const Corner& other) const {
        return (row > 0) == (other.row > 0) && (column > 0) == (other.column > 0);
    }
};

int letter_value(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A' + 1;
    return c >= 'a' && c <= 'z' ? c - 'a' + 1 : 0;
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool take_dollar(std::string_view text, std::size_t& at) {
    if (at == text.size() || text[at] != '$') return false;
    ++at;
    return true;
}

/// False when the number is larger than a sheet has columns.
bool take_column(std::string_view text, std::size_t& at, int& column) {
    for (; at < text.size() && letter_value(text[at]) > 0; ++at) {
        column = column * 26 + letter_value(text[at]);
        if (column > kMaxColumns) return false;
    }
    return true;
}

bool take_row(std::string_view text, std::size_t& at, int& row) {
    if (at < text.size() && text[at] == '0') return false;
    for (; at < text.size() && is_digit(text[at]); ++at) {
        row = row * 10 + (text[at] - '0');
        if (row > kMaxRows) return false;
    }
    return true;
}

/// Whether a word, a call or a sheet prefix goes on after what looks like a reference, so that it
/// is not one.
bool goes_on(std::string_view text, std::size_t at) {
    if (at == text.size()) return false;
    const char c = text[at];
    return letter_value(c) > 0 || is_digit(c) || static_cast<unsigned char>(c) >= 0x80 ||
           std::string_view("_.\\?$!([").find(c) != std::string_view::npos;
}

std::optional<Corner> take_corner(std::string_view text) {
    Corner corner;
    std::size_t at = 0;
    const bool dollar = take_dollar(text, at);
    if (!take_column(text, at, corner.column)) return {};
    bool second_dollar = false;
    if (corner.column > 0) {
        corner.column_is_fixed = dollar;
        second_dollar = take_dollar(text, at);
        corner.row_is_fixed = second_dollar;
    } else {
        corner.row_is_fixed = dollar;
    }
    if (!take_row(text, at, corner.row)) return {};
    if (second_dollar && corner.row == 0) return {};
    if (corner.row == 0 && corner.column == 0) return {};
    corner.length = at;
    return corner;
}

struct Corners {
    Corner first;
    std::optional<Corner> last;
    std::size_t length() const { return first.length + (last ? 1 + last->length : 0); }
};

std::optional<Corners> take_corners(std::string_view text) {
    const std::optional<Corner> first = take_corner(text);
    if (!first) return {};
    Corners corners{*first, {}};
    if (first->length < text.size() && text[first->length] == ':') {
        corners.last = take_corner(text.substr(first->length + 1));
        if (corners.last && (!corners.last->has_form_of(*first) || goes_on(text, corners.length())))
            corners.last.reset();
    }
    if (!corners.last && (!first->is_cell() || goes_on(text, first->length))) return {};
    return corners;
}

/// False when the corner leaves the sheet.
bool move(Corner& corner, int rows, int columns) {
    const auto move_one = [](int& number, bool is_fixed, long long by, int limit) {
        if (number == 0 || is_fixed) return true;
        const long long moved = number + by;
        if (moved < 1 || moved > limit) return false;
        number = static_cast<int>(moved);
        return true;
    };
    return move_one(corner.row, corner.row_is_fixed, rows, kMaxRows) &&
           move_one(corner.column, corner.column_is_fixed, columns, kMaxColumns);
}

void append(std::string& out, const Corner& corner) {
    if (corner.column > 0) {
        if (corner.column_is_fixed) out += '$';
        std::string letters;
        for (int n = corner.column; n > 0; n = (n - 1) / 26)
            letters.insert(letters.begin(), static_cast<char>('A' + (n - 1) % 26));
        out += letters;
    }
    if (corner.row > 0) {
        if (corner.row_is_fixed) out += '$';
        out += std::to_string(corner.row);
    }
}

} // namespace

std::size_t reference_length(std::string_view text) {
    const std::optional<Corners> corners = take_corners(text);
    return corners ? corners->length() : 0;
}

bool is_cell_corner(std::string_view text) {
    const std::optional<Corner> corner = take_corner(text);
    return corner && corner->is_cell() && corner->length == text.size();
}

std::string moved_reference(std::string_view reference, int rows, int columns) {
    std::optional<Corners> corners = take_corners(reference);
    if (!corners) return std::string{reference};
    if (!move(corners->first, rows, columns) ||
        (corners->last && !move(*corners->last, rows, columns)))
        return "#REF!";
    std::string moved;
    append(moved, corners->first);
    if (corners->last) {
        moved += ':';
        append(moved, *corners->last);
    }
    return moved;
}

} // namespace workbook
