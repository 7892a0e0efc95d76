// SPDX-License-Identifier: Apache-2.0
//
// Writes a sheet's substream from what it was and the changes made since (MS-XLS 2.1.7.20.5). All
// that was not changed is copied: cells beside changed ones and every record around the cells. Rows
// are written in blocks with INDEX and DBCELL records for them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "workbook/cells/cell_store.h"
#include "workbook/cells/sheet_data.h"
#include "workbook/xls/biff_version.h"
#include "workbook/xls/writing/cell_record_writer.h"

namespace workbook {

/// Views and references must outlive the call they are given to.
struct SheetRewrite {
    std::string_view stream;  ///< that the sheet was read from
    std::size_t position = 0; ///< of its BOF record
    BiffVersion version = BiffVersion::Biff8;
    std::uint16_t default_format = 0; ///< of rows and columns without one of their own
    const CellStore& cells;           ///< changed ones are marked
    const SheetChanges& changes;
    const AddedStrings& strings;
};

/// The new substream. Positions in it (INDEX) count from its first byte. Throws `Error`.
std::string rewrite_sheet(const SheetRewrite& sheet);

/// Adds `distance` to the positions in the INDEX record of a substream, which moves by so much.
void move_index(std::string& substream, BiffVersion version, std::int64_t distance);

} // namespace workbook
