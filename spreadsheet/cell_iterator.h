// SPDX-License-Identifier: Apache-2.0
//
// Irregular selections of cells: blocks of rows, single columns. Walked column after column; within
// a column every row of the first block, then of the next.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "foundation/export.h"
#include "foundation/host_array.h"
#include "spreadsheet/book_format.h"
#include "spreadsheet/cell_exchange.h"

namespace spreadsheet {

/// A selection of cells and the walk over it.
///
///     CellIterator cells({0, 2, 5, 5}, {1, 0});            // rows 0 to 2 and 5 of columns 1 and 0
///     for (CellIterator::Indices at : cells) use(at.row, at.column);
class ZX_API CellIterator {
  public:
    /// A cell's place, zero-based.
    struct Indices {
        int row = 0;
        int column = 0;
    };

    /// Refers to the vectors of its `CellIterator`, which must outlive it.
    class ZX_API Iterator {
      public:
        Iterator(const std::vector<int>& row_blocks, const std::vector<int>& columns,
                 std::size_t block, std::size_t column, int row);
        const Indices operator*() const;
        /// Moves on and returns a copy of the moved iterator; does nothing at the end.
        Iterator operator++();
        bool operator==(const Iterator& other) const;
        bool operator!=(const Iterator& other) const;

      private:
        const std::vector<int>& row_blocks_;
        const std::vector<int>& columns_;
        std::size_t block_;
        std::size_t column_;
        int row_;
    };

    /// `row_blocks` holds pairs (first row, last row), inclusive, ascending and not overlapping;
    /// `columns` holds column indices in walking order, none twice. Neither is checked here.
    CellIterator(const std::vector<int>& row_blocks, const std::vector<int>& columns);
    CellIterator(const CellIterator&);
    CellIterator(CellIterator&&) noexcept;
    CellIterator& operator=(const CellIterator&);
    CellIterator& operator=(CellIterator&&) noexcept;
    ~CellIterator();

    Iterator begin() const;
    Iterator end() const;
    /// Number of cells.
    std::size_t size() const;

  private:
    std::vector<int> row_blocks_;
    std::vector<int> columns_;
    std::size_t size_;
};

/// A selection of cells with the type that each is to be read as.
class ZX_API CellTypeIterator {
  public:
    /// `types` has one element per cell in the order of the walk; it stays the caller's and must
    /// outlive the iterator.
    CellTypeIterator(std::vector<int> row_blocks, std::vector<int> columns, const cell_type* types,
                     std::size_t count);

    bool at_end() const { return position_ == count_; }
    /// The cell under the iterator; not at the end.
    CellIterator::Indices operator*() const;
    /// The type that the cell under the iterator is to be read as.
    cell_type type() const { return types_[position_]; }
    void operator++();
    /// Back to the first cell.
    void rewind();

    /// Number of cells, of rows of all blocks together, of columns.
    std::size_t size() const { return count_; }
    std::size_t rows() const { return rows_; }
    std::size_t columns() const { return columns_.size(); }

    /// Pairs (first row, last row), inclusive, ascending; columns in walking order.
    const std::vector<int>& row_blocks() const { return row_blocks_; }
    const std::vector<int>& column_indices() const { return columns_; }

  private:
    std::vector<int> row_blocks_;
    std::vector<int> columns_;
    const cell_type* types_;
    std::size_t count_;
    std::size_t rows_;
    std::size_t position_ = 0;
    std::size_t block_ = 0;
    std::size_t column_ = 0;
    int row_ = 0;
};

/// Makes an iterator from the host's one-based numbers: the first half of `rows` holds the first
/// row of each block, the second half the number of its rows; `cols` holds columns. Fractions are
/// cut off. Throws `Exception` 33 (odd `n_rows`), 35 (a block without rows), 32 (beyond the limits
/// of `fmt`), 34 (a block that does not follow the one before), 36 (a column twice).
ZX_API CellIterator create_cell_iterator(const double* rows, std::size_t n_rows, const double* cols,
                                         std::size_t n_cols, const book::format& fmt);

/// As above from double arrays, with `types` (plain unsigned 8-bit integers, one row per selected
/// row and one column per selected column) as the requested types; `types` must outlive the result.
/// Throws `Exception` 18 for arrays of another class or shape.
ZX_API std::unique_ptr<CellTypeIterator>
create_cell_type_iterator(const foundation::HostArray* rows, const foundation::HostArray* cols,
                          const foundation::HostArray* types, const book::format& fmt);

} // namespace spreadsheet
