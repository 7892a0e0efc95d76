// SPDX-License-Identifier: Apache-2.0
//
// Rectangles in the order in which they were cleared; a walk orders them by row.
#include "workbook/cells/cleared_cells.h"

#include <algorithm>
#include <numeric>

namespace workbook {

// Who clears cell by cell, down a column or along a row, leaves one rectangle.
void ClearedCells::add(const Rectangle& area) {
    if (!rectangles_.empty()) {
        Rectangle& last = rectangles_.back();
        const bool same_columns =
            last.first_column == area.first_column && last.last_column == area.last_column;
        const bool same_rows = last.first_row == area.first_row && last.last_row == area.last_row;
        if (same_columns && area.first_row >= last.first_row &&
            area.first_row <= last.last_row + 1) {
            last.last_row = std::max(last.last_row, area.last_row);
            return;
        }
        if (same_rows && area.first_column >= last.first_column &&
            area.first_column <= last.last_column + 1) {
            last.last_column = std::max(last.last_column, area.last_column);
            return;
        }
    }
    rectangles_.push_back(area);
}

bool ClearedCells::intersects(const Rectangle& area) const {
    return std::any_of(rectangles_.begin(), rectangles_.end(),
                       [&](const Rectangle& r) { return r.intersects(area); });
}

ClearedCells::Walk::Walk(const ClearedCells& cells)
    : cells_(cells), order_(cells.rectangles_.size()) {
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    std::sort(order_.begin(), order_.end(), [&](std::size_t a, std::size_t b) {
        return cells_.rectangles_[a].first_row < cells_.rectangles_[b].first_row;
    });
}

bool ClearedCells::Walk::move_to(int row) {
    if (row < row_) {
        next_ = 0;
        active_.clear();
    }
    row_ = row;
    for (; next_ < order_.size(); ++next_) {
        const Rectangle& rectangle = cells_.rectangles_[order_[next_]];
        if (rectangle.first_row > row) break;
        active_.push_back({rectangle.first_column, rectangle.last_column, rectangle.last_row});
    }
    active_.erase(std::remove_if(active_.begin(), active_.end(),
                                 [row](const Span& span) { return span.last_row < row; }),
                  active_.end());
    return !active_.empty();
}

bool ClearedCells::Walk::holds(int column) const {
    return std::any_of(active_.begin(), active_.end(), [column](const Span& span) {
        return span.first_column <= column && span.last_column >= column;
    });
}

int ClearedCells::Walk::next_row() const {
    if (!active_.empty()) return row_;
    return next_ < order_.size() ? cells_.rectangles_[order_[next_]].first_row : kNoRow;
}

} // namespace workbook
