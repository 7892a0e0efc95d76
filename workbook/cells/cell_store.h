// SPDX-License-Identifier: Apache-2.0
//
// The cells of one sheet: 16 bytes each, row after row in chunks that never move; nothing is kept
// for a cell that does not exist. A cell is found in constant time where rows and columns have no
// gaps, by binary search otherwise. Filled once by a reader, changed cell by cell afterwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "workbook/cells/rectangle.h"

namespace workbook {

enum class StoredKind : std::uint8_t {
    Number,      ///< value.number
    String,      ///< value.text: index into the book's shared strings
    OwnString,   ///< value.text: index into the sheet's own strings (inline text, formula results)
    Boolean,     ///< value.number is 0 or 1
    Blank,       ///< no value
    Error,       ///< value.text: index of its text in the sheet's own strings
    StrictDate,  ///< value.number is a serial day number
    AddedString, ///< value.text: index into the strings that were added to the book
    Formula      ///< no value yet; value.text of one that was written: index into the formulas
};

/// Set in `StoredCell::kind` beside the StoredKind of a cell that was written since the load.
inline constexpr std::uint32_t kChangedMark = 0x80;

struct StoredCell {
    union {
        double number;
        std::uint64_t text;
    } value;
    std::uint32_t column;
    std::uint32_t format : 24; ///< index into the book's cell formats
    std::uint32_t kind : 8;    ///< a StoredKind and perhaps `kChangedMark`

    StoredKind stored_kind() const { return static_cast<StoredKind>(kind & (kChangedMark - 1)); }
    bool is_changed() const { return (kind & kChangedMark) != 0; }
};
static_assert(sizeof(StoredCell) == 16);

/// Largest value of `StoredCell::format`.
inline constexpr std::uint32_t kMaxStoredFormat = (1u << 24) - 1;

/// First and one-past-last indices; all zero when there is no cell.
struct CellBounds {
    int first_row = 0, end_row = 0, first_column = 0, end_column = 0;
};

class CellStore {
  public:
    /// `max_columns`: that a row can have.
    explicit CellStore(int max_columns) : max_columns_(static_cast<std::uint32_t>(max_columns)) {}
    CellStore(const CellStore& other); ///< marks included
    CellStore(CellStore&&) = default;
    CellStore& operator=(CellStore&&) = default;

    /// Before filling: rows are counted, with their bounds, and not kept.
    void keep_bounds_only() { keeps_rows_ = false; }
    bool keeps_rows() const { return keeps_rows_; }

    /// Filling: `begin_row`, then per cell write `*next_cell()` and call `keep_cell`, then
    /// `end_row`; `finish` once at the end. Rows and columns may come in any order and more than
    /// once; the last cell written at a place wins.
    void begin_row(int row);
    /// The place of the next cell of the open row, for the caller to write; null when the row
    /// already has as many cells as a sheet has columns.
    StoredCell* next_cell() const { return open_end_ < open_limit_ ? open_end_ : nullptr; }
    void keep_cell() {
        in_order_ &= open_end_ == open_begin_ || open_end_[-1].column < open_end_->column;
        ++open_end_;
    }
    void end_row();
    void finish();

    /// The cell at a place, null when it does not exist.
    const StoredCell* find(int row, int column) const;

    /// Changing, once finished. Puts a cell into `row` at `cell.column` in the place of what is
    /// there, and marks cell and row as changed.
    void put(int row, StoredCell cell);
    /// Removes the cells of a rectangle without negative indices.
    void remove(const Rectangle& area);
    /// The cells of this rectangle come next: each of its rows gets room for them at once.
    void expect(const Rectangle& area);

    /// Number of cells.
    std::size_t size() const { return size_; }
    /// All cells, and those that are not blank.
    const CellBounds& bounds() const {
        if (bounds_outdated_) compute_bounds();
        return bounds_;
    }
    const CellBounds& filled_bounds() const {
        if (bounds_outdated_) compute_bounds();
        return filled_bounds_;
    }

    /// The cells of one row in order; there may be none.
    struct RowCells {
        int row = 0;
        const StoredCell* begin = nullptr;
        const StoredCell* end = nullptr;
        bool has_changes = false; ///< of the cells that are there; removals do not count
    };
    /// Rows in ascending order by a running number.
    std::size_t row_count() const { return rows_.size(); }
    RowCells row_at(std::size_t i) const {
        const Row& row = rows_[i];
        const bool has_changes = i < edits_.size() && edits_[i].has_changes;
        return {static_cast<int>(row.index), row.cells, row.cells + row.count, has_changes};
    }
    /// Number of the first row at or after `row`.
    std::size_t row_from(int row) const;

