// SPDX-License-Identifier: Apache-2.0
//
// The rectangles that cover an irregular selection of cells without gaps, so that each is read as
// one block.
#pragma once

#include <cstddef>
#include <vector>

#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/range.h"

namespace spreadsheet {

/// Every block of rows with every run of adjacent columns.
class SelectedBlocks {
  public:
    /// Where a cell is: the rectangle, and its place there, column after column.
    struct Place {
        std::size_t block;
        std::size_t cell;
    };

    explicit SelectedBlocks(const CellIterator& cells);
    /// Pairs (first row, last row), ascending; columns in any order.
    SelectedBlocks(std::vector<int> row_blocks, std::vector<int> columns);

    const std::vector<Range>& ranges() const { return ranges_; }
    /// The cell must be one of the selection.
    Place find(int row, int column) const;

  private:
    void make_ranges(std::vector<int> columns);

    std::vector<int> row_blocks_;
    std::vector<int> column_runs_; ///< pairs (first column, last column), ascending
    std::vector<Range> ranges_;    ///< the runs of the first row block first
};

} // namespace spreadsheet
