// SPDX-License-Identifier: Apache-2.0
//
// Areas of cells and their addresses as text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace office {

/// Zero-based, both ends inclusive.
struct CellArea {
    int first_row;
    int first_column;
    int last_row;
    int last_column;

    int rows() const { return last_row - first_row + 1; }
    int columns() const { return last_column - first_column + 1; }
    bool contains(const CellArea& other) const;
    bool operator==(const CellArea&) const = default;
};

/// How large a sheet of the application is.
inline constexpr int kRows = 1'048'576;
inline constexpr int kColumns = 16'384;

/// The area of an address such as "B2", "$A$1:C5", "A:C" or "1:5"; nullopt for anything else, and
/// for an area beyond the sheet.
std::optional<CellArea> parse_address(std::u16string_view text);

/// "$A$1", "$A$1:$C$5", "$A:$C", "$1:$5".
std::u16string format_address(const CellArea& area);

} // namespace office
