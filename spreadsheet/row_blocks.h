// SPDX-License-Identifier: Apache-2.0
//
// Blocks of rows as the cell iterators keep them: pairs (first row, last row), inclusive. Not for
// installation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace spreadsheet {

/// Rows of all blocks together, in 32 bits as the interface has it; no format has more rows.
inline std::uint32_t count_rows(const std::vector<int>& row_blocks) {
    std::uint32_t rows = 0;
    for (std::size_t block = 0; block + 1 < row_blocks.size(); block += 2)
        rows += static_cast<std::uint32_t>(row_blocks[block + 1]) -
                static_cast<std::uint32_t>(row_blocks[block]) + 1;
    return rows;
}

} // namespace spreadsheet
