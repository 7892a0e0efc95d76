// SPDX-License-Identifier: Apache-2.0
//
// Cell references as worksheets write them: A1, with or without dollar signs, letters in either
// case (ECMA-376 part 1, 18.18.7 and 18.18.62). Results are zero-based and within a sheet's limits.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace workbook {

struct CellReference {
    int row, column;
};

/// Corners in order, inclusive.
struct AreaReference {
    int first_row, last_row, first_column, last_column;
};

/// The whole text as one cell; empty when it is not one.
std::optional<CellReference> parse_cell_reference(std::string_view text);

/// The whole text as one cell or two corners in any order.
std::optional<AreaReference> parse_area_reference(std::string_view text);

/// "B7", for messages.
std::string cell_name(int row, int column);

} // namespace workbook
