// SPDX-License-Identifier: Apache-2.0
//
// Blocks go to the application and come from it in bands of rows, since each takes a multiple of
// its memory on the way.
#pragma once

#include <algorithm>

#include "automation/libreoffice/cell_area.h"

namespace office {

/// Cells in a band, if a row has no more.
inline constexpr int kBandCells = 200'000;

/// Calls `use` with each band of an area, from top to bottom.
template <class Use>
void for_each_band(const CellArea& area, Use use) {
    const int height = std::max(1, kBandCells / area.columns());
    for (int row = area.first_row; row <= area.last_row; row += height) {
        CellArea band = area;
        band.first_row = row;
        band.last_row = std::min(area.last_row, row + height - 1);
        use(band);
    }
}

} // namespace office
