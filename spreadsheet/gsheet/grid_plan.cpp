// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/grid_plan.h"

#include <algorithm>

#include "spreadsheet/exception.h"
#include "spreadsheet/limits.h"

namespace gsheet {

namespace {

using spreadsheet::error_id;
using spreadsheet::Exception;
using spreadsheet::kMaxGoogleCells;
using spreadsheet::Range;

constexpr std::int64_t kMaxColumns = 18'278;

[[noreturn]] void fail_too_large() {
    throw Exception(error_id::google_range_too_large);
}

/// The most of one dimension, fewer than there are, that `other` of the other leave room for.
std::int64_t largest_fitting(std::int64_t count, std::int64_t other) {
    return std::min(count - 1, kMaxGoogleCells / other);
}

/// The grid after its end was cut so that a block of `rows` by `columns` has room beside it.
GridSize cut_grid(const GridSize& grid, std::int64_t rows, std::int64_t columns) {
    if (std::max(rows, grid.rows) * std::max(columns, grid.columns) <= kMaxGoogleCells) return grid;
    GridSize cut = grid;
    if (grid.columns <= columns) {
        if (grid.rows <= rows) fail_too_large();
        cut.rows = largest_fitting(grid.rows, columns);
    } else if (grid.rows <= rows) {
        cut.columns = largest_fitting(grid.columns, rows);
    }
    return cut;
}

} // namespace

void check_range(const Range& range) {
    const bool is_valid = range.first_row >= 0 && range.first_column >= 0 &&
                          range.last_row >= range.first_row &&
                          range.last_column >= range.first_column;
    if (!is_valid) throw Exception(error_id::google_range_invalid);
}

GridPlan plan_grid(const GridSize& grid, const Range& target,
                   const std::function<Range()>& used_range) {
    check_range(target);
    const std::int64_t columns = std::int64_t{target.last_column} + 1 - target.first_column;
    const std::int64_t rows = std::int64_t{target.last_row} + 1 - target.first_row;
    if (columns - 1 >= kMaxColumns) fail_too_large();
    GridPlan plan;
    plan.cut = cut_grid(grid, rows, columns);
    plan.wanted = {std::max(plan.cut.rows, std::int64_t{target.last_row} + 1),
                   std::max(plan.cut.columns, std::int64_t{target.last_column} + 1)};
    // Nothing is deleted for a range that would not fit all the same.
    if (plan.wanted.rows * plan.wanted.columns > kMaxGoogleCells) fail_too_large();
    if (plan.cut.columns < grid.columns && plan.cut.columns < used_range().last_column)
        fail_too_large();
    return plan;
}

} // namespace gsheet
