// SPDX-License-Identifier: Apache-2.0
//
// Every rule on every cell of regions of each shape, and the map from cells to regions.
#include <string>

#include <gtest/gtest.h>

#include "spreadsheet/libxl/merged_cells.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

MergeRules rules(int columns, int rows) {
    return {static_cast<MergedCellColumnRule>(columns), static_cast<MergedCellRowRule>(rows)};
}

/// One letter a cell, rows separated by '/': v the first cell's value, i read as itself, . no
/// value, c left out by the column rule, r left out by the row rule; else the identifier thrown.
std::string picture(const Range& region, const MergeRules& rules) {
    std::string text;
    const int id = thrown_id([&] {
        for (int row = region.first_row; row <= region.last_row; ++row) {
            if (row > region.first_row) text += '/';
            for (int column = region.first_column; column <= region.last_column; ++column) {
                const MergeSource source = resolve_merged_cell(region, {row, column}, rules);
                if (source.omission != Omission::none) {
                    EXPECT_EQ(source.row, -1);
                    EXPECT_FALSE(source.has_value());
                    text += source.omission == Omission::column ? 'c' : 'r';
                } else if (!source.has_value()) {
                    EXPECT_EQ(source.row, 0x7fffffff);
                    EXPECT_EQ(source.orientation, MergeOrientation::none);
                    text += '.';
                } else {
                    EXPECT_EQ(source.row, region.first_row);
                    EXPECT_EQ(source.column, region.first_column);
                    text += source.orientation == MergeOrientation::none ? 'i' : 'v';
                }
            }
        }
    });
    return id < 0 ? text : std::to_string(id);
}

TEST(ResolveMergedCell, FollowsTheRuleOfALineAlone) {
    const Range horizontal{4, 2, 4, 4};
    const Range vertical{4, 2, 6, 2};
    const struct {
        int rule;
        const char* across_columns;
        const char* across_rows;
    } cases[] = {
        {0, "v..", "v/./."}, {1, "..v", "././v"}, {2, "vvv", "v/v/v"},
        {3, "38", "39"},     {4, "ccc", "r/r/r"}, {5, "...", "././."},
    };
    for (const auto& test : cases)
        for (int other = 0; other <= 4; ++other) {
            EXPECT_EQ(picture(horizontal, rules(test.rule, other)), test.across_columns)
                << test.rule << ' ' << other;
            EXPECT_EQ(picture(vertical, rules(other, test.rule)), test.across_rows)
                << other << ' ' << test.rule;
        }
    EXPECT_EQ(resolve_merged_cell(horizontal, {4, 3}, rules(2, 0)),
              (MergeSource{4, 2, MergeOrientation::horizontal}));
    EXPECT_EQ(resolve_merged_cell(vertical, {5, 2}, rules(0, 4)),
              (MergeSource{-1, -1, MergeOrientation::vertical, Omission::row}));
}

TEST(ResolveMergedCell, CombinesBothRulesInABlock) {
    const Range block{1, 2, 3, 4};
    const char* const expected[6][6] = {
        // row rule   0              1              2              3     4              5
        {"i../.../...", ".../.../v..", "v../v../v..", "39", "rrr/rrr/rrr", ".../.../..."},
        {"..v/.../...", ".../.../..v", "..v/..v/..v", "39", "rrr/rrr/rrr", ".../.../..."},
        {"vvv/.../...", ".../.../vvv", "vvv/vvv/vvv", "39", "rrr/rrr/rrr", ".../.../..."},
        {"38", "38", "38", "38", "38", "38"},
        {"ccc/ccc/ccc", "ccc/ccc/ccc", "ccc/ccc/ccc", "39", "ccc/ccc/ccc", "ccc/ccc/ccc"},
        {".../.../...", ".../.../...", ".../.../...", "39", "rrr/rrr/rrr", ".../.../..."},
    };
    for (int column_rule = 0; column_rule <= 5; ++column_rule)
        for (int row_rule = 0; row_rule <= 5; ++row_rule)
            EXPECT_EQ(picture(block, rules(column_rule, row_rule)), expected[column_rule][row_rule])
                << column_rule << ' ' << row_rule;
}

