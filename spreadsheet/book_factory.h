// SPDX-License-Identifier: Apache-2.0
//
// Where books come from: loaders, the creator, the checked `add_sheet` and `save_book`, start and
// stop of the library, its logger. Call `initialize` once before the first book and `release` at
// the end.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "foundation/export.h"
#include "foundation/log.h"
#include "spreadsheet/book.h"
#include "spreadsheet/book_format.h"
#include "spreadsheet/failure.h"
#include "spreadsheet/sheet.h"

namespace spreadsheet {

/// Loads a whole workbook. Throws `Exception` 9 when it cannot be loaded or `mode` selects no
/// back-end, 30 for a format that the back-end does not serve, 18 when a spreadsheet application is
/// asked for and none can be started. Paths are UTF-16; for Google the spreadsheet's ID.
/// Applications load whole workbooks only: the functions below that load parts throw 9 for them.
ZX_API std::shared_ptr<IBook> load_book_from_file(const std::u16string& path, book::format format,
                                                  book::interactive mode);

/// As above, with the format from the path's extension: `Exception` 29 for an unknown one.
ZX_API std::shared_ptr<IBook> load_book_from_file(const std::u16string& path,
                                                  book::interactive mode);

/// Loads rows `first_row` to `last_row` (zero-based, inclusive) of the sheet at `sheet_index`,
/// which the book hands out as `load_book_from_file_with_sheet_index` does.
ZX_API std::shared_ptr<IBook>
load_book_from_file_with_range(const std::u16string& path, book::format format,
                               book::interactive mode, std::size_t sheet_index,
                               std::size_t first_row, std::size_t last_row);

/// As above, with the format from the path's extension.
ZX_API std::shared_ptr<IBook> load_book_from_file_with_range(const std::u16string& path,
                                                             book::interactive mode,
                                                             std::size_t sheet_index,
                                                             std::size_t first_row,
                                                             std::size_t last_row);

/// Loads the list of sheet names: a Google spreadsheet for GSHEET, a workbook file for any other
/// format.
ZX_API std::shared_ptr<IBook> load_book_from_file_with_sheetNames(const std::u16string& path,
                                                                  book::format format);

/// Loads the sheet at `sheet_index` (zero-based; the only sheet of a workbook whatever the index).
/// The book then hands out that sheet alone, at index 0. A workbook file whose sheet cannot be
/// loaded alone, or that has no such index, is loaded as a whole: `is_sheet_loaded` is false and
/// sheets have their own indices.
ZX_API std::shared_ptr<IBook> load_book_from_file_with_sheet_index(const std::u16string& path,
                                                                   book::format format,
                                                                   book::interactive mode,
                                                                   std::size_t sheet_index);

/// Loads the sheet of that name, compared without regard to case; `Exception` 3 when there is none.
ZX_API std::shared_ptr<IBook> load_book_from_file_with_sheet_name(const std::u16string& path,
                                                                  book::format format,
                                                                  book::interactive mode,
                                                                  const std::u16string& name);

/// As above, with the format from the path's extension.
ZX_API std::shared_ptr<IBook> load_book_from_file_with_sheet_name(const std::u16string& path,
                                                                  book::interactive mode,
                                                                  const std::u16string& name);

/// Makes a new workbook of `sheet_count` sheets. Throws `Exception` 0 when it cannot be made. A
/// Google spreadsheet gets `name` as its title and one sheet.
ZX_API std::shared_ptr<IBook> create_new_book(std::size_t sheet_count, book::format format,
                                              book::interactive mode, const std::u16string& name);

/// Inserts a sheet at `index`, a copy of the sheet `second_name` unless that is empty. Throws
/// `Exception` 26 (41 for GSHEET) for a name against the format's rules; lengths count UTF-16
/// units.
ZX_API std::shared_ptr<ISheet> add_sheet(const std::shared_ptr<IBook>& book, std::size_t index,
                                         const std::u16string& name,
                                         const std::u16string& second_name);

/// Moves the sheet at `from` to `to`; both zero-based.
/// References to the sheet follow, and all sheet objects stay valid. Throws `Exception` 6 for an
/// index out of range, 7 when the sheet cannot be moved or the back-end moves none.
ZX_API void reorder_sheet(const std::shared_ptr<IBook>& book, std::size_t from, std::size_t to);

/// What saving a workbook file did to its parts.
struct SaveSummary {
    std::size_t parts_kept = 0;    ///< taken over from the loaded file byte for byte
    std::size_t parts_written = 0; ///< new or changed
    std::size_t parts_dropped = 0; ///< of the loaded file, no longer there
};

/// What the book's last save did; all 0 before the first and for a book that is not a workbook
/// file.
ZX_API SaveSummary last_save(const std::shared_ptr<IBook>& book);

/// The first failure since the last call among the operations that report none: a cell that a write
/// could not store, a sheet's name, protection or column widths that stay as they were. nullopt
/// when all of them succeeded.
ZX_API std::optional<Failure> take_unreported_failure(const std::shared_ptr<IBook>& book);

/// Saves the book. Throws `Exception` 20 when the path does not end with the extension of the
/// book's format or has no name before it, 4 when the book cannot be saved.
ZX_API void save_book(const std::shared_ptr<IBook>& book, const std::u16string& path);

/// Starts the library; calls are counted and thread-safe. Google Sheets can be reached from the
/// first call on, which also initialises automation for its thread (a single-threaded apartment).
ZX_API void initialize();

/// Undoes one `initialize`; the last one closes the connections to Google Sheets and ends the
/// spreadsheet applications that no book uses and no user sees.
ZX_API void release();

/// The library's diagnostic logger, channel "zentra::io::spreadsheet".
ZX_API foundation::log::basic_diagnostic_logger<char>& getLogger();

} // namespace spreadsheet
