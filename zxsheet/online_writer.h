// SPDX-License-Identifier: Apache-2.0
//
// Rows of cells on their way into a sheet online. A block of rows is one request that replaces the
// cells it finds: nothing is cleared before.
#pragma once

#include <cstddef>
#include <vector>

#include "spreadsheet/online.h"
#include "zxsheet/cell_grid.h"

namespace zxsheet {

/// Rows that follow each other; their cells are borrowed.
struct OnlineBlock {
    spreadsheet::Range range;
    /// Row after row; null for a cell without a value. Rows may be shorter than the range.
    std::vector<std::vector<const CellValue*>> rows;
};

/// Bytes that a cell takes in a request, about. Dates one below the other share what gives cells
/// that keep their formats the format of dates.
std::size_t request_bytes(const CellValue& cell, bool is_below_date);

/// Replaces the cells of the block's range, by one request.
void write_online(spreadsheet::OnlineSheet& sheet, const OnlineBlock& block, bool keep_formats);

} // namespace zxsheet
