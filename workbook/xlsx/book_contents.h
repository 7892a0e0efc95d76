// SPDX-License-Identifier: Apache-2.0
//
// What one load of an Open XML book has read; the book and its sheets share it. A new load makes a
// new one, and with the old one go all sheets and formats.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/cells/sheet_data.h"
#include "workbook/cells/stored_book.h"
#include "workbook/library.h"
#include "workbook/opc/opc_package.h"
#include "workbook/xlsx/reading/workbook_part.h"

namespace workbook {

class WorkbookEditor;
class XlsxSheet;

struct BookContents : StoredBook {
    /// `last_error` is where the book keeps its last failure; `path` is where the
    /// package was opened, empty for one in memory.
    BookContents(std::unique_ptr<OpcPackage> opened, std::u16string_view path,
                 LastError& last_error);
    ~BookContents();
    BookContents(const BookContents&) = delete;
    BookContents& operator=(const BookContents&) = delete;

    /// Reads the cells of all worksheets. Throws `Error`.
    void load_sheets();
    /// Reads the cells of one sheet's rows; see `Book::load_sheet` for `sheet_index`. Throws
    /// `Error`.
    void load_rows(int sheet_index, RowSpan rows);
    /// Reads the formats of a book of which no cell was loaded. Throws `Error`.
    void need_styles();
    /// With number format 0. No cell that was loaded has it. Throws `Error`.
    StoredFormat& add_format();
    /// Reads the shared strings up to index `end`, if the book has them. Throws `Error`.
    void need_strings(std::uint64_t end);
    /// The XML of a sheet as a save would start from it; opens the package. Throws `Error`.
    std::unique_ptr<ByteSource> open_sheet_part(const SheetEntry& sheet);
    /// Reads a worksheet's part and keeps no cell. Throws `Error`.
    SheetScan scan_sheet(const SheetEntry& sheet);
    /// See `Book::named_cells`. Throws `Error`.
    std::vector<NamedCells> named_cells();
    /// The index of a sheet of this book.
    int index_of(const SheetEntry& sheet) const;

    // Changes to the structure; see `Book` for the arguments. They throw `Error` and have changed
    // nothing then.
    XlsxSheet& insert_sheet(int index, std::u16string_view name, const Sheet* source);
    void delete_sheet(int index);
    void move_sheet(int from, int to);
    void rename_sheet(SheetEntry& sheet, std::u16string_view name);
    void set_sheet_state(SheetEntry& sheet, SheetState state);
    void set_date_1904(bool on);
    /// Made when the first change asks for it; opens the package.
    WorkbookEditor& editor();
    /// Opens the package again if it was closed. Throws `Error` when its file has gone or is no
    /// longer the one that was loaded.
    void open_package();
    /// Closes the package unless a sheet comes back to it: nobody is kept from replacing the file.
    void close_package();
    /// After a save over the file that the book was read from, of `file_bytes`: what is opened next
    /// is the saved file.
    void continue_with_saved_file(std::uint64_t file_bytes);

    std::unique_ptr<OpcPackage> package; ///< where everything that was not changed is copied from
    std::u16string source_path;          ///< of the package's file; empty for one in memory
    bool is_new = false;                 ///< made, not loaded
    WorkbookPart workbook;
    std::size_t formats_in_file = 0;
    std::vector<std::unique_ptr<XlsxSheet>> sheets; ///< by index; null where no cells were loaded

  private:
    void read_styles();
    void read_sheet(std::size_t index, RowSpan rows);
    void read_strings();
    std::size_t wanted_sheet(int index) const;
    std::optional<int> sheet_of_name(std::u16string_view name) const;
    std::size_t checked_index(int index, std::size_t end) const;

    std::unique_ptr<foundation::files::RandomAccessFile> open_source() const;

    bool has_styles_ = false;
    std::optional<std::uint64_t> saved_bytes_; ///< of the saved file, until it is opened
    std::vector<bool> claimed_formats_;        ///< by index; known once a format is added
    std::unique_ptr<WorkbookEditor> editor_;
};

} // namespace workbook