    /// Calls `visit(row, cell)` for every cell, row after row.
    template <class Visit>
    void for_each(Visit visit) const {
        for (const Row& row : rows_)
            for (std::uint32_t i = 0; i < row.count; ++i)
                visit(static_cast<int>(row.index), row.cells[i]);
    }

  private:
    // `find` looks at the first cell even of a row without cells, which is beyond every column
    // then.
    struct Row {
        std::uint32_t index;
        std::uint32_t count;
        StoredCell* cells;
    };
    // What changes need to know of a row; apart, since reads are quicker over small rows.
    struct RowEdit {
        std::uint32_t capacity = 0;
        bool has_changes = false;
    };

    static std::uint32_t keep_last_of_equals(StoredCell* begin, StoredCell* end);
    const Row* find_row(std::uint32_t row) const;
    void prefetch_ahead(const Row* found, std::uint32_t at) const;
    void merge_equal_rows();
    void compute_bounds() const;
    void count_open_row();
    void widen_bounds(int row, const StoredCell& cell);

    void begin_edits();
    void merge_empty_rows(const std::vector<std::uint32_t>& added);
    std::size_t row_for_writing(std::uint32_t row);
    std::size_t insert_row(std::uint32_t row);
    void put_within(std::size_t i, const StoredCell& cell);
    void make_room(std::size_t i);
    std::uint32_t wanted_capacity(const Row& row) const;
    StoredCell* take_cells(std::size_t count);
    static void remove_from(Row& row, std::uint32_t first_column, std::uint32_t last_column);

    std::uint32_t max_columns_;
    std::vector<std::unique_ptr<StoredCell[]>> chunks_;
    StoredCell* chunk_end_ = nullptr;
    std::vector<Row> rows_;      ///< ascending by index once finished
    std::vector<RowEdit> edits_; ///< beside `rows_` from the first change on

    StoredCell* open_begin_ = nullptr;
    StoredCell* open_end_ = nullptr;
    StoredCell* open_limit_ = nullptr;
    std::uint32_t open_row_ = 0;
    bool in_order_ = true;
    bool keeps_rows_ = true;

    std::size_t size_ = 0;
    Rectangle expected_;
    mutable bool bounds_outdated_ = false;
    mutable CellBounds bounds_;
    mutable CellBounds filled_bounds_;
};

inline const CellStore::Row* CellStore::find_row(std::uint32_t row) const {
    if (rows_.empty() || row < rows_.front().index || row > rows_.back().index) return nullptr;
    // Without gaps before it, a row is at this distance from the first; with gaps, nearer.
    std::size_t at = row - rows_.front().index;
    if (at < rows_.size() && rows_[at].index == row) return &rows_[at];
    std::size_t low = 0, high = at < rows_.size() ? at : rows_.size();
    while (low < high) {
        at = (low + high) / 2;
        if (rows_[at].index < row)
            low = at + 1;
        else
            high = at;
    }
    return low < rows_.size() && rows_[low].index == row ? &rows_[low] : nullptr;
}

// Callers walk down a column as a rule, and the next rows' cells are far apart in memory.
inline void CellStore::prefetch_ahead(const Row* found, std::uint32_t at) const {
    constexpr std::ptrdiff_t kRowsAhead = 12;
    if (rows_.data() + rows_.size() - found <= kRowsAhead) return;
    __builtin_prefetch(found[kRowsAhead].cells);
    __builtin_prefetch(found[kRowsAhead].cells + at);
}

inline const StoredCell* CellStore::find(int row, int column) const {
    if (row < 0 || column < 0) return nullptr;
    const Row* found = find_row(static_cast<std::uint32_t>(row));
    if (found == nullptr) return nullptr;
    const auto wanted = static_cast<std::uint32_t>(column);
    const StoredCell* cells = found->cells;
    if (wanted < cells[0].column) return nullptr;
    std::uint32_t at = wanted - cells[0].column;
    if (at < found->count && cells[at].column == wanted) {
        prefetch_ahead(found, at);
        return &cells[at];
    }
    std::uint32_t low = 0, high = at < found->count ? at : found->count;
    while (low < high) {
        at = (low + high) / 2;
        if (cells[at].column < wanted)
            low = at + 1;
        else
            high = at;
    }
    return low < found->count && cells[low].column == wanted ? &cells[low] : nullptr;
}

} // namespace workbook
