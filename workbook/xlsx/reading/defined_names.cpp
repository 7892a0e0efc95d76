// SPDX-License-Identifier: Apache-2.0
//
// A parser for the one form of formula that is a plain reference; everything else is turned down.
#include "workbook/xlsx/reading/defined_names.h"

#include <algorithm>
#include <tuple>

#include "foundation/unicode.h"
#include "workbook/xlsx/xlsx_limits.h"

namespace workbook {

namespace {

/// One corner of a reference; -1 where it has no row or no column.
struct Corner {
    int row = -1;
    int column = -1;
};

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// 1 to 26 for a letter, 0 for anything else.
int letter_value(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A' + 1;
    if (c >= 'a' && c <= 'z') return c - 'a' + 1;
    return 0;
}

/// Takes a one-based number of at most `limit` that `digit_value` spells in `base`; 0 when there is
/// none and -1 when it is too large.
template <class DigitValue>
int take_number(std::string_view& text, int base, int limit, const DigitValue& digit_value) {
    int number = 0;
    while (!text.empty() && digit_value(text.front()) >= 0) {
        number = number * base + digit_value(text.front());
        if (number > limit) return -1;
        text.remove_prefix(1);
    }
    return number;
}

bool take_dollar(std::string_view& text) {
    if (!text.starts_with('$')) return false;
    text.remove_prefix(1);
    return true;
}

/// "$A$1", "$A" or "$1" at the start of `text`.
std::optional<Corner> take_corner(std::string_view& text) {
    bool dollar = take_dollar(text);
    Corner corner;
    if (!text.empty() && letter_value(text.front()) > 0) {
        const int column = take_number(text, 26, kMaxColumns, [](char c) {
            return letter_value(c) > 0 ? letter_value(c) : -1;
        });
        if (column < 1) return {};
        corner.column = column - 1;
        dollar = take_dollar(text);
    }
    if (!text.empty() && is_digit(text.front())) {
        const int row =
            take_number(text, 10, kMaxRows, [](char c) { return is_digit(c) ? c - '0' : -1; });
        if (row < 1) return {};
        corner.row = row - 1;
    } else if (dollar) {
        return {};
    }
    if (corner.row < 0 && corner.column < 0) return {};
    return corner;
}

/// The rectangle between two corners of one form: cells, whole columns or whole rows.
std::optional<Rectangle> between(Corner a, Corner b) {
    if ((a.row < 0) != (b.row < 0) || (a.column < 0) != (b.column < 0)) return {};
    Rectangle cells{0, kMaxRows - 1, 0, kMaxColumns - 1};
    if (a.row >= 0) std::tie(cells.first_row, cells.last_row) = std::minmax(a.row, b.row);
    if (a.column >= 0)
        std::tie(cells.first_column, cells.last_column) = std::minmax(a.column, b.column);
    return cells;
}

std::optional<Rectangle> parse_cells(std::string_view text) {
    const std::optional<Corner> first = take_corner(text);
    if (!first) return {};
    if (text.empty()) {
        if (first->row < 0 || first->column < 0) return {};
        return between(*first, *first);
    }
    if (text.front() != ':') return {};
    text.remove_prefix(1);
    const std::optional<Corner> second = take_corner(text);
    if (!second || !text.empty()) return {};
    return between(*first, *second);
}

/// Takes "'name'!" or "name!"; nothing when the text is malformed, an empty name when there is
/// none.
std::optional<std::string> take_sheet_name(std::string_view& text) {
    std::string name;
    if (!text.starts_with('\'')) {
        const std::size_t bang = text.find('!');
        if (bang == std::string_view::npos) return name;
        name = text.substr(0, bang);
        text.remove_prefix(bang + 1);
        // Operators and brackets: a formula, a sheet span or another book.
        if (name.empty() || name.find_first_of("[]:(),;+-*/^&=<>\"'#{} ") != std::string::npos)
            return {};
        return name;
    }
    for (text.remove_prefix(1); !text.empty(); text.remove_prefix(1)) {
        if (text.front() == '\'') {
            text.remove_prefix(1);
            if (!text.starts_with('\'')) break;
        }
        name += text.front();
    }
    if (!text.starts_with('!') || name.empty()) return {};
    text.remove_prefix(1);
    // Brackets name another book; a colon spans sheets.
    if (name.find_first_of("[]:") != std::string::npos) return {};
    return name;
}

std::string_view without_blanks(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

const DefinedName* find_name(const std::vector<DefinedName>& names, std::u16string_view name,
                             std::optional<int> sheet_index) {
    for (const DefinedName& candidate : names)
        if (candidate.sheet_index == sheet_index &&
            foundation::unicode::equal_ignoring_case(candidate.name, name))
            return &candidate;
    return nullptr;
}

} // namespace

std::optional<NamedArea> parse_named_area(std::string_view formula) {
    std::string_view text = without_blanks(formula);
    if (text.starts_with('=')) text.remove_prefix(1);
    const std::optional<std::string> sheet = take_sheet_name(text);
    if (!sheet) return {};
    const std::optional<Rectangle> cells = parse_cells(text);
    if (!cells) return {};
    return NamedArea{foundation::unicode::to_utf16(*sheet), *cells};
}

std::optional<Rectangle> find_named_cells(const std::vector<DefinedName>& names,
                                          std::u16string_view name, int sheet_index,
                                          std::u16string_view sheet_name) {
    const DefinedName* found = find_name(names, name, sheet_index);
    const bool is_own = found != nullptr;
    if (!is_own) found = find_name(names, name, std::nullopt);
    if (found == nullptr) return {};
    const std::optional<NamedArea> area = parse_named_area(found->formula);
    if (!area) return {};
    const bool is_here = area->sheet.empty()
                             ? is_own
                             : foundation::unicode::equal_ignoring_case(area->sheet, sheet_name);
    if (!is_here) return {};
    return area->cells;
}

} // namespace workbook
