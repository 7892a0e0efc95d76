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
#include "workbook/loaded_book.h"
#include "workbook/opc/opc_package.h"
#include "workbook/xlsx/reading/workbook_part.h"

namespace workbook {

class WorkbookEditor;
class XlsxSheet;

struct BookContents final : LoadedBook {
    /// `last_error` is where the book keeps its last failure; `path` is where the
    /// package was opened, empty for one in memory.
    BookContents(std::unique_ptr<OpcPackage> opened, std::u16string_view path,
                 LastError& last_error);
    ~BookContents() override;
    BookContents(const BookContents&) = delete;
    BookContents& operator=(const BookContents&) = delete;

    void load_sheets() override;
    void load_rows(int sheet_index, RowSpan rows) override;
    void close_file() override { close_package(); }
    const std::vector<std::string>& warnings() const override { return workbook.warnings; }
    std::size_t sheet_count() const override { return workbook.sheets.size(); }
    std::u16string_view sheet_name(std::size_t index) const override {
        return workbook.sheets[index]->name;
    }
    SheetKind sheet_kind(std::size_t index) const override { return workbook.sheets[index]->kind; }
    Sheet* sheet(std::size_t index) const override;
    void need_formats() override;
    StoredFormat& add_format() override;
    bool is_date_1904() const override { return workbook.date_1904; }
    void set_date_1904(bool on) override;
    Sheet& insert_sheet(int index, std::u16string_view name, const Sheet* source) override;
    void delete_sheet(int index) override;
    void move_sheet(int from, int to) override;
    SaveCounts save(std::u16string_view path) override;
    SaveCounts save(foundation::files::OutputFile& out, std::u16string_view extension) override;

    /// Reads the shared strings up to index `end`, if the book has them. Throws `Error`.
    void need_strings(std::uint64_t end);
    /// The XML of a sheet as a save would start from it; the package has to be open. Throws
    /// `Error`.
    std::unique_ptr<ByteSource> open_sheet_part(const SheetEntry& sheet);
    SheetScan scan_sheet(std::size_t index) override;
    std::vector<NamedCells> named_cells() override;
    /// The index of a sheet of this book.
    int index_of(const SheetEntry& sheet) const;
    /// A sheet or a table that the formula names and the book does not have: `sheet "Data"`.
    std::optional<std::string> missing_in(std::string_view formula);

    // Changes; they throw `Error` and have changed nothing then.
    void rename_sheet(SheetEntry& sheet, std::u16string_view name);
    void set_sheet_state(SheetEntry& sheet, SheetState state);
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
    std::optional<int> sheet_of_name(std::u16string_view name) const;
    std::unique_ptr<foundation::files::RandomAccessFile> open_source() const;

    bool has_styles_ = false;
    std::optional<std::uint64_t> saved_bytes_; ///< of the saved file, until it is opened
    std::vector<bool> claimed_formats_;        ///< by index; known once a format is added
    std::unique_ptr<WorkbookEditor> editor_;
};

/// Opens the package for a read after the load, and closes it again if it was closed before.
class PackageReading {
  public:
    /// Throws as `open_package` does.
    explicit PackageReading(BookContents& book) : book_(book), was_open_(book.package->is_open()) {
        book.open_package();
    }
    PackageReading(const PackageReading&) = delete;
    PackageReading& operator=(const PackageReading&) = delete;
    ~PackageReading() {
        if (!was_open_) book_.close_package();
    }

  private:
    BookContents& book_;
    const bool was_open_;
};

} // namespace workbook
