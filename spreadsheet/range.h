// SPDX-License-Identifier: Apache-2.0
//
// Cell ranges and their A1 notation. Indices are zero-based and inclusive; A1 text is one-based.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/export.h"
#include "spreadsheet/book_format.h"

namespace spreadsheet {

class ISheet;

/// One cell, zero-based.
struct Cell {
    int row = 0;
    int column = 0;
    bool operator==(const Cell&) const = default;
};

/// A rectangle of cells, zero-based, both corners included.
struct Range {
    int first_row = 0;
    int first_column = 0;
    int last_row = 0;
    int last_column = 0;

    /// Number of cells; not positive when a last index lies before its first. The empty range has
    /// 0.
    std::int64_t count() const {
        return (std::int64_t{last_column} - first_column + 1) *
               (std::int64_t{last_row} - first_row + 1);
    }
    bool operator==(const Range&) const = default;
};

/// The shape that a range text had.
enum class range_type : std::uint8_t {
    two_corner = 0,
    single_cell = 1,
    column_only = 2,
    row_only = 3,
    named = 4,
    empty = 5
};

namespace sheet {
/// Whether a column-only or row-only selection was closed off at the format's limit.
enum class boundedRange : std::uint8_t { no = 0, yes = 1 };
} // namespace sheet

/// Parses A1 text: 'B3', 'A:C', '2:10' or 'A1:D20', letters in either case, spaces (U+0020) around
/// the parts.
///
///     Range r = parse_range(u"A1:D20", 6, book::format::XLSX, {}, false, nullptr, nullptr);
///
/// `length` counts UTF-16 units. `used` is the sheet's used range and closes off column-only and
/// row-only selections; with an unusable one (negative or empty) they reach to the format's limit
/// and 1 is stored in `*bounded_out`, which is left alone otherwise. With `strict_order` reversed
/// corners are an error, else they are swapped. Both out-pointers may be null; they may have been
/// written when an exception is thrown. Throws `Exception` 22 (not a range), 24 (beyond the limits
/// of `fmt`), 21 (something follows).
ZX_API Range parse_range(const char16_t* text, std::size_t length, book::format fmt, Range used,
                         bool strict_order, range_type* type_out, sheet::boundedRange* bounded_out);

/// Parses A1 text against a sheet, or else takes the text as one of the sheet's defined names (type
/// 4). Throws what `parse_range` and `ISheet::named_range` throw; for a text beyond the limits that
/// is no name either: without ':' 25 (GSHEET 54), with ':' 24 (GSHEET 52).
ZX_API Range sheet_range(const char16_t* text, std::size_t length, std::shared_ptr<ISheet> sheet,
                         book::format fmt, bool strict_order, range_type* type_out,
                         sheet::boundedRange* bounded_out);

/// The A1 text: 'B3' for one cell, else both corners, 'A1:D20'; empty for a range of 0 cells.
ZX_API std::u16string range_string(const Range& range);

/// True when the cell lies within the limits of the format.
ZX_API bool is_valid_range(int row, int column, book::format fmt);

/// True when the whole range passes the limits that `parse_range` checks last. For GSHEET: a single
/// cell whose indices multiply to at most 10,000,000, columns up to ZZZ, at most 10,000,000 cells,
/// corners in order.
ZX_API bool is_within_limits(const Range& range, book::format fmt);

/// The name of the shape: u"two-corner", u"single-cell", u"column-only", u"row-only", u"named",
/// u"empty"; empty for any other value.
ZX_API std::u16string getRangeTypeString(range_type type);

} // namespace spreadsheet
