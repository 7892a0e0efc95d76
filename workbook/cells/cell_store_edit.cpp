// SPDX-License-Identifier: Apache-2.0
//
// Changing half of CellStore. Rows that lose all their cells stay as empty rows, and rows that come
// in between others bring empty neighbours along, so that no order of writing is slow.
#include <algorithm>
#include <cstring>

#include "workbook/cells/cell_store.h"

namespace workbook {

namespace {

constexpr std::size_t kChunkCells = 128u << 10; // 2 MiB
constexpr std::size_t kFirstChunkCells = 4u << 10;
constexpr std::uint32_t kFirstCapacity = 4;
constexpr std::uint32_t kGrowth = 8; ///< at a chunk's end, where growing copies nothing

// Room for at most so many cells is taken before they are written.
constexpr std::int64_t kMaxExpectedCells = 64 << 20;

constexpr std::uint32_t kBeyondColumns = 0xFFFFFFFF;

// What rows without room for a cell point to. Never written.
StoredCell* no_cells() {
    static constinit StoredCell beyond = {{0.0}, kBeyondColumns, 0, 0};
    return &beyond;
}

void widen(CellBounds& bounds, int row, int column) {
    if (bounds.end_row == 0) {
        bounds = {row, row + 1, column, column + 1};
        return;
    }
    bounds.first_row = std::min(bounds.first_row, row);
    bounds.end_row = std::max(bounds.end_row, row + 1);
    bounds.first_column = std::min(bounds.first_column, column);
    bounds.end_column = std::max(bounds.end_column, column + 1);
}

bool before_column(const StoredCell& cell, std::uint32_t column) {
    return cell.column < column;
}

} // namespace

CellStore::CellStore(const CellStore& other)
    : max_columns_(other.max_columns_),
      size_(other.size_),
      bounds_outdated_(other.bounds_outdated_),
      bounds_(other.bounds_),
      filled_bounds_(other.filled_bounds_) {
    rows_.reserve(other.rows_.size());
    StoredCell* cells = size_ > 0 ? take_cells(size_) : nullptr;
    for (const Row& row : other.rows_) {
        if (row.count == 0) continue;
        std::memcpy(cells, row.cells, row.count * sizeof(StoredCell));
        rows_.push_back({row.index, row.count, cells});
        const auto i = static_cast<std::size_t>(&row - other.rows_.data());
        edits_.push_back({row.count, other.row_at(i).has_changes});
        cells += row.count;
    }
}

std::size_t CellStore::row_from(int row) const {
    const auto found =
        std::lower_bound(rows_.begin(), rows_.end(), row, [](const Row& a, int wanted) {
            return static_cast<int>(a.index) < wanted;
        });
    return static_cast<std::size_t>(found - rows_.begin());
}

void CellStore::put(int row, StoredCell cell) {
    cell.kind |= kChangedMark;
    if (edits_.size() != rows_.size()) begin_edits();
    const std::size_t i = row_for_writing(static_cast<std::uint32_t>(row));
    Row& place = rows_[i];
    if (place.count == 0 || place.cells[place.count - 1].column < cell.column) {
        if (place.count == edits_[i].capacity) make_room(i);
        place.cells[place.count++] = cell;
        ++size_;
    } else {
        put_within(i, cell);
    }
    edits_[i].has_changes = true;
    widen_bounds(row, cell);
}

void CellStore::begin_edits() {
    edits_.reserve(rows_.size());
    while (edits_.size() < rows_.size())
        edits_.push_back({rows_[edits_.size()].count, false});
}

// At or before the row's last cell.
void CellStore::put_within(std::size_t i, const StoredCell& cell) {
    Row& row = rows_[i];
    StoredCell* at = std::lower_bound(row.cells, row.cells + row.count, cell.column, before_column);
    if (at->column == cell.column) {
        const bool was_filled = at->stored_kind() != StoredKind::Blank;
        if (was_filled && cell.stored_kind() == StoredKind::Blank) bounds_outdated_ = true;
        *at = cell;
        return;
    }
    const auto before = at - row.cells;
    if (row.count == edits_[i].capacity) make_room(i);
    at = row.cells + before;
    std::memmove(at + 1, at, (row.count - static_cast<std::size_t>(before)) * sizeof *at);
    *at = cell;
    ++row.count;
    ++size_;
}

void CellStore::widen_bounds(int row, const StoredCell& cell) {
    if (bounds_outdated_) return;
    const auto column = static_cast<int>(cell.column);
    widen(bounds_, row, column);
    if (cell.stored_kind() != StoredKind::Blank) widen(filled_bounds_, row, column);
}

std::size_t CellStore::row_for_writing(std::uint32_t row) {
    if (rows_.empty() || row > rows_.back().index) {
        rows_.push_back({row, 0, no_cells()});
        edits_.emplace_back();
        return rows_.size() - 1;
    }
    const Row* found = find_row(row);
    return found != nullptr ? static_cast<std::size_t>(found - rows_.data()) : insert_row(row);
}

// Every insertion moves the rows after it. An eighth of the number of rows comes along, on either
// side, where rows are missing: then whoever writes rows in any order inserts few times.
std::size_t CellStore::insert_row(std::uint32_t row) {
    const std::size_t at = row_from(static_cast<int>(row));
    std::vector<std::uint32_t> missing = {row};
    std::size_t left = rows_.size() / 16;
    std::uint32_t index = row;
    std::size_t next = at;
    while (left > 0 && next < rows_.size()) {
        if (++index == rows_[next].index) {
            ++next;
        } else {
            missing.push_back(index);
            --left;
        }
    }
    left = rows_.size() / 16;
    index = row;
    std::size_t previous = at;
    while (left > 0 && index > 0) {
        --index;
        if (previous > 0 && index == rows_[previous - 1].index) {
            --previous;
        } else {
            missing.push_back(index);
            --left;
        }
    }
    std::sort(missing.begin(), missing.end());
    merge_empty_rows(missing);
    return row_from(static_cast<int>(row));
}

// `added` are ascending and none of them is there.
void CellStore::merge_empty_rows(const std::vector<std::uint32_t>& added) {
    std::size_t from = rows_.size(), left = added.size(), to = from + left;
    edits_.reserve(to);
    rows_.reserve(to);
    edits_.resize(to);
    rows_.resize(to);
    while (left > 0) {
        --to;
        if (from > 0 && rows_[from - 1].index > added[left - 1]) {
            --from;
            rows_[to] = rows_[from];
            edits_[to] = edits_[from];
        } else {
            rows_[to] = {added[--left], 0, no_cells()};
            edits_[to] = {};
        }
    }
}

void CellStore::make_room(std::size_t i) {
    Row& row = rows_[i];
    std::uint32_t& capacity = edits_[i].capacity;
    const std::uint32_t wanted = wanted_capacity(row);
    if (capacity > 0 && row.cells + capacity == open_end_) {
        const auto free = static_cast<std::size_t>(chunk_end_ - open_end_);
        const std::uint32_t more = std::min(wanted - capacity, kGrowth);
        if (free >= more) {
            capacity += more;
            open_end_ += more;
            return;
        }
    }
    StoredCell* const cells = take_cells(wanted);
    std::memcpy(cells, row.cells, row.count * sizeof(StoredCell));
    row.cells = cells;
    capacity = wanted;
}

// For a row that is full.
std::uint32_t CellStore::wanted_capacity(const Row& row) const {
    const std::uint32_t doubled = std::min(std::max(2 * row.count, kFirstCapacity), max_columns_);
    const auto index = static_cast<int>(row.index);
    if (index < expected_.first_row || index > expected_.last_row) return doubled;
    const auto first = static_cast<std::uint32_t>(expected_.first_column);
    const auto last = static_cast<std::uint32_t>(expected_.last_column);
    const StoredCell* const end = row.cells + row.count;
    const StoredCell* const from =
        std::lower_bound(row.cells, row.cells + row.count, first, before_column);
    const StoredCell* const to = std::lower_bound(from, end, last + 1, before_column);
    const auto there = static_cast<std::uint32_t>(to - from);
    return std::max(row.count - there + (last - first + 1), row.count + 1);
}

StoredCell* CellStore::take_cells(std::size_t count) {
    if (static_cast<std::size_t>(chunk_end_ - open_end_) < count) {
        const std::size_t cells = std::max(count, chunks_.empty() ? kFirstChunkCells : kChunkCells);
        chunks_.emplace_back(new StoredCell[cells]);
        open_end_ = chunks_.back().get();
        chunk_end_ = open_end_ + cells;
    }
    StoredCell* const taken = open_end_;
    open_end_ += count;
    return taken;
}

void CellStore::expect(const Rectangle& area) {
    const std::int64_t rows = std::int64_t{area.last_row} - area.first_row + 1;
    const std::int64_t columns = std::int64_t{area.last_column} - area.first_column + 1;
    expected_ = {};
    if (rows <= 0 || columns <= 0 || rows * columns > kMaxExpectedCells) return;
    expected_ = area;
}

void CellStore::remove(const Rectangle& area) {
    for (std::size_t i = row_from(area.first_row); i < rows_.size(); ++i) {
        Row& row = rows_[i];
        if (static_cast<int>(row.index) > area.last_row) break;
        const std::uint32_t before = row.count;
        remove_from(row, static_cast<std::uint32_t>(area.first_column),
                    static_cast<std::uint32_t>(area.last_column));
        size_ -= before - row.count;
        bounds_outdated_ |= before != row.count;
    }
}

void CellStore::remove_from(Row& row, std::uint32_t first_column, std::uint32_t last_column) {
    StoredCell* const end = row.cells + row.count;
    StoredCell* const from = std::lower_bound(row.cells, end, first_column, before_column);
    StoredCell* const to = std::lower_bound(from, end, last_column + 1, before_column);
    if (from == to) return;
    std::memmove(from, to, static_cast<std::size_t>(end - to) * sizeof *to);
    row.count -= static_cast<std::uint32_t>(to - from);
    if (row.count == 0) row.cells[0].column = kBeyondColumns;
}

} // namespace workbook
