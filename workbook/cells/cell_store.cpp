// SPDX-License-Identifier: Apache-2.0
//
// Filling the store and its bounds; changes are in cell_store_edit.cpp.
#include "workbook/cells/cell_store.h"

#include <algorithm>
#include <cstring>

#include "foundation/large_block.h"

namespace workbook {

namespace {

// 512 KiB, doubled up to 8 MiB.
std::size_t chunk_cells(std::size_t chunks_before) {
    return std::size_t{32 << 10} << std::min<std::size_t>(chunks_before, 4);
}

bool by_column(const StoredCell& a, const StoredCell& b) {
    return a.column < b.column;
}

// Bounds over rows that have cells in order.
class BoundsCollector {
  public:
    explicit BoundsCollector(const CellBounds& bounds = {}) : bounds_(bounds) {}

    void add(int row, int first_column, int last_column) {
        if (bounds_.end_row == 0) {
            bounds_ = {row, row + 1, first_column, last_column + 1};
            return;
        }
        bounds_.first_row = std::min(bounds_.first_row, row);
        bounds_.end_row = std::max(bounds_.end_row, row + 1);
        bounds_.first_column = std::min(bounds_.first_column, first_column);
        bounds_.end_column = std::max(bounds_.end_column, last_column + 1);
    }
    const CellBounds& bounds() const { return bounds_; }

    void add(int row, const StoredCell* begin, const StoredCell* end) {
        add(row, static_cast<int>(begin->column), static_cast<int>(end[-1].column));
    }
    void add_filled(int row, const StoredCell* begin, const StoredCell* end) {
        const StoredCell* const first = std::find_if(begin, end, is_filled);
        if (first == end) return;
        while (!is_filled(end[-1]))
            --end;
        add(row, first, end);
    }

  private:
    static bool is_filled(const StoredCell& cell) {
        return cell.stored_kind() != StoredKind::Blank;
    }

    CellBounds bounds_;
};

} // namespace

// A row must fit into one chunk, so that its cells are side by side. Memory that no cell is written
// to is never touched.
void CellStore::begin_row(int row) {
    if (static_cast<std::size_t>(chunk_end_ - open_end_) < max_columns_) {
        const std::size_t cells = std::max<std::size_t>(chunk_cells(chunks_.size()), max_columns_);
        chunks_.emplace_back(new StoredCell[cells]);
        open_end_ = chunks_.back().get();
        foundation::expect_to_fill(open_end_, cells * sizeof(StoredCell));
        chunk_end_ = open_end_ + cells;
    }
    open_begin_ = open_end_;
    open_limit_ = open_begin_ + max_columns_;
    open_row_ = static_cast<std::uint32_t>(row);
    in_order_ = true;
}

void CellStore::end_row() {
    if (!in_order_) open_end_ = open_begin_ + keep_last_of_equals(open_begin_, open_end_);
    if (!keeps_rows_) {
        if (open_end_ != open_begin_) count_open_row();
        open_end_ = open_begin_;
    } else if (open_end_ != open_begin_) {
        const auto count = static_cast<std::uint32_t>(open_end_ - open_begin_);
        rows_.push_back({open_row_, count, open_begin_});
    }
    open_limit_ = open_end_;
}

// Sorts by column, keeps the last of cells at the same column and returns how many are left.
std::uint32_t CellStore::keep_last_of_equals(StoredCell* begin, StoredCell* end) {
    std::stable_sort(begin, end, by_column);
    StoredCell* kept = begin;
    for (StoredCell* cell = begin; cell != end; ++cell) {
        if (cell + 1 != end && cell[1].column == cell->column) continue;
        *kept++ = *cell;
    }
    return static_cast<std::uint32_t>(kept - begin);
}

void CellStore::finish() {
    if (!keeps_rows_) return;
    const auto not_ascending = [](const Row& a, const Row& b) { return a.index >= b.index; };
    if (std::adjacent_find(rows_.begin(), rows_.end(), not_ascending) != rows_.end())
        merge_equal_rows();
    size_ = 0;
    for (const Row& row : rows_)
        size_ += row.count;
    compute_bounds();
}

void CellStore::merge_equal_rows() {
    std::stable_sort(rows_.begin(), rows_.end(),
                     [](const Row& a, const Row& b) { return a.index < b.index; });
    std::vector<Row> merged;
    std::vector<StoredCell> cells;
    for (std::size_t i = 0; i < rows_.size();) {
        std::size_t next = i + 1;
        while (next < rows_.size() && rows_[next].index == rows_[i].index)
            ++next;
        if (next == i + 1) {
            merged.push_back(rows_[i++]);
            continue;
        }
        cells.clear();
        for (; i < next; ++i)
            cells.insert(cells.end(), rows_[i].cells, rows_[i].cells + rows_[i].count);
        const std::uint32_t count = keep_last_of_equals(cells.data(), cells.data() + cells.size());
        chunks_.emplace_back(new StoredCell[count]);
        std::memcpy(chunks_.back().get(), cells.data(), count * sizeof(StoredCell));
        merged.push_back({rows_[next - 1].index, count, chunks_.back().get()});
    }
    rows_ = std::move(merged);
}

void CellStore::compute_bounds() const {
    BoundsCollector all, filled;
    for (const Row& row : rows_) {
        if (row.count == 0) continue;
        all.add(static_cast<int>(row.index), row.cells, row.cells + row.count);
        filled.add_filled(static_cast<int>(row.index), row.cells, row.cells + row.count);
    }
    bounds_ = all.bounds();
    filled_bounds_ = filled.bounds();
    bounds_outdated_ = false;
}

void CellStore::count_open_row() {
    BoundsCollector all(bounds_), filled(filled_bounds_);
    all.add(static_cast<int>(open_row_), open_begin_, open_end_);
    filled.add_filled(static_cast<int>(open_row_), open_begin_, open_end_);
    bounds_ = all.bounds();
    filled_bounds_ = filled.bounds();
    size_ += static_cast<std::size_t>(open_end_ - open_begin_);
}

} // namespace workbook
