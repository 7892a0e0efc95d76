// SPDX-License-Identifier: Apache-2.0
//
// Workbook files drawn as text, one string for a row, and opened with the real engine: what the
// back-end for files makes of a sheet is tested on these.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/libxl/libxl_book.h"
#include "spreadsheet/libxl/libxl_sheet.h"
#include "tests/workbook/scratch_folder.h"

namespace spreadsheet::test {

/// A file of one worksheet, "Data". Each row is a string of cells with a blank between them:
///
///     .       no cell           'abc    a text           #N/A           an error
///     1.5     a number          TRUE    a boolean        2024-03-01     an ISO date
///     d44000  a number with a date format                b              a blank cell
///
/// "~u", "~d" and "~p" after a cell give it a format that is unlocked, a date or a percentage.
struct Drawing {
    std::vector<std::string> rows{};
    std::vector<std::string> merges{}; ///< such as "A1:B2"
    std::string defined_names{};       ///< elements
    bool dates_1904 = false;
    bool is_protected = false;
    bool is_default_unlocked = false;    ///< the format of cells that have no other
    bool is_damaged_after_cells = false; ///< the sheet's XML ends there
};

/// A drawing as a file, and a book that has loaded it.
class DrawnBook {
  public:
    explicit DrawnBook(const Drawing& drawing);
    /// Loads rows `first_row` to `last_row` only.
    DrawnBook(const Drawing& drawing, std::size_t first_row, std::size_t last_row);

    LibXLBook& book() { return book_; }
    LibXLSheet& sheet() { return static_cast<LibXLSheet&>(*book_.sheet(std::size_t{0})); }
    LibXLSheet* operator->() { return &sheet(); }
    /// The sheet as a save and another load give it back.
    std::shared_ptr<ISheet> saved();

  private:
    workbook::test::ScratchFolder folder_;
    LibXLBook book_;
    LibXLBook again_;
};

} // namespace spreadsheet::test
