// SPDX-License-Identifier: Apache-2.0
//
// The cells of one sheet: 16 bytes each, row after row in chunks that never move; nothing is kept for a
// cell that does not exist. A cell is found in constant time where rows and columns have no gaps, by
// binary search of its row otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "workbook/limits.h"

namespace workbook {

enum class StoredKind : std::uint8_t {
    Number,     ///< value.number
    String,     ///< value.text: index into the book's shared strings
    OwnString,  ///< value.text: index into the sheet's own strings (inline text, formula results)
    Boolean,    ///< value.number is 0 or 1
    Blank,      ///< no value
    Error,      ///< value.text: index of its text in the sheet's own strings
    StrictDate  ///< value.number is a serial day number
};

struct StoredCell {
    union {
        double number;
        std::uint64_t text;
    } value;
    std::uint32_t column;
    std::uint32_t format : 24; ///< index into the book's cell formats
    std::uint32_t kind : 8;    ///< a StoredKind

    StoredKind stored_kind() const { return static_cast<StoredKind>(kind); }
};
static_assert(sizeof(StoredCell) == 16);

/// First and one-past-last indices; all zero when there is no cell.
struct CellBounds {
    int first_row = 0, end_row = 0, first_column = 0, end_column = 0;
};

class CellStore {
  public:
    /// Room for one row of cells in writing. `begin_row`, then `push` in any column order, then
    /// `end_row`. Rows may come in any order and more than once; the last cell written at a place wins.
    void begin_row(int row);
    /// The place of the next cell of the open row; written by the caller. Null when the row already has
    /// as many cells as a sheet has columns.
    StoredCell* next_cell() { return open_end_ < open_limit_ ? open_end_ : nullptr; }
    void keep_cell() { ++open_end_; }
    void end_row();
    /// Call once after the last row: puts rows in order and computes the bounds.
    void finish();

    /// The cell at a place, null when it does not exist.
    const StoredCell* find(int row, int column) const;

    std::size_t size() const { return size_; }
    const CellBounds& bounds() const { return bounds_; }
    const CellBounds& filled_bounds() const { return filled_bounds_; }

    /// Calls `visit(row, cell)` for every cell, row after row.
    template <class Visit>
    void for_each(Visit visit) const {
        for (const Row& row : rows_)
            for (std::uint32_t i = 0; i < row.count; ++i) visit(static_cast<int>(row.index), row.cells[i]);
    }

  private:
    struct Row {
        std::uint32_t index;
        std::uint32_t count;
        StoredCell* cells;
    };

    void merge_equal_rows();

    std::vector<std::unique_ptr<StoredCell[]>> chunks_;
    std::vector<Row> rows_; ///< ascending by index once finished
    StoredCell* open_begin_ = nullptr;
    StoredCell* open_end_ = nullptr;
    StoredCell* open_limit_ = nullptr;
    std::uint32_t open_row_ = 0;
    StoredCell* chunk_end_ = nullptr;
    std::size_t size_ = 0;
    CellBounds bounds_;
    CellBounds filled_bounds_;
};

} // namespace workbook
