// SPDX-License-Identifier: Apache-2.0
//
// The interface of a workbook, whatever holds it. Books come from spreadsheet/book_factory.h, which
// has run one of the `init_` operations; the others may be called in any order. The order of the
// virtual functions is part of the interface.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/export.h"
#include "spreadsheet/book_format.h"
#include "spreadsheet/cell_exchange.h"

namespace spreadsheet {

class ISheet;

/// A workbook. Used by one thread at a time; its sheets must not outlive it. Every operation throws
/// `Exception`; sheet indices are zero-based.
class ZX_API IBook {
  public:
    IBook() = default;
    IBook(const IBook&) = default;
    IBook& operator=(const IBook&) = default;

    /// True when a spreadsheet application serves the book.
    virtual bool is_interactive() const = 0;
    virtual book::format format() const = 0;
    /// Whether the workbook counts serial dates from 1904.
    virtual bool are_dates_1904() const = 0;
    /// Number of sheets of the workbook, whether their cells were loaded or not.
    virtual std::size_t num_sheets() const = 0;
    /// The loaded sheet of that name, compared without regard to case; null when there is none.
    /// `Exception` 31 for a chart sheet.
    virtual std::shared_ptr<ISheet> sheet(const std::u16string& name) const = 0;
    /// The sheet at an index, a placeholder for a chart sheet; null when no sheet is loaded. The
    /// caller gives a valid index. When only one sheet was loaded (`is_sheet_loaded`), it is at
    /// index 0, whatever its index in the workbook.
    virtual std::shared_ptr<ISheet> sheet(std::size_t index) const = 0;
    /// The name of the workbook's sheet at an index. Where there is no such sheet, no value; a
    /// workbook file has an empty name for it.
    virtual std::optional<std::u16string> get_sheet_name(const int index) const = 0;
    /// Inserts a sheet at `index` (at most `num_sheets()`) and returns it; `second_name` names the
    /// sheet to copy, or is empty. Call the checked free function `add_sheet` instead.
    virtual std::shared_ptr<ISheet> add_sheet(std::size_t index, const std::u16string& name,
                                              const std::u16string& second_name) = 0;
    virtual void remove_sheet(std::size_t index) = 0;
    /// The kind of the workbook's sheet at an index; worksheet for a kind that is not known.
    virtual sheet::type sheet_type(std::size_t index) const = 0;
    /// The path the book was loaded from; empty where the back-end keeps none.
    virtual const std::u16string get_file_name(bool);

    /// Loads the whole workbook.
    virtual void init_from_file(const std::u16string& path, book::format) = 0;
    /// Loads one sheet. A workbook file whose sheet cannot be loaded alone is loaded as a whole;
    /// `is_sheet_loaded` tells which of the two happened. So do the next two.
    virtual void init_from_file_with_sheet(const std::u16string& path, book::format,
                                           std::size_t sheet_index) = 0;
    /// Loads rows `first_row` to `last_row` (zero-based, inclusive) of one sheet.
    virtual void init_from_file_with_range(const std::u16string& path, book::format,
                                           std::size_t sheet_index, std::size_t first_row,
                                           std::size_t last_row) = 0;
    /// Loads the list of sheet names; `sheet_names_only_required` tells whether it was that alone.
    virtual void init_from_file_only_sheetNames(const std::u16string& path, book::format) = 0;
    /// Whether the last `init_` operation succeeded.
    virtual bool is_loaded() const = 0;
    /// Whether only one sheet, or a part of it, was loaded.
    virtual bool is_sheet_loaded() const = 0;
    /// Whether only the sheet names were loaded.
    virtual bool sheet_names_only_required() const = 0;
    /// The names that `init_from_file_only_sheetNames` found; empty after any other load.
    virtual std::vector<std::u16string> get_sheet_names() const = 0;

    virtual ~IBook();

    /// Makes a new workbook of `sheet_count` empty sheets; `name` is the stem of their names,
    /// "Sheet" when empty.
    virtual void init_new(std::size_t sheet_count, book::format, const std::u16string& name) = 0;
    /// `Exception` 15 where the back-end does not support it.
    virtual void init_from_memory(const void* bytes, std::size_t size, book::format) = 0;
    virtual void save(const std::u16string& path) = 0;
    /// `Exception` 14 where the back-end does not support it.
    virtual void save_to_memory(std::vector<unsigned char>& bytes) = 0;
};

} // namespace spreadsheet
