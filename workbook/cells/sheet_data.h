// SPDX-License-Identifier: Apache-2.0
//
// What one worksheet holds, as a reader of any file format fills it and `StoredSheet` answers from
// it, and what was changed since. Plain data; all indices are zero-based.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include <climits>

#include "workbook/cells/cell_store.h"
#include "workbook/cells/cleared_cells.h"
#include "workbook/cells/rectangle.h"
#include "workbook/cells/string_pool.h"

namespace workbook {

/// Rows, both ends inclusive; all rows without arguments.
struct RowSpan {
    int first = 0;
    int last = INT_MAX;

    bool holds(int row) const { return row >= first && row <= last; }
};

/// Columns with one width and one format, both ends inclusive.
struct ColumnSpan {
    int first = 0, last = 0;
    double width = 0.0; ///< in characters; 0 when the file states none
    std::uint32_t format = 0;
    bool has_format = false;
};

/// Of columns in two spans the first span counts.
struct SheetColumns {
    std::vector<ColumnSpan> spans;
    double default_width = 9.140625; ///< eight characters and the padding that applications add
};

/// The format of the cells of a row that do not exist.
struct RowFormat {
    int row;
    std::uint32_t format;
};

struct SheetCells {
    explicit SheetCells(int max_columns) : cells(max_columns) {}

    CellStore cells;
    SheetColumns columns;
    std::vector<RowFormat> row_formats; ///< ascending; one for a row at most
    StringPool own_strings;
    /// One past the greatest shared string index that a cell uses; 0 when none does.
    std::uint64_t shared_strings_end = 0;
    std::uint64_t formulas = 0; ///< cells that have one
    std::uint64_t formulas_without_result = 0;
    /// One past the greatest index of a format that a cell or row has, 0 when none has one.
    std::uint32_t formats_end = 0;
};

/// What files have after the cells.
struct SheetTail {
    std::vector<Rectangle> merged_regions;
    bool is_protected = false;
};

/// What was changed since the load. Cells are changed where the store marks them so.
struct SheetChanges {
    bool cells = false;   ///< a cell was written or cleared
    StringPool formulas;  ///< of cells that were written
    ClearedCells cleared; ///< what was there in the file is gone, unless the store has a new cell
    std::optional<std::vector<Rectangle>> merged_regions; ///< all that are left
    std::optional<bool> is_protected;
    std::map<int, double> column_widths; ///< by column, in characters

    bool any() const { return cells || merged_regions || is_protected || !column_widths.empty(); }
};

} // namespace workbook
