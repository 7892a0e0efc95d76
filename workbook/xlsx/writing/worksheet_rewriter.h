// SPDX-License-Identifier: Apache-2.0
//
// Writes a worksheet part from the part it was and the changes made since. All that was not changed
// is copied as it stands: rows without a changed cell, cells beside changed ones, and every element
// around the cells. New elements take the place that the schema gives them (ECMA-376 part 1, A.2,
// CT_Worksheet). Applied to a part that it has written, the same changes give the same part.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "workbook/cells/cell_store.h"
#include "workbook/cells/cleared_cells.h"
#include "workbook/io/byte_sink.h"
#include "workbook/io/byte_source.h"
#include "workbook/xlsx/reading/worksheet_reader.h"

namespace workbook {

/// What was changed in a sheet. Cells are changed where the store marks them so.
struct WorksheetChanges {
    bool cells = false;   ///< a cell was written or cleared
    ClearedCells cleared; ///< what was there in the part is gone, unless the store has a new cell
    std::optional<std::vector<MergedRegion>> merged_regions; ///< all that are left
    std::optional<bool> is_protected;
    std::map<int, double> column_widths; ///< by zero-based column
    bool any() const { return cells || merged_regions || is_protected || !column_widths.empty(); }
};

/// Opens the part that is rewritten; called up to three times, since formulas that several cells
/// share have to be known before the first cell is written.
using PartOpener = std::function<std::unique_ptr<ByteSource>()>;

/// `complete` tells that `cells` holds every cell of the part, not only those of some rows;
/// `shared_index_of` where added strings stand in the saved file, by their index in the store.
/// Throws `Error`.
void rewrite_worksheet(const PartOpener& open_part, const CellStore& cells,
                       const std::vector<std::uint32_t>& shared_index_of,
                       const WorksheetChanges& changes, bool complete, ByteSink& out);

} // namespace workbook
