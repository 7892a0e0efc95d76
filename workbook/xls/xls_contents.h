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
    /// Reads the globals. `last_error` is where the book keeps its last failure; `path` is empty
    /// for a file that is not to be opened again. Throws `Error`.
    XlsContents(WorkbookStream opened, std::u16string path, LastError& last_error);
    /// A new book without sheets.
    explicit XlsContents(LastError& last_error);
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
    /// Reads a worksheet and keeps no cell. Throws `Error`.
    SheetScan scan_sheet(const XlsSheetEntry& sheet);
    /// See `Book::named_cells`; sheets are those of the file.
    std::vector<NamedCells> named_cells() const;
    /// With number format 0. Throws `Error`.
    StoredFormat& add_format();

    // Changes. Throw `Error` and then have changed nothing.

    /// A copy of `source`, unless that is null.
    XlsSheet& insert_sheet(int index, std::u16string_view name, const Sheet* source);
    void delete_sheet(int index);
    void move_sheet(int from, int to);
    void rename_sheet(XlsSheetEntry& sheet, std::u16string_view name);
    void set_sheet_state(XlsSheetEntry& sheet, SheetState state);

    const bool is_new = false;  ///< not loaded
    std::u16string source_path; ///< of the loaded file; empty for one that stays open
    WorkbookStream source;      ///< as it was loaded: a change keeps what it does not touch
    XlsGlobals globals;         ///< as loaded
    /// As the book is now; at first, those of the globals.
    bool date_1904 = false;
    std::vector<std::unique_ptr<XlsSheetEntry>> entries;
    std::vector<std::unique_ptr<XlsSheet>> sheets; ///< beside `entries`; null without loaded cells

  private:
    XlsContents(WorkbookStream opened, std::u16string path, bool is_new_book,
                LastError& last_error);
    std::size_t checked_index(int index, std::size_t end) const;
    void check_name(std::u16string_view name, const XlsSheetEntry* own) const;
    void check_not_last_visible(const XlsSheetEntry& sheet) const;
    void check_list_can_change() const;
    void add_formats();
    void read_sheet_at(std::size_t index, RowSpan rows);
    void finish_sheets();
    std::size_t wanted_sheet(int index) const;
};

} // namespace workbook
