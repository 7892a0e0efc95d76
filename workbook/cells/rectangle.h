// SPDX-License-Identifier: Apache-2.0
//
// A rectangle of cells: zero-based rows and columns, both corners inclusive.
#pragma once

namespace workbook {

/// Without arguments: no cell.
struct Rectangle {
    int first_row = 0, last_row = -1, first_column = 0, last_column = -1;

    bool holds(int row, int column) const {
        return row >= first_row && row <= last_row && column >= first_column &&
               column <= last_column;
    }
    bool intersects(const Rectangle& other) const {
        return first_row <= other.last_row && last_row >= other.first_row &&
               first_column <= other.last_column && last_column >= other.first_column;
    }
    bool operator==(const Rectangle&) const = default;
};

} // namespace workbook
