// SPDX-License-Identifier: Apache-2.0
//
// Rectangles of cells that were cleared, in whatever number and order: callers may clear a column
// cell by cell.
#pragma once

#include <cstddef>
#include <vector>

namespace workbook {

class ClearedCells {
  public:
    /// Zero-based, corners inclusive.
    void add(int first_row, int last_row, int first_column, int last_column);
    bool empty() const { return rectangles_.empty(); }

    /// Answers for rows in ascending order, as a part is written.
    class Walk {
      public:
        explicit Walk(const ClearedCells& cells);
        /// Moves to `row`, which must not be before the last one; false when it has no cleared
        /// cell.
        bool move_to(int row);
        /// Whether the cell of the current row is cleared.
        bool holds(int column) const;

      private:
        struct Span {
            int first_column, last_column, last_row;
        };
        const ClearedCells& cells_;
        std::vector<std::size_t> order_; ///< rectangles by first row
        std::size_t next_ = 0;
        std::vector<Span> active_;
    };

  private:
    struct Rectangle {
        int first_row, last_row, first_column, last_column;
    };
    std::vector<Rectangle> rectangles_;
};

} // namespace workbook
