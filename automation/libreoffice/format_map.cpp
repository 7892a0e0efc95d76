// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/format_map.h"

#include <algorithm>

namespace office {

FormatMap::FormatMap(const CellArea& area, const std::vector<Part>& parts)
    : area_(area), columns_(static_cast<std::size_t>(area.columns())) {
    for (const Part& part : parts) {
        const int first_row = std::max(part.area.first_row, area.first_row);
        const int last_row = std::min(part.area.last_row, area.last_row);
        const int first_column = std::max(part.area.first_column, area.first_column);
        const int last_column = std::min(part.area.last_column, area.last_column);
        if (first_row > last_row) continue;
        for (int column = first_column; column <= last_column; ++column)
            columns_[static_cast<std::size_t>(column - area.first_column)].push_back(
                {first_row, last_row, part.key});
    }
    for (std::vector<Run>& runs : columns_) {
        std::sort(runs.begin(), runs.end(),
                  [](const Run& a, const Run& b) { return a.first_row < b.first_row; });
        // Cells that differ in other attributes alone are one run.
        std::size_t kept = 0;
        for (const Run& run : runs) {
            Run* const previous = kept == 0 ? nullptr : &runs[kept - 1];
            if (previous && previous->key == run.key && previous->last_row + 1 == run.first_row)
                previous->last_row = run.last_row;
            else
                runs[kept++] = run;
        }
        runs.resize(kept);
    }
}

std::optional<FormatKey> FormatMap::common_format(const CellArea& part) const {
    std::optional<FormatKey> common;
    for (int column = part.first_column; column <= part.last_column; ++column) {
        const std::vector<Run>& column_runs = runs(column);
        const auto after =
            std::upper_bound(column_runs.begin(), column_runs.end(), part.first_row,
                             [](int row, const Run& run) { return row < run.first_row; });
        if (after == column_runs.begin()) return std::nullopt;
        const Run& run = *(after - 1);
        if (run.last_row < part.last_row || (common && *common != run.key)) return std::nullopt;
        common = run.key;
    }
    return common;
}

} // namespace office
