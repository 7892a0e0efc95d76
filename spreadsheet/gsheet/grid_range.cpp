// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/grid_range.h"

#include <algorithm>

namespace gsheet {

namespace {

std::int64_t index_in(const Object& range, std::string_view key, std::int64_t absent) {
    const std::int64_t index = integer_in(range, key).value_or(absent);
    return std::clamp<std::int64_t>(index, 0, GridRange::kUnbounded);
}

/// Whether the parts leave no gap in one row of `range`; they are ordered by their first columns.
bool is_row_covered(std::int64_t row, const GridRange& range, const std::vector<GridRange>& parts) {
    std::int64_t end = range.start_column; // of what is covered from the left without a gap
    for (const GridRange& part : parts) {
        if (row < part.start_row || row >= part.end_row) continue;
        if (part.start_column > end) return false;
        end = std::max(end, part.end_column);
    }
    return end >= range.end_column;
}

} // namespace

GridRange to_grid_range(const spreadsheet::Range& range) {
    return {range.first_row, std::int64_t{range.last_row} + 1, range.first_column,
            std::int64_t{range.last_column} + 1};
}

GridRange parse_grid_range(const Object& range) {
    return {index_in(range, "startRowIndex", 0),
            index_in(range, "endRowIndex", GridRange::kUnbounded),
            index_in(range, "startColumnIndex", 0),
            index_in(range, "endColumnIndex", GridRange::kUnbounded)};
}

Object grid_range_json(std::int64_t sheet_id, const spreadsheet::Range& range) {
    const GridRange grid = to_grid_range(range);
    return Object({{"sheetId", sheet_id},
                   {"startRowIndex", grid.start_row},
                   {"endRowIndex", grid.end_row},
                   {"startColumnIndex", grid.start_column},
                   {"endColumnIndex", grid.end_column}});
}

GridRange intersection(const GridRange& a, const GridRange& b) {
    return {std::max(a.start_row, b.start_row), std::min(a.end_row, b.end_row),
            std::max(a.start_column, b.start_column), std::min(a.end_column, b.end_column)};
}

bool is_covered(const GridRange& range, const std::vector<GridRange>& parts) {
    std::vector<GridRange> inside;
    std::vector<std::int64_t> rows{range.start_row}; // those before which the parts change
    for (const GridRange& part : parts) {
        const GridRange common = intersection(range, part);
        if (common.is_empty()) continue;
        inside.push_back(common);
        rows.push_back(common.start_row);
        if (common.end_row < range.end_row) rows.push_back(common.end_row);
    }
    std::sort(inside.begin(), inside.end(), [](const GridRange& a, const GridRange& b) {
        return a.start_column < b.start_column;
    });
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return std::all_of(rows.begin(), rows.end(),
                       [&](std::int64_t row) { return is_row_covered(row, range, inside); });
}

} // namespace gsheet
