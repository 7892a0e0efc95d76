// SPDX-License-Identifier: Apache-2.0
//
// Ranges as text and their limits. `a1_parser.cpp` has the way from text to a range.
#include "spreadsheet/range.h"

#include <algorithm>
#include <string_view>

#include "spreadsheet/exception.h"
#include "spreadsheet/limits.h"
#include "spreadsheet/sheet.h"

namespace spreadsheet {
namespace {

/// Appends column letters and the row number; `int64_t`, so that one past the greatest int still
/// fits.
void append_cell(std::u16string& text, std::int64_t row, std::int64_t column) {
    std::u16string letters;
    std::int64_t rest = column + 1;
    do {
        letters.push_back(static_cast<char16_t>(u'A' + (rest - 1) % 26));
        rest = (rest - 1) / 26;
    } while (rest > 0);
    text.append(letters.rbegin(), letters.rend());
    for (const char digit : std::to_string(row + 1))
        text.push_back(static_cast<char16_t>(digit));
}

bool is_within_google_limits(const Range& range) {
    const std::int64_t cells = range.count();
    if (cells == 1) {
        const std::int64_t row = std::max(range.first_row, 1);
        const std::int64_t column = std::max(range.first_column, 1);
        if (row * column > kMaxGoogleCells) return false;
    }
    const int last_valid_column = book::get_col_limit(book::format::GSHEET);
    return range.first_column <= last_valid_column && range.last_column <= last_valid_column &&
           cells <= kMaxGoogleCells && range.first_column <= range.last_column &&
           range.first_row <= range.last_row;
}

/// What to report for a text that is too large as a range and unknown as a name.
error_id too_large_error(std::u16string_view text, book::format fmt) {
    const bool google = fmt == book::format::GSHEET;
    if (text.find(u':') == std::u16string_view::npos)
        return google ? error_id::google_cell_out_of_bounds : error_id::cell_out_of_bounds;
    return google ? error_id::google_range_too_large : error_id::range_too_large;
}

/// The cells of a defined name; `parse_error` says why the text is no range.
Range named_range_or_throw(const ISheet& sheet, std::u16string_view text, book::format fmt,
                           error_id parse_error) {
    try {
        return sheet.named_range(std::u16string(text));
    } catch (const Exception&) {
        if (parse_error != error_id::range_too_large) throw;
        throw Exception(too_large_error(text, fmt));
    }
}

} // namespace

Range sheet_range(const char16_t* text, std::size_t length, std::shared_ptr<ISheet> sheet,
                  book::format fmt, bool strict_order, range_type* type_out,
                  sheet::boundedRange* bounded_out) {
    const Range used = sheet->used_range();
    error_id parse_error{};
    try {
        return parse_range(text, length, fmt, used, strict_order, type_out, bounded_out);
    } catch (const Exception& failure) {
        parse_error = failure.id();
    }
    const Range range = named_range_or_throw(*sheet, {text, length}, fmt, parse_error);
    if (type_out != nullptr) *type_out = range_type::named;
    return range;
}

std::u16string range_string(const Range& range) {
    std::u16string text;
    const std::int64_t cells = range.count();
    if (cells == 0) return text;
    append_cell(text, range.first_row, range.first_column);
    if (cells == 1) return text;
    text.push_back(u':');
    append_cell(text, range.last_row, range.last_column);
    return text;
}

bool is_valid_range(int row, int column, book::format fmt) {
    return row >= 0 && row <= book::get_row_limit(fmt) && column >= 0 &&
           column <= book::get_col_limit(fmt);
}

bool is_within_limits(const Range& range, book::format fmt) {
    if (range.first_row < 0 || range.first_column < 0) return false;
    if (fmt == book::format::GSHEET) return is_within_google_limits(range);
    const int last_valid_row = book::get_row_limit(fmt);
    const int last_valid_column = book::get_col_limit(fmt);
    return range.first_column <= last_valid_column && range.first_row <= last_valid_row &&
           range.last_column <= last_valid_column && range.last_row <= last_valid_row;
}

std::u16string getRangeTypeString(range_type type) {
    switch (type) {
    case range_type::two_corner:
        return u"two-corner";
    case range_type::single_cell:
        return u"single-cell";
    case range_type::column_only:
        return u"column-only";
    case range_type::row_only:
        return u"row-only";
    case range_type::named:
        return u"named";
    case range_type::empty:
        return u"empty";
    }
    return {};
}

} // namespace spreadsheet
