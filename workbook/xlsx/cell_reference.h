// SPDX-License-Identifier: Apache-2.0
//
// Cell references as worksheets write them: A1, with or without dollar signs, letters in either
// case (ECMA-376 part 1, 18.18.7 and 18.18.62). Results are zero-based and within a sheet's limits.
#pragma once

#include <optional>
#include <string_view>

#include "workbook/cells/rectangle.h"

namespace workbook {

struct CellReference {
    int row, column;
};

/// The whole text as one cell; empty when it is not one.
std::optional<CellReference> parse_cell_reference(std::string_view text);

/// The whole text as one cell, two corners in any order, whole columns ("A:C") or rows ("3:5").
std::optional<Rectangle> parse_area_reference(std::string_view text);

} // namespace workbook
