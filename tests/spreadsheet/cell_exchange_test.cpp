// SPDX-License-Identifier: Apache-2.0
//
// The builder of cell arrays.
#include <gtest/gtest.h>

#include "spreadsheet/cell_exchange.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet::output {
namespace {

TEST(CellArrayBuilder, KeepsTheOrderAndTheClassOfEveryCell) {
    CellArrayBuilder builder;
    EXPECT_EQ(builder.take(), nullptr);
    EXPECT_EQ(thrown_id([&] { builder.add_empty(); }), 18);
    builder.begin(3, 2);
    builder.add_number(1.5);
    builder.add_empty();
    builder.add_text(u"t");
    builder.add_boolean(true);
    builder.add_date(45000.25);
    builder.add_text(u"");
    EXPECT_EQ(thrown_id([&] { builder.add_empty(); }), 18);
    const auto cells = builder.take();
    EXPECT_EQ(cells->cell(0)->doubles()[0], 1.5);
    EXPECT_EQ(cells->cell(1), nullptr);
    EXPECT_EQ(cells->cell(2)->strings()[0], u"t");
    EXPECT_TRUE(cells->cell(3)->logicals()[0]);
    EXPECT_EQ(cells->cell(4)->doubles()[0], 45000.25);
    EXPECT_EQ(cells->cell(5)->strings()[0], u"");
}

} // namespace
} // namespace spreadsheet::output
