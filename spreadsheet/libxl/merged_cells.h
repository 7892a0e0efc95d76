// SPDX-License-Identifier: Apache-2.0
//
// Merged regions of a sheet: which cell gives a cell of a region its value under the caller's
// rules. Knows no library and no sheet, only coordinates.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/range.h"

namespace spreadsheet {

/// What the caller wants of merged cells, across columns and across rows.
struct MergeRules {
    MergedCellColumnRule columns = MergedCellColumnRule::first;
    MergedCellRowRule rows = MergedCellRowRule::first;
};

/// How a cell lies in a merged region.
enum class MergeOrientation : std::uint32_t {
    horizontal = 0, ///< a region of one row
    vertical = 1,   ///< a region of one column
    block = 2,      ///< several rows and several columns
    none = 3        ///< read as itself, or without a value
};

/// Which rule left a cell out.
enum class Omission : std::uint8_t { none, column, row };

/// Where a cell's value comes from.
struct MergeSource {
    int row;
    int column;
    MergeOrientation orientation;
    Omission omission = Omission::none;

    static constexpr int kOmitted = -1;
    static constexpr int kNoValue = 0x7fffffff;

    /// False for both marks: one more than either, cut to 31 bits, is 0.
    bool has_value() const noexcept {
        return ((static_cast<std::uint32_t>(row) + 1u) & 0x7fffffffu) != 0;
    }
    bool operator==(const MergeSource&) const = default;
};

/// Applies the rules to a cell of `region`. Throws `Exception` 38 where the column rule and 39
/// where the row rule is `error`; in a block the column rule is looked at first.
MergeSource resolve_merged_cell(const Range& region, Cell cell, const MergeRules& rules);

/// The regions of one sheet and the map from cells to them. The map holds only cells that are going
/// to be read, so that a region over a whole sheet costs no more than the read itself.
class MergedCells {
  public:
    MergedCells() = default;
    /// Regions with reversed or negative corners are left out.
    explicit MergedCells(std::vector<Range> regions);

    /// Prepares the look-up of the cells of `range`.
    void map_cells(const Range& range);
    /// As above for pairs of rows (first, last; ascending) and a list of columns.
    void map_cells(const std::vector<int>& row_blocks, std::vector<int> columns);

    /// The region that holds the cell, null when there is none. The cell must have been mapped.
    const Range* region(Cell cell) const;

  private:
    /// FNV-1a, 64 bits, over the bytes of row and column.
    struct CellHash {
        std::size_t operator()(const Cell& cell) const noexcept;
    };

    struct RowBlock {
        int first;
        int last;
    };

    /// Enters the selected cells of one region that no region before it has; looks at `visits_left`
    /// cells at most.
    void map_region(std::size_t index, const std::vector<RowBlock>& blocks,
                    const std::vector<int>& columns, std::size_t& visits_left);

    std::vector<Range> regions_;
    std::unordered_map<Cell, std::size_t, CellHash> merge_map_; ///< to an index of `regions_`
    std::optional<Range> mapped_; ///< what `merge_map_` covers, when that is a rectangle
};

} // namespace spreadsheet
