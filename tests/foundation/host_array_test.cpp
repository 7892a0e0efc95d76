// SPDX-License-Identifier: Apache-2.0
//
// The library's own host arrays: one data pointer per class, sizes that cannot be.
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include "foundation/host_array.h"

namespace foundation {
namespace {

/// Which of the data pointers are set, as the classes that they stand for.
std::vector<HostClass> classes_with_data(const HostArray& array) {
    std::vector<HostClass> found;
    if (array.doubles() != nullptr) found.push_back(HostClass::Double);
    if (array.logicals() != nullptr) found.push_back(HostClass::Logical);
    if (array.uint8s() != nullptr) found.push_back(HostClass::Uint8);
    if (array.characters() != nullptr) found.push_back(HostClass::Character);
    if (array.strings() != nullptr) found.push_back(HostClass::String);
    return found;
}

TEST(ColumnMajorArray, HasOneDataPointer) {
    const DoubleArray doubles(1, 2);
    const LogicalArray logicals(1, 2);
    const Uint8Array bytes(1, 2);
    const CharacterArray characters(1, 2);
    const StringArray strings(1, 2);
    for (const HostArray* array :
         {static_cast<const HostArray*>(&doubles), static_cast<const HostArray*>(&logicals),
          static_cast<const HostArray*>(&bytes), static_cast<const HostArray*>(&characters),
          static_cast<const HostArray*>(&strings)}) {
        EXPECT_EQ(classes_with_data(*array), std::vector{array->host_class()});
        EXPECT_EQ(array->cell(0), nullptr);
    }
    EXPECT_EQ(doubles.doubles()[1], 0.0);
    EXPECT_FALSE(logicals.logicals()[1]);
}

TEST(CellArray, HandsOutElementsWithinItsSize) {
    CellArray cells(2, 1);
    cells.data()[1] = std::make_unique<DoubleArray>(1, 1, std::vector<double>{2.5});
    EXPECT_EQ(cells.host_class(), HostClass::Cell);
    EXPECT_TRUE(classes_with_data(cells).empty());
    EXPECT_EQ(cells.cell(0), nullptr);
    ASSERT_NE(cells.cell(1), nullptr);
    EXPECT_EQ(cells.cell(1)->doubles()[0], 2.5);
    EXPECT_EQ(cells.cell(2), nullptr);
}

TEST(ColumnMajorArray, RefusesSizesThatCannotBe) {
    constexpr std::size_t huge = std::numeric_limits<std::size_t>::max();
    EXPECT_THROW(DoubleArray(huge, 2), std::length_error);
    EXPECT_THROW(StringArray(huge / 4, 1), std::length_error);
    EXPECT_THROW(LogicalArray(2, 2, {true, false, true}), std::invalid_argument);
    EXPECT_EQ(DoubleArray(0, huge).size(), 0u);
}

} // namespace
} // namespace foundation
