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

/// The index of the wanted sheet of the book at `location`: of that name, else of that number; for
/// an empty `wanted` the sheet that a browser's address names, else the first worksheet. Throws
/// `CommandError` when there is none.
std::size_t find_sheet(const std::shared_ptr<spreadsheet::IBook>& book,
                       const BookLocation& location, const std::string& wanted);

/// Where a selection ends that does not say so: at the last cell that has a value, or at the last
/// one that is there, formatted blanks included.
enum class Bounds { Filled, Used };

/// Cells of a book as the command line names them.
struct CellSelector {
    BookLocation book;
    std::string sheet{}; ///< name or number; empty for the first worksheet
    std::string range{}; ///< A1 notation, with a sheet or not, or a name; empty for all cells
    Bounds bounds = Bounds::Used;
};

struct FetchedCells;
class FormulaTexts;

/// A sheet and the cells of it that are wanted.
struct Selection {
    std::shared_ptr<spreadsheet::IBook> book;
    std::shared_ptr<spreadsheet::ISheet> sheet;
    std::u16string sheet_name;
    spreadsheet::Range range;                       ///< of no cells when the sheet is empty
    std::shared_ptr<const FormulaTexts> formulas{}; ///< that are wanted in place of values
    std::size_t sheet_index = 0;                    ///< in the workbook
    /// Cells of a sheet online that were fetched last; a second pass needs no request.
    mutable std::shared_ptr<FetchedCells> fetched{};
};

/// A sheet of a book that is loaded, with no range.
Selection select_sheet(const std::shared_ptr<spreadsheet::IBook>& book, std::size_t index);

/// The range that `text` names on the sheet, A1 or a defined name. A name of a spreadsheet online
/// selects the sheet that it is on. Throws `CommandError` that names the sheet for text that names
/// none; other failures pass unchanged.
spreadsheet::Range range_on_sheet(const std::string& text, Selection& selection,
                                  const BookLocation& location);

/// How much of the wanted sheet to load; a save keeps what is not loaded.
enum class Extent { WantedRows, WholeSheet, NoCells };

/// Loads the wanted sheet and finds the range, except with `NoCells`. Throws `CommandError` for a
/// sheet or range that does not exist and for a chart sheet.
Selection open_selection(const CellSelector& wanted, Extent extent = Extent::WantedRows);
/// The same for a book that `open_sheet_list` has opened; only a file is opened once more, when
/// `list`, if nobody else has it, is closed.
Selection open_selection(std::shared_ptr<spreadsheet::IBook> list, const CellSelector& wanted,
                         Extent extent);

} // namespace zxsheet
