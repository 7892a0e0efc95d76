// SPDX-License-Identifier: Apache-2.0
//
// Writes a worksheet part from the part it was and the changes made since. All that was not changed
// is copied unchanged: rows without a changed cell, cells beside changed ones, and every element
// around the cells. New elements take the place that the schema gives them (ECMA-376 part 1, A.2,
// CT_Worksheet). Applied to a part that it has written, the same changes give the same part.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "workbook/cells/sheet_data.h"
#include "workbook/io/byte_sink.h"
#include "workbook/io/byte_source.h"

namespace workbook {

/// Opens the part that is rewritten; called up to three times, since formulas that several cells
/// share have to be known before the first cell is written.
using PartOpener = std::function<std::unique_ptr<ByteSource>()>;

/// `complete` says that `cells` holds every cell of the part, not only those of some rows;
/// `shared_index_of` where added strings are in the saved file, by their index in the store.
/// Throws `Error`.
void rewrite_worksheet(const PartOpener& open_part, const CellStore& cells,
                       const std::vector<std::uint32_t>& shared_index_of,
                       const SheetChanges& changes, bool complete, ByteSink& out);

} // namespace workbook
