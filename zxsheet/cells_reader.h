// SPDX-License-Identifier: Apache-2.0
//
// Reads what `zxsheet read` prints with --to cells and --to cells.jsonl: a line for each cell.
#pragma once

#include <functional>

#include "zxsheet/cell_grid.h"
#include "zxsheet/output_format.h"
#include "zxsheet/text_input.h"

namespace zxsheet {

/// Hands over the cells in the order of the lines, zero-based; cells without a value come as
/// `empty`. A number may be a time of day or an elapsed time ("13:05:00"), a date a serial number.
/// Throws `CommandError` that names the line for anything else.
void read_cells(TextInput& input, CellLayout layout, const CellVisitor& visit);

} // namespace zxsheet
