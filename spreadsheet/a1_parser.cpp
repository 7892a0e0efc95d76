// SPDX-License-Identifier: Apache-2.0
//
// From A1 text to a range: the text is scanned into up to two corners, the corners are checked for
// their shape, closed off to a range and held against the limits of the format.
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

#include "spreadsheet/exception.h"
#include "spreadsheet/range.h"

namespace spreadsheet {
namespace {

constexpr int kAbsent = -999;
constexpr int kOverflowed = std::numeric_limits<int>::max();

bool is_letter(char16_t unit) {
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
}
bool is_digit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

/// One based to zero based; a value of zero gives -1.
int to_index(std::int64_t value) {
    return value > kOverflowed ? kOverflowed : static_cast<int>(value - 1);
}

/// What the text names: corners whose parts may be absent.
struct Corners {
    int row_1 = kAbsent;
    int column_1 = kAbsent;
    bool colon = false;
    int row_2 = kAbsent;
    int column_2 = kAbsent;
};

/// Takes the text apart from left to right.
class Scanner {
  public:
    explicit Scanner(std::u16string_view text) : rest_(text) {}

    Corners corners() {
        Corners found;
        skip_spaces();
        found.column_1 = column();
        found.row_1 = row();
        skip_spaces();
        if (!rest_.empty() && rest_.front() == u':') {
            found.colon = true;
            rest_.remove_prefix(1);
        }
        skip_spaces();
        found.column_2 = column();
        found.row_2 = row();
        return found;
    }

    /// True when nothing but spaces is left.
    bool at_end() {
        skip_spaces();
        return rest_.empty();
    }

  private:
    void skip_spaces() {
        while (!rest_.empty() && rest_.front() == u' ')
            rest_.remove_prefix(1);
    }

    int column() {
        return number(is_letter, 26, [](char16_t unit) { return (unit & 0x1F); });
    }
    int row() {
        return number(is_digit, 10, [](char16_t unit) { return unit - u'0'; });
    }

    /// The longest run of figures as a zero-based index.
    template <class IsFigure, class ValueOf>
    int number(IsFigure is_figure, int base, ValueOf value_of) {
        if (rest_.empty() || !is_figure(rest_.front())) return kAbsent;
        std::int64_t value = 0;
        for (; !rest_.empty() && is_figure(rest_.front()); rest_.remove_prefix(1))
            if (value <= kOverflowed) value = value * base + value_of(rest_.front());
        return to_index(value);
    }

    std::u16string_view rest_;
};

/// Puts a reversed pair in order, or reports it when the order is strict.
void put_in_order(int& first, int& second, bool strict_order) {
    if (first == kAbsent || second == kAbsent || second >= first) return;
    if (strict_order) throw Exception(error_id::range_not_parsed);
    std::swap(first, second);
}

range_type shape_of(const Corners& corners) {
    const bool row_1 = corners.row_1 != kAbsent;
    const bool column_1 = corners.column_1 != kAbsent;
    const bool row_2 = corners.row_2 != kAbsent;
    const bool column_2 = corners.column_2 != kAbsent;
    if (corners.colon) {
        if (column_1 && column_2 && !row_1 && !row_2) return range_type::column_only;
        if (row_1 && row_2 && !column_1 && !column_2) return range_type::row_only;
        if (row_1 && column_1 && row_2 && column_2) return range_type::two_corner;
    } else if (row_1 && column_1 && !row_2 && !column_2) {
        return range_type::single_cell;
    }
    throw Exception(error_id::range_not_parsed);
}

range_type check_corners(Corners& corners, bool strict_order) {
    for (const int row : {corners.row_1, corners.row_2})
        if (row < 0 && row != kAbsent) throw Exception(error_id::range_not_parsed);
    put_in_order(corners.row_1, corners.row_2, strict_order);
    put_in_order(corners.column_1, corners.column_2, strict_order);
    return shape_of(corners);
}

/// Turns corners into a range; `bounded` is set when the format's limit closes it off.
Range close_off(const Corners& corners, range_type shape, book::format fmt, const Range& used,
                bool& bounded) {
    switch (shape) {
    case range_type::single_cell:
        return {corners.row_1, corners.column_1, corners.row_1, corners.column_1};
    case range_type::column_only:
        if (used.first_row >= 0 && used.last_row >= 0 && used.count() != 0)
            return {used.first_row, corners.column_1, used.last_row, corners.column_2};
        bounded = true;
        return {0, corners.column_1, book::get_row_limit(fmt), corners.column_2};
    case range_type::row_only:
        if (used.first_column >= 0 && used.last_column >= 0 && used.count() != 0)
            return {corners.row_1, used.first_column, corners.row_2, used.last_column};
        bounded = true;
        return {corners.row_1, 0, corners.row_2, book::get_col_limit(fmt)};
    default:
        return {corners.row_1, corners.column_1, corners.row_2, corners.column_2};
    }
}

} // namespace

Range parse_range(const char16_t* text, std::size_t length, book::format fmt, Range used,
                  bool strict_order, range_type* type_out, sheet::boundedRange* bounded_out) {
    Scanner scanner({text, length});
    Corners corners = scanner.corners();
    const range_type shape = check_corners(corners, strict_order);
    if (type_out != nullptr) *type_out = shape;
    bool bounded = false;
    const Range range = close_off(corners, shape, fmt, used, bounded);
    if (bounded && bounded_out != nullptr) *bounded_out = sheet::boundedRange::yes;
    if (!is_within_limits(range, fmt)) throw Exception(error_id::range_too_large);
    if (!scanner.at_end()) throw Exception(error_id::trailing_characters);
    return range;
}

} // namespace spreadsheet
