// SPDX-License-Identifier: Apache-2.0
//
// Changing cells in memory, held against a map of cells.
#include <algorithm>
#include <map>
#include <random>
#include <utility>

#include <gtest/gtest.h>

#include "workbook/cells/cell_store.h"
#include "workbook/cells/cleared_cells.h"
#include "workbook/xlsx/xlsx_limits.h"

namespace workbook {
namespace {

StoredCell number_cell(int column, double value) {
    StoredCell cell{};
    cell.value.number = value;
    cell.column = static_cast<std::uint32_t>(column);
    return cell;
}

StoredCell blank_cell(int column) {
    StoredCell cell = number_cell(column, 0.0);
    cell.kind = static_cast<std::uint32_t>(StoredKind::Blank);
    return cell;
}

struct Expected {
    double value;
    bool is_blank, is_changed;
};
using Model = std::map<std::pair<int, int>, Expected>;

CellBounds bounds_of(const Model& model, bool filled) {
    CellBounds bounds;
    for (const auto& [place, cell] : model) {
        if (filled && cell.is_blank) continue;
        const auto [row, column] = place;
        if (bounds.end_row == 0) bounds = {row, row + 1, column, column + 1};
        bounds.end_row = row + 1;
        bounds.first_column = std::min(bounds.first_column, column);
        bounds.end_column = std::max(bounds.end_column, column + 1);
    }
    return bounds;
}

bool same(const CellBounds& a, const CellBounds& b) {
    return a.first_row == b.first_row && a.end_row == b.end_row &&
           a.first_column == b.first_column && a.end_column == b.end_column;
}

void expect_same(const CellStore& store, const Model& model) {
    EXPECT_EQ(store.size(), model.size());
    EXPECT_TRUE(same(store.bounds(), bounds_of(model, false)));
    EXPECT_TRUE(same(store.filled_bounds(), bounds_of(model, true)));
    auto next = model.begin();
    store.for_each([&](int row, const StoredCell& cell) {
        ASSERT_NE(next, model.end());
        const std::pair place(row, static_cast<int>(cell.column));
        ASSERT_EQ(place, next->first);
        EXPECT_EQ(cell.is_changed(), next->second.is_changed);
        EXPECT_EQ(cell.stored_kind() == StoredKind::Blank, next->second.is_blank);
        EXPECT_EQ(cell.value.number, next->second.value);
        ++next;
    });
    EXPECT_EQ(next, model.end());
}

class CellStoreChanges : public testing::TestWithParam<int> {};

// Rows and columns spread over `GetParam()` places each: from dense to scattered.
TEST_P(CellStoreChanges, AreSeenByEveryRead) {
    std::mt19937 random(static_cast<unsigned>(GetParam()));
    const auto below = [&random](int end) {
        return std::uniform_int_distribution(0, end - 1)(random);
    };
    const int spread = GetParam();
    CellStore store(kMaxColumns);
    Model model;
    for (int row = 3; row < 3 + spread; row += 2) {
        store.begin_row(row);
        *store.next_cell() = number_cell(row % 5, row);
        store.keep_cell();
        store.end_row();
        model[{row, row % 5}] = {static_cast<double>(row), false, false};
    }
    store.finish();
    for (int step = 0; step < 4000; ++step) {
        const int row = below(spread), column = below(spread);
        if (step % 50 == 0) {
            const int last_row = row + below(4), last_column = column + below(spread);
            store.remove({row, last_row, column, last_column});
            std::erase_if(model, [&](const auto& cell) {
                const auto [r, c] = cell.first;
                return r >= row && r <= last_row && c >= column && c <= last_column;
            });
        } else if (step % 7 == 0) {
            store.put(row, blank_cell(column));
            model[{row, column}] = {0.0, true, true};
        } else {
            if (step % 90 == 1) store.expect({row, row + 5, column, column + 20});
            store.put(row, number_cell(column, step));
            model[{row, column}] = {static_cast<double>(step), false, true};
        }
        if (step % 199 == 0) expect_same(store, model);
    }
    expect_same(store, model);
    for (int row = 0; row < spread + 2; ++row)
        for (int column = 0; column < std::min(spread, 50); ++column)
            ASSERT_EQ(store.find(row, column) != nullptr, model.count({row, column}) == 1);
    const CellStore copy(store);
    store.put(0, number_cell(0, -1));
    expect_same(copy, model);
}

INSTANTIATE_TEST_SUITE_P(Spreads, CellStoreChanges, testing::Values(4, 30, 700, 16'000));

TEST(CellStore, TakesRowsInAnyOrder) {
    constexpr int kRows = 200'000;
    for (const int step : {1, kRows - 1, 7'919}) { // up, down, all over
        CellStore store(kMaxColumns);
        for (int i = 0; i < kRows; ++i)
            store.put(static_cast<int>(std::int64_t{i} * step % kRows), number_cell(1, i));
        EXPECT_EQ(store.size(), static_cast<std::size_t>(kRows)) << step;
        EXPECT_EQ(store.bounds().end_row, kRows) << step;
    }
}

TEST(CellStore, ClearsHugeRectanglesOfFewCells) {
    CellStore store(kMaxColumns);
    for (int row : {0, 500'000, kMaxRows - 1})
        store.put(row, number_cell(kMaxColumns - 1, 1));
    for (int i = 0; i < 10'000; ++i)
        store.remove({1, kMaxRows - 2, 0, kMaxColumns - 1});
    EXPECT_EQ(store.size(), 2u);
    EXPECT_EQ(store.find(500'000, kMaxColumns - 1), nullptr);
}

TEST(ClearedCells, AnswersForRowsInWhateverOrder) {
    ClearedCells cleared;
    for (int row = 10; row < 1000; ++row)
        cleared.add({row, row, 4, 4}); // a column cell by cell
    cleared.add({5, 20, 0, 2});
    cleared.add({5, 5, 3, 9});
    ClearedCells::Walk walk(cleared);
    EXPECT_FALSE(walk.move_to(4));
    EXPECT_EQ(walk.next_row(), 5);
    const struct {
        int row, column;
        bool expected;
    } cases[] = {{5, 9, true},   {5, 10, false}, {6, 3, false},    {20, 1, true},
                 {20, 4, true},  {999, 4, true}, {1000, 4, false}, {6, 2, true}, // back again
                 {500, 2, false}};
    for (const auto& c : cases)
        EXPECT_EQ(walk.move_to(c.row) && walk.holds(c.column), c.expected)
            << c.row << ' ' << c.column;
    EXPECT_TRUE(cleared.intersects({0, kMaxRows, 9, 9}));
    EXPECT_FALSE(cleared.intersects({6, kMaxRows, 5, 9}));
}

} // namespace
} // namespace workbook
