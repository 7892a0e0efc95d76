// SPDX-License-Identifier: Apache-2.0
//
// The block of content around a cell, over drawn sheets.
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <climits>
#include <gtest/gtest.h>

#include "spreadsheet/libxl/data_span.h"
#include "tests/spreadsheet/fake_library.h"

namespace spreadsheet {
namespace {

/// x a number, t a text, b a blank cell, e an error, . nothing.
fake::FakeSheet drawn_sheet(const std::vector<std::string>& rows) {
    using workbook::CellKind;
    const std::map<char, CellKind> kinds{{'x', CellKind::Number},
                                         {'t', CellKind::String},
                                         {'b', CellKind::Blank},
                                         {'e', CellKind::Error}};
    fake::FakeSheet sheet;
    for (std::size_t row = 0; row < rows.size(); ++row)
        for (std::size_t column = 0; column < rows[row].size(); ++column)
            if (const auto kind = kinds.find(rows[row][column]); kind != kinds.end())
                sheet.kinds[{static_cast<int>(row), static_cast<int>(column)}] = kind->second;
    return sheet;
}

/// The smallest rectangle with all cells.
Range bounds_of(const fake::FakeSheet& sheet) {
    Range bounds{INT_MAX, INT_MAX, -1, -1};
    for (const auto& [cell, kind] : sheet.kinds)
        bounds = {std::min(bounds.first_row, cell.first),
                  std::min(bounds.first_column, cell.second), std::max(bounds.last_row, cell.first),
                  std::max(bounds.last_column, cell.second)};
    return bounds.last_row < 0 ? Range{0, 0, -1, -1} : bounds;
}

TEST(FindDataSpan, GrowsOverContentThatTouchesTheBox) {
    const struct {
        const char* what;
        std::vector<std::string> rows;
        Cell start;
        Range span;
    } cases[] = {
        {"a block, from its middle",
         {".....", ".xxx.", ".xtx.", ".xxx.", "....x"},
         {2, 2},
         {1, 1, 3, 3}},
        {"from a corner", {"xx.x", "xx.x", "....", "xx.x"}, {0, 0}, {0, 0, 1, 1}},
        {"round a corner", {"xxx", "..x", "x.x", "..."}, {0, 0}, {0, 0, 2, 2}},
        {"a spiral pulls every side in turn",
         {"xxxx", "x..x", "xx.x", "...x"},
         {2, 1},
         {0, 0, 3, 3}},
        {"diagonal neighbours do not touch", {"x..", ".x.", "..x"}, {1, 1}, {1, 1, 1, 1}},
        {"blank cells and errors end a block", {"xbxx", "exxx"}, {0, 0}, {0, 0, 0, 0}},
        {"they may lie inside it", {"xbx", "xex"}, {0, 2}, {0, 2, 1, 2}},
        {"an empty start next to content", {"...", "..x", "..."}, {1, 1}, {1, 1, 1, 2}},
        {"an empty start alone", {"x...x"}, {0, 2}, {0, 2, 0, 2}},
        {"a start beyond the used area", {"xx", "xx"}, {7, 9}, {7, 9, 7, 9}},
        {"an empty sheet", {"..."}, {0, 0}, {0, 0, 0, 0}},
        {"the greatest indices", {"xx"}, {INT_MAX, INT_MAX}, {INT_MAX, INT_MAX, INT_MAX, INT_MAX}},
    };
    for (const auto& test : cases) {
        const fake::FakeSheet sheet = drawn_sheet(test.rows);
        EXPECT_EQ(find_data_span(sheet, test.start, bounds_of(sheet)), test.span) << test.what;
    }
}

TEST(FindDataSpan, StaysWithinTheBounds) {
    const fake::FakeSheet sheet = drawn_sheet({"xxxx", "xxxx", "xxxx"});
    EXPECT_EQ(find_data_span(sheet, {1, 1}, {1, 1, 1, 2}), (Range{1, 1, 1, 2}));
}

TEST(FindDataSpan, LooksAtACellOncePerSideAtMost) {
    // Stairs: every pass adds one row and one column, so that looking at whole sides again each
    // time would cost far more than the area.
    const int steps = 100;
    fake::FakeSheet sheet;
    for (int i = 0; i < steps; ++i)
        sheet.kinds[{i, i}] = sheet.kinds[{i, i + 1}] = workbook::CellKind::Number;
    EXPECT_EQ(find_data_span(sheet, {0, 0}, {0, 0, steps, steps}), (Range{0, 0, 99, 100}));
    EXPECT_LE(sheet.calls, 2 * (steps + 1) * (steps + 1));
}

} // namespace
} // namespace spreadsheet
