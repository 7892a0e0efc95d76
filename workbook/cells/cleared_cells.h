// SPDX-License-Identifier: Apache-2.0
//
// Rectangles of cells that were cleared, in whatever number and order: callers may clear a column
// cell by cell.
#pragma once

#include <cstddef>
#include <vector>

#include <climits>

#include "workbook/cells/rectangle.h"

namespace workbook {

class ClearedCells {
  public:
    void add(const Rectangle& area);
    bool empty() const { return rectangles_.empty(); }
    /// Whether a cell of this rectangle is among them.
    bool intersects(const Rectangle& area) const;
    /// In no order; they may overlap.
    const std::vector<Rectangle>& rectangles() const { return rectangles_; }

    /// No row, after every row.
    static constexpr int kNoRow = INT_MAX;

    /// Says row by row which cells are cleared; quick for rows in ascending order, as a part is
    /// written.
    class Walk {
      public:
        explicit Walk(const ClearedCells& cells);
        /// Makes `row` the current row; false when it has no cleared cell.
        bool move_to(int row);
        /// Whether the cell of the current row is cleared.
        bool holds(int column) const;
        /// The first row from the current one on that has a cleared cell; `kNoRow` for none.
        int next_row() const;

      private:
        struct Span {
            int first_column, last_column, last_row;
        };
        const ClearedCells& cells_;
        std::vector<std::size_t> order_; ///< rectangles by first row
        std::size_t next_ = 0;
        std::vector<Span> active_;
        int row_ = -1;
    };

  private:
    std::vector<Rectangle> rectangles_;
};

} // namespace workbook
