// SPDX-License-Identifier: Apache-2.0
//
// Rectangles of a sheet as the service writes them: zero-based, ends exclusive, an absent index
// means unbounded.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "spreadsheet/gsheet/json_access.h"
#include "spreadsheet/range.h"

namespace gsheet {

struct GridRange {
    static constexpr std::int64_t kUnbounded = std::numeric_limits<std::int32_t>::max();

    std::int64_t start_row = 0;
    std::int64_t end_row = kUnbounded;
    std::int64_t start_column = 0;
    std::int64_t end_column = kUnbounded;

    bool operator==(const GridRange&) const = default;
    bool is_empty() const { return start_row >= end_row || start_column >= end_column; }
};

GridRange to_grid_range(const spreadsheet::Range& range);
/// Indices are held between 0 and `kUnbounded`, whatever the reply says.
GridRange parse_grid_range(const Object& range);
/// {"sheetId", "startRowIndex", "endRowIndex", "startColumnIndex", "endColumnIndex"}.
Object grid_range_json(std::int64_t sheet_id, const spreadsheet::Range& range);

GridRange intersection(const GridRange& a, const GridRange& b);
/// Whether every cell of `range` lies in one of `parts`.
bool is_covered(const GridRange& range, const std::vector<GridRange>& parts);

} // namespace gsheet
