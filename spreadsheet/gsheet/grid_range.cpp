// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/grid_range.h"

#include <algorithm>

namespace gsheet {

namespace {

std::int64_t index_in(const Object& range, std::string_view key, std::int64_t absent) {
    const std::int64_t index = integer_in(range, key).value_or(absent);
    return std::clamp<std::int64_t>(index, 0, GridRange::kUnbounded);
}

void append_unless_empty(std::vector<GridRange>& ranges, const GridRange& range) {
    if (!range.is_empty()) ranges.push_back(range);
}

/// What is left of `whole` without `part`: at most four rectangles, above, below, left, right.
void append_difference(std::vector<GridRange>& rest, const GridRange& whole,
                       const GridRange& part) {
    const GridRange common = intersection(whole, part);
    if (common.is_empty()) {
        rest.push_back(whole);
        return;
    }
    GridRange above = whole;
    above.end_row = common.start_row;
    GridRange below = whole;
    below.start_row = common.end_row;
    GridRange left = common;
    left.start_column = whole.start_column;
    left.end_column = common.start_column;
    GridRange right = common;
    right.start_column = common.end_column;
    right.end_column = whole.end_column;
    for (const GridRange& piece : {above, below, left, right})
        append_unless_empty(rest, piece);
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
    std::vector<GridRange> rest{range};
    for (const GridRange& part : parts) {
        std::vector<GridRange> smaller;
        for (const GridRange& piece : rest)
            append_difference(smaller, piece, part);
        rest = std::move(smaller);
        if (rest.empty()) return true;
    }
    return false;
}

} // namespace gsheet
