// SPDX-License-Identifier: Apache-2.0
//
// How the grid of a sheet has to change before a range can be written: first what is cut off its
// end to stay within the service's number of cells, then what is appended.
#pragma once

#include <cstdint>
#include <functional>

#include "spreadsheet/range.h"

namespace gsheet {

struct GridSize {
    std::int64_t rows = 0;
    std::int64_t columns = 0;
    bool operator==(const GridSize&) const = default;
};

struct GridPlan {
    GridSize cut;    ///< after rows or columns were deleted from the end; as it was if none are
    GridSize wanted; ///< after the appending
    bool operator==(const GridPlan&) const = default;
};

/// Throws `Exception` 53 for negative or reversed indices, 52 when the range does not fit.
/// `used_range` is asked only when columns have to go: none that is in use may.
GridPlan plan_grid(const GridSize& grid, const spreadsheet::Range& target,
                   const std::function<spreadsheet::Range()>& used_range);

/// `Exception` 53 unless all indices are there and in order.
void check_range(const spreadsheet::Range& range);

} // namespace gsheet
