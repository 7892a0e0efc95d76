// SPDX-License-Identifier: Apache-2.0
//
// Which number format each cell of an area has, asked for once and searched without the
// application.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "automation/libreoffice/cell_area.h"

namespace office {

/// A number format's key in its document.
using FormatKey = std::int32_t;

class FormatMap {
  public:
    /// A rectangle of cells of one format; the rectangles of an area do not overlap.
    struct Part {
        CellArea area;
        FormatKey key;
    };
    /// Cells of one column, one below the other, of one format.
    struct Run {
        int first_row;
        int last_row;
        FormatKey key;
    };

    /// Parts beyond `area` are cut off.
    FormatMap(const CellArea& area, const std::vector<Part>& parts);

    const CellArea& area() const { return area_; }
    /// The runs of a column of the area, from top to bottom.
    const std::vector<Run>& runs(int column) const {
        return columns_[static_cast<std::size_t>(column - area_.first_column)];
    }
    /// The format that all cells of a part of the area have; nullopt where they differ.
    std::optional<FormatKey> common_format(const CellArea& part) const;

  private:
    const CellArea area_;
    std::vector<std::vector<Run>> columns_;
};

} // namespace office
