// SPDX-License-Identifier: Apache-2.0
//
// From BOOK, SHEET and RANGE of the command line to the library's objects, loading no more than is
// needed.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/book_location.h"

namespace zxsheet {

/// Loads the whole book.
std::shared_ptr<spreadsheet::IBook> open_book(const BookLocation& location);

/// Loads the names (and kinds) of the sheets.
std::shared_ptr<spreadsheet::IBook> open_sheet_list(const BookLocation& location);

/// The name of the sheet at an index.
std::u16string sheet_name(const spreadsheet::IBook& book, std::size_t index);

/// The index of the sheet of that name, ignoring case.
std::optional<std::size_t> find_sheet_name(const spreadsheet::IBook& book,
                                           const std::u16string& name);

/// The number from 1 that `text` is.
std::optional<std::size_t> sheet_number(const std::string& text);

/// The index of the wanted sheet of the book at `location`: of that name, else of that number; the
/// first worksheet for an empty `wanted`. Throws `CommandError` when there is none.
std::size_t find_sheet(const spreadsheet::IBook& book, const BookLocation& location,
                       const std::string& wanted);

/// Cells of a book as the command line names them.
struct CellSelector {
    BookLocation book;
    std::string sheet{}; ///< name or number; empty for the first worksheet
    std::string range{}; ///< empty for the used range
};

/// A sheet and the cells of it that are wanted.
struct Selection {
    std::shared_ptr<spreadsheet::IBook> book;
    std::shared_ptr<spreadsheet::ISheet> sheet;
    std::u16string sheet_name;
    spreadsheet::Range range; ///< of no cells when the sheet is empty
};

/// The range that `text` names on the sheet, A1 or a defined name. Throws `CommandError` that names
/// the sheet for text that names none; other failures pass unchanged.
spreadsheet::Range range_on_sheet(const std::string& text, const Selection& selection,
                                  const BookLocation& location);

/// How much of the wanted sheet to load; a save keeps what is not loaded.
enum class Extent { WantedRows, WholeSheet, NoCells };

/// Loads the wanted sheet and finds the range, except with `NoCells`. Throws `CommandError` for a
/// sheet or range that does not exist and for a chart sheet.
Selection open_selection(const CellSelector& wanted, Extent extent = Extent::WantedRows);

} // namespace zxsheet
