// SPDX-License-Identifier: Apache-2.0
//
// Cells of spreadsheets online with few requests: ranges by the grid, and rows in parts that one
// reply may have.
#pragma once

#include <string>
#include <vector>

#include "zxsheet/cell_grid.h"

namespace zxsheet {

/// The part of a range that the grid of the selection's sheet has; the range itself where the
/// service does not say how large the grid is, and for books that are not online.
spreadsheet::Range range_in_grid(const Selection& selection, const spreadsheet::Range& range);

/// What `text` means, A1 or a defined name; a name on another sheet selects that sheet. Asks for no
/// more than is needed: corners need no request, anything else one. Throws `CommandError` when the
/// spreadsheet has neither.
spreadsheet::Range find_online_range(const std::string& text, Selection& selection,
                                     const BookLocation& location);

/// The used range of the selection's sheet, by one request.
spreadsheet::Range used_online_range(const Selection& selection);

/// Asks for the used ranges of all sheets of a spreadsheet online by one request; the sheets then
/// have them. Does nothing for other books.
void learn_used_ranges(const std::shared_ptr<spreadsheet::IBook>& book);

/// Throws `CommandError` that says how large the grid is when the selection's range begins outside.
void check_in_grid(const Selection& selection, const BookLocation& location);

/// Cells that were fetched, and their types column after column.
struct FetchedCells {
    spreadsheet::Range range{0, 0, -1, -1};
    std::vector<spreadsheet::cell_type> types;
};

/// Rows of the selection's range, zero-based and inclusive.
struct RowBlock {
    int first_row;
    int last_row;
};

/// The blocks of rows that are fetched by one request each.
std::vector<RowBlock> online_row_blocks(const Selection& selection);

/// Fetches the used cells from a row on, as many rows as one request may have, so that reads of
/// some of them need none. Does nothing for a row that was fetched, and for books that are not
/// online.
void fetch_ahead(const Selection& selection, int row);

/// The cells of a block as far as they are in the grid. They are kept with the selection, and by
/// its sheet for reads, until another block is fetched.
const FetchedCells& fetch_block(const Selection& selection, const RowBlock& block);

} // namespace zxsheet
