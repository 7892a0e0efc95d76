// SPDX-License-Identifier: Apache-2.0
//
// The text of --range: A1 notation, with a sheet before it or not, or a name.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "spreadsheet/spreadsheet.h"

namespace zxsheet {

/// "Data!A1:B2" and "'It''s'!$A$1", taken apart.
struct RangeReference {
    std::optional<std::string> sheet; ///< without its quotes
    std::string cells;                ///< without dollar signs where it is A1 notation
};

RangeReference split_reference(const std::string& text);

/// A1 notation, before it is known which cells a sheet has.
struct CellsText {
    spreadsheet::Range range; ///< of whole columns or rows only what they say counts
    spreadsheet::range_type type = spreadsheet::range_type::two_corner;

    bool has_rows() const { return type != spreadsheet::range_type::column_only; }
    bool has_columns() const { return type != spreadsheet::range_type::row_only; }
};

/// No value for a text that is not A1 notation within the limits of the format.
std::optional<CellsText> parse_cells(const std::string& text, spreadsheet::book::format format);

/// The cells of a defined name or table of any sheet of the book, the name compared without regard
/// to case. Where sheets have names of their own, that of `sheet` comes first, then the book's.
std::optional<spreadsheet::NamedRange>
find_named_range(const std::shared_ptr<spreadsheet::IBook>& book, const std::string& name,
                 std::optional<std::size_t> sheet);

} // namespace zxsheet
