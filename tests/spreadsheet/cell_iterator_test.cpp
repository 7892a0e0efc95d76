// SPDX-License-Identifier: Apache-2.0
//
// The walk over selections and the checks of the host's numbers.
#include <cmath>
#include <memory>
#include <utility>

#include <gtest/gtest.h>

#include "spreadsheet/cell_iterator.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using book::format;
using Places = std::vector<std::pair<int, int>>;

CellIterator create(const std::vector<double>& rows, const std::vector<double>& cols,
                    format fmt = format::XLSX) {
    return create_cell_iterator(rows.data(), rows.size(), cols.data(), cols.size(), fmt);
}

Places walk(const CellIterator& cells) {
    Places places;
    for (const CellIterator::Indices at : cells)
        places.emplace_back(at.row, at.column);
    return places;
}

TEST(CellIterator, WalksColumnsThenBlocksThenRows) {
    const struct {
        std::vector<double> rows, cols;
        Places places;
    } cases[] = {
        {{1, 3}, {2, 1}, {{0, 1}, {1, 1}, {2, 1}, {0, 0}, {1, 0}, {2, 0}}},
        {{1, 5, 2, 2}, {1}, {{0, 0}, {1, 0}, {4, 0}, {5, 0}}},
        {{1, 3, 2, 3}, {3}, {{0, 2}, {1, 2}, {2, 2}, {3, 2}, {4, 2}}},
        {{2.9, 1.9}, {1.9}, {{1, 0}}},
        {{}, {1, 2}, {}},
        {{1, 2}, {}, {}},
    };
    for (const auto& c : cases) {
        const CellIterator cells = create(c.rows, c.cols);
        EXPECT_EQ(walk(cells), c.places);
        EXPECT_EQ(cells.size(), c.places.size());
    }
}

TEST(CellIterator, StaysAtItsEndAndComparesByOrigin) {
    const CellIterator cells = create({1, 1}, {1});
    auto at = cells.begin();
    EXPECT_TRUE(++at == cells.end());
    EXPECT_TRUE(++at == cells.end());
    const CellIterator copy = cells; // NOLINT: a copy has vectors of its own
    EXPECT_TRUE(copy.begin() != cells.begin());
    CellIterator moved = create({1, 4}, {1, 2});
    CellIterator target = std::move(moved);
    EXPECT_EQ(target.size(), 8u);
    EXPECT_EQ(walk(target).size(), 8u);
}

TEST(CreateCellIterator, ChecksTheHostsNumbers) {
    const double nan = std::nan("");
    const struct {
        std::vector<double> rows, cols;
        int id;
        format fmt = format::XLSX;
    } cases[] = {
        {{1, 1, 1}, {1}, 33},
        {{1, 0}, {1}, 35},
        {{1, -3}, {1}, 35},
        {{0, 0}, {1}, 35}, // both wrong: the empty block comes first
        {{0, 1}, {1}, 32},
        {{-5, 100}, {1}, 32},
        {{1048576, 1}, {1}, -1},
        {{1048577, 1}, {1}, 32},
        {{1, 65537}, {1}, 32, format::XLS},
        {{5, 1, 2, 2}, {1}, 34},
        {{1, 2, 3, 1}, {1}, 34},
        {{1, 1, 1, 1}, {1}, 34},
        {{1, 1}, {0}, 32},
        {{1, 1}, {256}, -1, format::XLS},
        {{1, 1}, {257}, 32, format::XLS},
        {{1, 1}, {18278}, -1, format::GSHEET},
        {{1, 1}, {1, 2, 1}, 36},
        {{1, 1}, {1, 1, 0}, 32}, // bounds before repetitions
        {{1, 1}, {nan}, 32},
        {{nan, 1}, {1}, 32},
        {{1, nan}, {1}, 35},
        {{1e300, 1}, {1}, 32},
        {{1, HUGE_VAL}, {1}, 32},
        {{1, 1}, {-HUGE_VAL}, 32},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrown_id([&] { create(c.rows, c.cols, c.fmt); }), c.id) << &c - cases;
}