TEST(ResolveMergedCell, TakesASingleCellForMergedColumns) {
    EXPECT_EQ(picture({2, 2, 2, 2}, rules(0, 3)), "v");
    EXPECT_EQ(picture({2, 2, 2, 2}, rules(3, 0)), "38");
}

TEST(MergedCells, FindsTheRegionOfACell) {
    MergedCells merged({{0, 0, 0, 1}, {2, 3, 5, 3}, {5, 5, 2, 2}, {-1, 0, 3, 0}});
    EXPECT_EQ(merged.region({0, 0}), nullptr) << "before anything is mapped";
    merged.map_cells({0, 0, 9, 9});
    const struct {
        Cell cell;
        bool found;
        Range region;
    } cases[] = {
        {{0, 0}, true, {0, 0, 0, 1}}, {{0, 1}, true, {0, 0, 0, 1}}, {{0, 2}, false, {}},
        {{1, 0}, false, {}},          {{1, 3}, false, {}},          {{2, 3}, true, {2, 3, 5, 3}},
        {{5, 3}, true, {2, 3, 5, 3}}, {{6, 3}, false, {}},          {{3, 2}, false, {}},
        {{4, 4}, false, {}},
    };
    for (const auto& test : cases) {
        const Range* region = merged.region(test.cell);
        ASSERT_EQ(region != nullptr, test.found) << test.cell.row << ' ' << test.cell.column;
        if (region) {
            EXPECT_EQ(*region, test.region);
        }
    }
}

TEST(MergedCells, MapsTheNextSelectionAnew) {
    MergedCells merged({{0, 0, 9, 0}, {0, 2, 9, 2}});
    merged.map_cells({0, 0, 9, 0});
    EXPECT_NE(merged.region({9, 0}), nullptr);
    EXPECT_EQ(merged.region({9, 2}), nullptr) << "not read, so not mapped";
    merged.map_cells({0, 0, 9, 2});
    EXPECT_NE(merged.region({9, 2}), nullptr);
    merged.map_cells({1, 1, 4, 2});
    EXPECT_NE(merged.region({3, 2}), nullptr);
    merged.map_cells({2, 2, 7, 8}, {2, 0});
    EXPECT_NE(merged.region({2, 2}), nullptr);
    EXPECT_EQ(merged.region({3, 2}), nullptr) << "between the rows selected";
    EXPECT_NE(merged.region({8, 0}), nullptr);
}

TEST(MergedCells, MapsEveryRegionBehindARepeatedOne) {
    MergedCells merged({{0, 0, 0, 1}, {0, 0, 0, 1}, {0, 1, 0, 1}, {0, 2, 0, 3}});
    merged.map_cells({0, 0, 0, 3});
    ASSERT_NE(merged.region({0, 3}), nullptr);
    EXPECT_EQ(*merged.region({0, 1}), (Range{0, 0, 0, 1})) << "the first region that has the cell";
}

TEST(MergedCells, AnswersForRegionsOverWholeSheets) {
    const Range whole{0, 0, 1048575, 16383};
    MergedCells merged(std::vector<Range>(200'000, whole)); // overlapping, as no sound file has it
    merged.map_cells({1048575, 16000, 1048575, 16383});
    ASSERT_NE(merged.region({1048575, 16383}), nullptr);
    EXPECT_EQ(*merged.region({1048575, 16383}), whole);
    merged.map_cells({0, 0, 1048575, 1048575}, {16383, 0});
    EXPECT_NE(merged.region({1048575, 0}), nullptr);
    merged.map_cells({1048575, 16000, 1048576, 16383}); // a row that no region has
    EXPECT_NE(merged.region({1048575, 16383}), nullptr);
}

} // namespace
} // namespace spreadsheet
