// SPDX-License-Identifier: Apache-2.0
//
// How large a sheet of a file format can be. Each format has one constant of this type.
#pragma once

#include "workbook/cells/rectangle.h"

namespace workbook {

struct SheetLimits {
    int rows, columns;

    bool hold(const Rectangle& area) const {
        return area.first_row >= 0 && area.first_row <= area.last_row && area.last_row < rows &&
               area.first_column >= 0 && area.first_column <= area.last_column &&
               area.last_column < columns;
    }
    bool hold(int row, int column) const { return hold({row, row, column, column}); }
};

} // namespace workbook
