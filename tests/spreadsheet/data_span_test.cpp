// SPDX-License-Identifier: Apache-2.0
//
// The block of content around a cell, over drawn sheets.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/libxl/data_span.h"
#include "tests/spreadsheet/fake_library.h"

namespace spreadsheet {
namespace {

/// x a number, t a text, b a blank cell, e an error, . nothing.
fake::FakeSheet drawn_sheet(const std::vector<std::string>& rows) {
    fake::FakeSheet sheet;
    for (int row = 0; row < static_cast<int>(rows.size()); ++row)
        for (int column = 0; column < static_cast<int>(rows[0].size()); ++column) {
            const auto put = [&](fake::FakeCell cell) { sheet.cells[{row, column}] = cell; };
            switch (rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)]) {
            case 'x':
                put(fake::number(1));
                break;
            case 't':
                put(fake::text(u"t"));
                break;
            case 'b':
                put(fake::blank());
                break;
            case 'e':
                put(fake::error(u"#N/A"));
                break;
            default:
                break;
            }
        }
    return sheet;
}

Range bounds_of(const fake::FakeSheet& sheet) {
    return {sheet.first_row(), sheet.first_column(), sheet.end_row() - 1, sheet.end_column() - 1};
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
        sheet.cells[{i, i}] = sheet.cells[{i, i + 1}] = fake::number(1);
    EXPECT_EQ(find_data_span(sheet, {0, 0}, {0, 0, steps, steps}), (Range{0, 0, 99, 100}));
    EXPECT_LE(sheet.calls, 2 * (steps + 1) * (steps + 1));
}

} // namespace
} // namespace spreadsheet
