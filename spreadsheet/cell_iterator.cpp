// SPDX-License-Identifier: Apache-2.0
//
// The walk over irregular selections of cells.
#include "spreadsheet/cell_iterator.h"

#include <cassert>
#include <utility>

#include "spreadsheet/row_blocks.h"

namespace spreadsheet {
namespace {

int first_row_of(const std::vector<int>& row_blocks) {
    return row_blocks.empty() ? 0 : row_blocks.front();
}

/// Moves one cell on: the block's next row, the next block, the next column.
void advance(const std::vector<int>& row_blocks, const std::vector<int>& columns,
             std::size_t& block, std::size_t& column, int& row) {
    if (row < row_blocks[block + 1]) {
        ++row;
        return;
    }
    block += 2;
    if (block < row_blocks.size()) {
        row = row_blocks[block];
        return;
    }
    block = 0;
    ++column;
    row = column < columns.size() ? row_blocks.front() : 0;
}

} // namespace

CellIterator::Iterator::Iterator(const std::vector<int>& row_blocks,
                                 const std::vector<int>& columns, std::size_t block,
                                 std::size_t column, int row)
    : row_blocks_(row_blocks), columns_(columns), block_(block), column_(column), row_(row) {}

const CellIterator::Indices CellIterator::Iterator::operator*() const {
    return {row_, columns_[column_]};
}

CellIterator::Iterator CellIterator::Iterator::operator++() {
    if (column_ < columns_.size()) advance(row_blocks_, columns_, block_, column_, row_);
    return *this;
}

bool CellIterator::Iterator::operator==(const Iterator& other) const {
    return row_ == other.row_ && column_ == other.column_ && block_ == other.block_ &&
           &row_blocks_ == &other.row_blocks_ && &columns_ == &other.columns_;
}

bool CellIterator::Iterator::operator!=(const Iterator& other) const {
    return !(*this == other);
}

CellIterator::CellIterator(const std::vector<int>& row_blocks, const std::vector<int>& columns)
    : row_blocks_(row_blocks), columns_(columns), size_(count_rows(row_blocks) * columns.size()) {}

CellIterator::CellIterator(const CellIterator&) = default;
CellIterator& CellIterator::operator=(const CellIterator&) = default;

CellIterator::CellIterator(CellIterator&& other) noexcept
    : row_blocks_(std::move(other.row_blocks_)),
      columns_(std::move(other.columns_)),
      size_(std::exchange(other.size_, 0)) {}

CellIterator& CellIterator::operator=(CellIterator&& other) noexcept {
    row_blocks_ = std::move(other.row_blocks_);
    columns_ = std::move(other.columns_);
    size_ = std::exchange(other.size_, 0);
    return *this;
}

CellIterator::~CellIterator() = default;

CellIterator::Iterator CellIterator::begin() const {
    if (row_blocks_.empty() || columns_.empty()) return end();
    return {row_blocks_, columns_, 0, 0, row_blocks_.front()};
}

CellIterator::Iterator CellIterator::end() const {
    return {row_blocks_, columns_, 0, columns_.size(), 0};
}

std::size_t CellIterator::size() const {
    return size_;
}

CellTypeIterator::CellTypeIterator(std::vector<int> row_blocks, std::vector<int> columns,
                                   const cell_type* types, std::size_t count)
    : row_blocks_(std::move(row_blocks)),
      columns_(std::move(columns)),
      types_(types),
      count_(count),
      rows_(count_rows(row_blocks_)),
      row_(first_row_of(row_blocks_)) {
    assert(count_ == rows_ * columns_.size());
}

CellIterator::Indices CellTypeIterator::operator*() const {
    return {row_, columns_[column_]};
}

void CellTypeIterator::operator++() {
    if (at_end()) return;
    ++position_;
    advance(row_blocks_, columns_, block_, column_, row_);
}

void CellTypeIterator::rewind() {
    position_ = 0;
    block_ = 0;
    column_ = 0;
    row_ = first_row_of(row_blocks_);
}

} // namespace spreadsheet
