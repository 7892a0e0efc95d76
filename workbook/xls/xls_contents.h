// SPDX-License-Identifier: Apache-2.0
//
// What one load of an XLS book has read; the book and its sheets share it. A new load makes a new
// one, and with the old one go all sheets and formats.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/cells/sheet_data.h"
#include "workbook/loaded_book.h"
#include "workbook/xls/formula/formula_context.h"
#include "workbook/xls/reading/globals.h"
#include "workbook/xls/reading/sheet_reader.h"
#include "workbook/xls/reading/workbook_stream.h"

namespace workbook {

class XlsSheet;

struct XlsContents final : LoadedBook {
    /// Reads the globals. `last_error` is where the book keeps its last failure; `path` is empty
    /// for a file that is not to be opened again. Throws `Error`.
    XlsContents(WorkbookStream opened, std::u16string path, LastError& last_error);
    /// A new book without sheets.
    explicit XlsContents(LastError& last_error);
    ~XlsContents() override;

    void load_sheets() override;
    void load_rows(int sheet_index, RowSpan rows) override;
    void close_file() override;
    const std::vector<std::string>& warnings() const override { return globals.warnings; }
    std::size_t sheet_count() const override { return entries.size(); }
    std::u16string_view sheet_name(std::size_t index) const override {
        return entries[index]->name;
    }
    SheetKind sheet_kind(std::size_t index) const override { return entries[index]->kind; }
    Sheet* sheet(std::size_t index) const override;
    StoredFormat& add_format() override;
    bool is_date_1904() const override { return date_1904; }
    void set_date_1904(bool on) override { date_1904 = on; }
    Sheet& insert_sheet(int index, std::u16string_view name, const Sheet* source) override;
    void delete_sheet(int index) override;
    void move_sheet(int from, int to) override;
    SaveCounts save(std::u16string_view path) override;
    SaveCounts save(foundation::files::OutputFile& out, std::u16string_view extension) override;

    /// Reads the cells of some rows of a sheet, and what else the sheet has. Throws `Error`.
    SheetEnd read_rows(const XlsSheetEntry& sheet, RowSpan rows, SheetCells& cells,
                       SheetTail& tail);
    /// Likewise, as part of the load. Throws `Error` for sheets that have most of their bytes in
    /// common, from which a small file could make cells without end.
    void load_rows_of(const XlsSheetEntry& sheet, RowSpan rows, SheetCells& cells, SheetTail& tail);
    /// Reads the shared strings up to index `end`, if the book has them. Throws `Error`.
    void need_strings(std::uint64_t end);
    /// What the loaded book's formulas refer to; read by the first call. Throws `Error`.
    const biff::FormulaContext& formula_context();
    SheetScan scan_sheet(std::size_t index) override;
    /// Sheets are those of the file.
    std::vector<NamedCells> named_cells() override;

    // Changes. Throw `Error` and then have changed nothing.
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
    void check_name(std::u16string_view name, const XlsSheetEntry* own) const;
    void check_not_last_visible(const XlsSheetEntry& sheet) const;
    void check_list_can_change() const;
    void add_formats();
    void read_sheet_at(std::size_t index, RowSpan rows);
    void finish_sheets();

    std::optional<biff::FormulaContext> formula_context_;
    std::uint64_t loaded_bytes_ = 0; ///< of all sheets that were read
};

} // namespace workbook
