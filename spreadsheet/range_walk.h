// SPDX-License-Identifier: Apache-2.0
//
// Walks over the cells of a range. A range may end at the greatest int, which a loop counter of
// that type never passes. Not for installation.
#pragma once

#include <cstddef>
#include <cstdint>

#include "spreadsheet/range.h"

namespace spreadsheet {

inline bool is_empty(const Range& range) {
    return range.last_row < range.first_row || range.last_column < range.first_column;
}

/// Number of indices from `first` to `last` (inclusive); 0 when there are none.
inline std::size_t extent(int first, int last) {
    return last < first ? 0 : static_cast<std::size_t>(std::int64_t{last} - first + 1);
}

/// Calls `visit(row, column)` for each cell, column after column.
template <class Visit>
void for_each_cell(const Range& range, Visit visit) {
    for (std::int64_t column = range.first_column; column <= range.last_column; ++column)
        for (std::int64_t row = range.first_row; row <= range.last_row; ++row)
            visit(static_cast<int>(row), static_cast<int>(column));
}

/// Calls `visit(index, row, column)` for each cell, row after row; `index` is the cell's place in
/// an array that goes column after column.
template <class Visit>
void for_each_cell_by_row(const Range& range, Visit visit) {
    const std::size_t rows = extent(range.first_row, range.last_row);
    for (std::int64_t row = range.first_row; row <= range.last_row; ++row) {
        auto index = static_cast<std::size_t>(row - range.first_row);
        for (std::int64_t column = range.first_column; column <= range.last_column;
             ++column, index += rows)
            visit(index, static_cast<int>(row), static_cast<int>(column));
    }
}

} // namespace spreadsheet
