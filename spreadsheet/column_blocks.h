// SPDX-License-Identifier: Apache-2.0
//
// Ranges cut into blocks of whole columns, so that what is kept for each cell of a block is
// bounded. Not for installation.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "spreadsheet/range_walk.h"

namespace spreadsheet {

/// Most back-ends answer a block with one request, so blocks are large.
inline constexpr std::int64_t kCellsOfColumnBlock = std::int64_t{1} << 25;

inline std::vector<Range> column_blocks(const Range& range) {
    const auto rows = static_cast<std::int64_t>(extent(range.first_row, range.last_row));
    const std::int64_t width = std::max<std::int64_t>(1, kCellsOfColumnBlock / rows);
    std::vector<Range> blocks;
    for (std::int64_t column = range.first_column; column <= range.last_column; column += width) {
        const std::int64_t last = std::min<std::int64_t>(column + width - 1, range.last_column);
        blocks.push_back(
            {range.first_row, static_cast<int>(column), range.last_row, static_cast<int>(last)});
    }
    return blocks;
}

} // namespace spreadsheet
