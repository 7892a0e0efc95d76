// SPDX-License-Identifier: Apache-2.0
//
// What a book has loaded, or begun as a new one: the part of `Book` that each file format does in
// its own way. Its operations throw `Error` and have changed nothing then; `FileBook` turns that
// into what `Book` promises.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/output_file.h"
#include "workbook/cells/sheet_data.h"
#include "workbook/cells/stored_book.h"
#include "workbook/library.h"

namespace workbook {

class LoadedBook : public StoredBook {
  public:
    using StoredBook::StoredBook;
    virtual ~LoadedBook() = default;

    /// Reads the cells of all worksheets.
    virtual void load_sheets() = 0;
    /// Reads the cells of one sheet's rows; see `Book::load_sheet` for `sheet_index`.
    virtual void load_rows(int sheet_index, RowSpan rows) = 0;
    /// Once what was asked for is read: closes the file if nothing comes back to it, so that nobody
    /// is kept from replacing it.
    virtual void close_file() = 0;
    /// One sentence each; see `Book::load_warnings`.
    virtual const std::vector<std::string>& warnings() const = 0;

    // Indices are those of sheets that exist.

    virtual std::size_t sheet_count() const = 0;
    virtual std::u16string_view sheet_name(std::size_t index) const = 0;
    virtual SheetKind sheet_kind(std::size_t index) const = 0;
    /// Null for a sheet whose cells were not read.
    virtual Sheet* sheet(std::size_t index) const = 0;

    /// Reads a worksheet and keeps no cell.
    virtual SheetScan scan_sheet(std::size_t index) = 0;
    /// See `Book::named_cells`.
    virtual std::vector<NamedCells> named_cells() = 0;

    /// Reads the formats of a book of which no cell was read.
    virtual void need_formats() {}
    /// With number format 0. No cell that was loaded has it.
    virtual StoredFormat& add_format() = 0;
    virtual bool is_date_1904() const = 0;

    // Changes; see `Book` for the arguments.

    virtual void set_date_1904(bool on) = 0;
    virtual Sheet& insert_sheet(int index, std::u16string_view name, const Sheet* source) = 0;
    virtual void delete_sheet(int index) = 0;
    virtual void move_sheet(int from, int to) = 0;
    virtual SaveCounts save(std::u16string_view path) = 0;
    virtual SaveCounts save(foundation::files::OutputFile& out, std::u16string_view extension) = 0;

  protected:
    /// `index`, which has to be below `end`.
    std::size_t checked_index(int index, std::size_t end) const;
    /// The sheet that a load of one sheet is for.
    std::size_t wanted_sheet(int index) const;

    /// Moves an element of a list so that it is at `to`.
    template <class List>
    static void move_element(List& list, std::size_t from, std::size_t to) {
        const auto at = [&list](std::size_t i) {
            return list.begin() + static_cast<std::ptrdiff_t>(i);
        };
        if (from < to)
            std::rotate(at(from), at(from + 1), at(to + 1));
        else
            std::rotate(at(to), at(from), at(from + 1));
    }
};

} // namespace workbook