class SparseBytes : public foundation::Uint8Array {
  public:
    using foundation::Uint8Array::ColumnMajorArray;
    foundation::HostStorage storage() const override { return foundation::HostStorage::Sparse; }
};

TEST(CellTypeIterator, PairsCellsWithTheirTypes) {
    const foundation::DoubleArray rows(1, 4, {1, 5, 1, 2});
    const foundation::DoubleArray cols(2, 1, {3, 1});
    const foundation::Uint8Array types(3, 2, {0, 1, 2, 3, 4, 200});
    const auto cells = create_cell_type_iterator(&rows, &cols, &types, format::XLSX);
    EXPECT_EQ(cells->size(), 6u);
    EXPECT_EQ(cells->rows(), 3u);
    EXPECT_EQ(cells->columns(), 2u);
    const Places expected{{0, 2}, {4, 2}, {5, 2}, {0, 0}, {4, 0}, {5, 0}};
    for (int pass = 0; pass < 2; ++pass) {
        std::vector<int> seen_types;
        Places places;
        for (; !cells->at_end(); ++*cells) {
            places.emplace_back((**cells).row, (**cells).column);
            seen_types.push_back(static_cast<int>(cells->type()));
        }
        ++*cells;
        EXPECT_TRUE(cells->at_end());
        EXPECT_EQ(places, expected);
        EXPECT_EQ(seen_types, (std::vector<int>{0, 1, 2, 3, 4, 200}));
        cells->rewind();
    }
}

TEST(CellTypeIterator, CountsRowsWithoutColumns) {
    const foundation::DoubleArray rows(1, 2, {1, 3});
    const foundation::DoubleArray none(1, 0);
    const foundation::Uint8Array types(3, 0);
    const auto cells = create_cell_type_iterator(&rows, &none, &types, format::XLSX);
    EXPECT_TRUE(cells->at_end());
    EXPECT_EQ(cells->rows(), 3u);
    EXPECT_EQ(cells->columns(), 0u);
}

TEST(CreateCellTypeIterator, RefusesOtherArraysAndShapes) {
    const foundation::DoubleArray rows(1, 2, {1, 3});
    const foundation::DoubleArray odd(1, 3, {1, 1, 1});
    const foundation::DoubleArray cols(1, 2, {1, 2});
    const foundation::DoubleArray repeated(1, 2, {2, 2});
    const foundation::DoubleArray none(0, 0);
    const foundation::Uint8Array types(3, 2);
    const foundation::Uint8Array wide(3, 3);
    const foundation::Uint8Array tall(4, 2);
    const foundation::Uint8Array no_types(0, 2);
    const foundation::LogicalArray logicals(3, 2);
    const SparseBytes sparse(3, 2);
    const struct {
        const foundation::HostArray *rows, *cols, *types;
        int id;
    } cases[] = {
        {&rows, &cols, &types, -1},     {&rows, &cols, &wide, 18},
        {&rows, &cols, &tall, 18},      {&rows, &cols, &logicals, 18},
        {&rows, &cols, &sparse, 18},    {&rows, &cols, nullptr, 18},
        {nullptr, &cols, &types, 18},   {&rows, &types, &types, 18},
        {&rows, &repeated, &types, 36}, {&odd, &cols, &types, 33},
        {&none, &cols, &no_types, -1},  {&none, &cols, &types, 18},
        {&odd, &cols, &wide, 18},     // the shape of the types before the rows
        {&odd, &repeated, &tall, 36}, // columns before rows, rows before their number
        {&odd, &cols, &tall, 33},
    };
    for (const auto& c : cases)
        EXPECT_EQ(
            thrown_id([&] { create_cell_type_iterator(c.rows, c.cols, c.types, format::XLSX); }),
            c.id)
            << &c - cases;
}

} // namespace
} // namespace spreadsheet
