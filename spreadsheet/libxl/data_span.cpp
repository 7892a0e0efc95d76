// SPDX-License-Identifier: Apache-2.0
//
// Grows a box from one cell, a side at a time, until no side adds a cell.
#include "spreadsheet/libxl/data_span.h"

#include <cstdint>

namespace spreadsheet {
namespace {

class SpanSearch {
  public:
    SpanSearch(const workbook::Sheet& sheet, Cell start, const Range& bounds)
        : sheet_(sheet), bounds_(bounds), box_{start.row, start.column, start.row, start.column} {}

    Range run() {
        bool grown = true;
        while (grown) {
            grown = grow_right();
            grown = grow_down() || grown;
            grown = grow_left() || grown;
            grown = grow_up() || grown;
        }
        return box_;
    }

  private:
    /// The row or column just outside one side of the box. Cells `first` to `last` of it are known
    /// to have no content; the box only grows, so they need no second look.
    struct Side {
        int line = -1;
        std::int64_t first = 0;
        std::int64_t last = -1;
    };

    bool has_content(int row, int column) const {
        switch (sheet_.cell_type(row, column)) {
        case workbook::CellKind::Empty:
        case workbook::CellKind::Blank:
        case workbook::CellKind::Error:
            return false;
        default:
            return true;
        }
    }

    template <class HasContent>
    static bool touches_content(Side& side, int line, int first, int last, HasContent content_at) {
        if (side.line != line) side = {line, first, std::int64_t{first} - 1};
        // The box may end at the greatest int, which a counter of that type never passes.
        for (std::int64_t i = first; i < side.first; ++i)
            if (content_at(static_cast<int>(i))) return true;
        for (std::int64_t i = side.last + 1; i <= last; ++i)
            if (content_at(static_cast<int>(i))) return true;
        side.first = first;
        side.last = last;
        return false;
    }

    bool column_touches(Side& side, int column) {
        return touches_content(side, column, box_.first_row, box_.last_row,
                               [&](int row) { return has_content(row, column); });
    }

    bool row_touches(Side& side, int row) {
        return touches_content(side, row, box_.first_column, box_.last_column,
                               [&](int column) { return has_content(row, column); });
    }

    bool grow_right() {
        if (box_.last_column >= bounds_.last_column) return false;
        if (!column_touches(right_, box_.last_column + 1)) return false;
        ++box_.last_column;
        return true;
    }

    bool grow_down() {
        if (box_.last_row >= bounds_.last_row) return false;
        if (!row_touches(down_, box_.last_row + 1)) return false;
        ++box_.last_row;
        return true;
    }

    bool grow_left() {
        if (box_.first_column <= bounds_.first_column) return false;
        if (!column_touches(left_, box_.first_column - 1)) return false;
        --box_.first_column;
        return true;
    }

    bool grow_up() {
        if (box_.first_row <= bounds_.first_row) return false;
        if (!row_touches(up_, box_.first_row - 1)) return false;
        --box_.first_row;
        return true;
    }

    const workbook::Sheet& sheet_;
    const Range bounds_;
    Range box_;
    Side right_, down_, left_, up_;
};

} // namespace

Range find_data_span(const workbook::Sheet& sheet, Cell start, const Range& bounds) {
    return SpanSearch(sheet, start, bounds).run();
}

} // namespace spreadsheet
