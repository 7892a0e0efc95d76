// SPDX-License-Identifier: Apache-2.0
//
// A book of any file format. A load that fails leaves nothing but the chance of another load;
// before any load, a book becomes a new one with its first change.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/output_file.h"
#include "workbook/last_error.h"
#include "workbook/library.h"
#include "workbook/loaded_book.h"

namespace workbook {

class FileBook : public Book {
  public:
    bool load(BookSource source) final;
    bool load_sheet(BookSource source, int sheet_index) final;
    bool load_partially(BookSource source, int sheet_index, int first_row, int last_row) final;
    bool load_info(BookSource source) final;
    std::vector<std::string> load_warnings() const final;

    int sheet_count() const final;
    Sheet* get_sheet(int index) final;
    std::u16string_view get_sheet_name(int index) const final;
    SheetKind sheet_type(int index) const final;
    std::optional<SheetScan> scan_sheet(int index) final;
    std::vector<NamedCells> named_cells() final;

    int format_size() const final;
    Format* format(int index) final;
    Format* add_format() final;

    bool is_date_1904() const final;
    bool set_date_1904(bool on) final;

    Sheet* insert_sheet(int index, std::u16string_view name, const Sheet* source) final;
    bool delete_sheet(int index) final;
    bool move_sheet(int from, int to) final;
    bool save(std::u16string_view path) final;
    bool save(foundation::files::OutputFile& out, std::u16string_view extension) final;
    SaveCounts last_save() const final { return last_save_; }

    ErrorKind error_kind() const final { return error_.kind(); }
    std::optional<foundation::files::FileProblem> file_problem() const final {
        return error_.file_problem();
    }
    const char* error_message() const final { return error_.message().c_str(); }

  protected:
    // What a file format adds. `path` is empty for a file that is not to be opened again; the last
    // error is the book's. Throw `Error`.

    /// Reads what the book says of itself, and no cell.
    virtual std::unique_ptr<LoadedBook>
    open(std::unique_ptr<foundation::files::RandomAccessFile> file, std::u16string path,
         LastError& last_error) = 0;
    /// A new book without sheets.
    virtual std::unique_ptr<LoadedBook> make_new(LastError& last_error) = 0;

  private:
    /// Runs `action()` and returns true. What it throws becomes the last error; the result is false
    /// then, except for std::bad_alloc, which passes on.
    template <class Action>
    bool attempt(const Action& action) const;
    /// Opens the book and lets `read_cells` fill it.
    template <class ReadCells>
    bool load_with(BookSource source, const ReadCells& read_cells);
    /// Attempts `change(book)` on what is loaded, or on a new book.
    template <class Change>
    bool try_change(const Change& change);
    bool has_sheet(int index) const;
    /// As `has_sheet`; false with a reason.
    bool need_sheet(int index) const;

    SaveCounts last_save_;
    bool load_failed_ = false;
    mutable LastError error_;
    std::unique_ptr<LoadedBook> loaded_;
};

} // namespace workbook
