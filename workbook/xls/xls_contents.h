// SPDX-License-Identifier: Apache-2.0
//
// What one load of an XLS book has read; the book and its sheets share it. A new load makes a new
// one, and with the old one go all sheets and formats.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/cells/sheet_data.h"
#include "workbook/cells/stored_book.h"
#include "workbook/xls/reading/globals.h"
#include "workbook/xls/reading/workbook_stream.h"

namespace workbook {

class XlsSheet;

struct XlsContents : StoredBook {
    /// Reads the globals. `last_error` is where the book keeps its last failure. Throws `Error`.
    XlsContents(WorkbookStream opened, LastError& last_error);
    ~XlsContents();

    /// Reads the cells of all worksheets. Throws `Error`.
    void load_sheets();
    /// Reads the cells of one sheet's rows; see `Book::load_sheet` for `sheet_index`. Throws
    /// `Error`.
    void load_rows(int sheet_index, RowSpan rows);
    /// Reads the cells of some rows of a sheet, and what else the sheet has. Throws `Error`.
    void read_rows(const XlsSheetEntry& sheet, RowSpan rows, SheetCells& cells, SheetTail& tail);
    /// Reads the shared strings up to index `end`, if the book has them. Throws `Error`.
    void need_strings(std::uint64_t end);
    /// With number format 0. Throws `Error`.
    StoredFormat& add_format();
    /// The index of a sheet of this book.
    int index_of(const XlsSheetEntry& sheet) const;

    WorkbookStream source; ///< every record of the file: a change keeps what it does not touch
    XlsGlobals globals;
    std::vector<std::unique_ptr<XlsSheet>> sheets; ///< by index; null where no cells were loaded

  private:
    void add_formats();
    void read_sheet_at(std::size_t index, RowSpan rows);
    void finish_sheets();
    std::size_t wanted_sheet(int index) const;
};

} // namespace workbook
