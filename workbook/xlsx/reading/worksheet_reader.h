// SPDX-License-Identifier: Apache-2.0
//
// Reads a worksheet part (ECMA-376 part 1, 18.3.1.99) in one streaming pass: cells, merged regions,
// protection. Reads chart-less dialog and macro sheets too.
#pragma once

#include <vector>

#include "workbook/cells/cell_store.h"
#include "workbook/cells/string_pool.h"
#include "workbook/io/byte_source.h"
#include "workbook/xlsx/reading/column_widths.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

/// Zero-based, inclusive.
struct RowSpan {
    int first = 0;
    int last = kMaxRows - 1;
};

/// Zero-based, corners inclusive.
struct MergedRegion {
    int first_row, last_row, first_column, last_column;
};

/// What follows the cells of a worksheet part.
struct WorksheetTail {
    std::vector<MergedRegion> merged_regions;
    bool is_protected = false;
};

/// The format of the cells of a row that do not exist.
struct RowFormat {
    int row;
    std::uint32_t format;
};

/// What stands before the cells.
struct WorksheetColumns {
    std::vector<ColumnSpan> spans;
    double default_width = 9.140625; ///< eight characters and the padding that applications add
};

struct WorksheetCells {
    CellStore cells;
    WorksheetColumns columns;
    std::vector<RowFormat> row_formats; ///< ascending; one for a row at most
    StringPool own_strings;
    /// One past the greatest shared string index that a cell uses; 0 when none does.
    std::uint64_t shared_strings_end = 0;
    /// One past the greatest index of a format that a cell or row has, 0 when none has one.
    std::uint32_t formats_end = 0;
};

/// Reads the cells of `rows` and stops behind the last wanted row, in which case `tail` is left
/// alone and the answer is false; otherwise fills both and answers true. `date_1904` is the book's
/// date system, for ISO dates. Throws `Error`.
bool read_worksheet(ByteSource& part, RowSpan rows, bool date_1904, WorksheetCells& cells,
                    WorksheetTail& tail);

/// Throws an `Error` unless the scanner's last Start, a root element, is that of a sheet.
void require_sheet_root(const XmlScanner& scanner);

/// Reads what follows the cells only.
WorksheetTail read_worksheet_tail(ByteSource& part);

} // namespace workbook
