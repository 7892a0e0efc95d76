// SPDX-License-Identifier: Apache-2.0
//
// Reads the substream of a worksheet, macro sheet or dialog sheet (MS-XLS 2.1.7.20.5) in one pass:
// cells, columns, row formats, merged regions, protection.
#pragma once

#include <cstddef>
#include <string_view>

#include "workbook/cells/sheet_data.h"
#include "workbook/xls/reading/cell_records.h"

namespace workbook {

struct SheetEnd {
    std::size_t position = 0; ///< after the sheet's last record in the stream
    bool is_stated = false;   ///< by an EOF record; false where the stream ends first
};

/// Reads the sheet whose BOF record is at `position` of the stream. `cells` gets the cells of
/// `rows` only; everything else is read whichever rows are wanted. Throws `Error`.
SheetEnd read_sheet(std::string_view stream, std::size_t position, const CellContext& context,
                    RowSpan rows, ByteText& byte_text, SheetCells& cells, SheetTail& tail);

} // namespace workbook
