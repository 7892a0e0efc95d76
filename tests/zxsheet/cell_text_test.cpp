// SPDX-License-Identifier: Apache-2.0
//
// Numbers, dates and JSON strings as text.
#include <limits>

#include <gtest/gtest.h>

#include "zxsheet/cell_text.h"
#include "zxsheet/json_text.h"

namespace zxsheet {
namespace {

TEST(NumberText, IsTheShortestThatReadsBack) {
    const struct {
        double value;
        const char* text;
    } cases[] = {
        {0.0, "0"},
        {-0.0, "0"},
        {1.0, "1"},
        {-2.5, "-2.5"},
        {0.1, "0.1"},
        {0.1 + 0.2, "0.30000000000000004"},
        {100000, "100000"},
        {123456789012345, "123456789012345"},
        {999999999999999, "999999999999999"},
        {1e15, "1e+15"},
        {1e22, "1e+22"},
        {0.00001, "0.00001"},
        {0.000001, "1e-06"},
        {5e-324, "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(number_text(c.value), c.text);
}

TEST(DateText, CountsTheDaysOfThe1900System) {
    const struct {
        double serial;
        const char* text;
    } cases[] = {
        {1, "1900-01-01"},
        {59, "1900-02-28"},
        {60, "1900-02-29"},
        {60.5, "1900-02-29T12:00:00"},
        {61, "1900-03-01"},
        {0, "1899-12-31"},
        {0.25, "1899-12-31T06:00:00"},
        {-0.25, "1899-12-30T18:00:00"},
        {1462, "1904-01-01"},
        {25569, "1970-01-01"},
        {45351, "2024-02-29"},
        {45352, "2024-03-01"},
        {45352.545138888889, "2024-03-01T13:05:00"},
        {45352.5 + 0.25 / 86400, "2024-03-01T12:00:00.25"},
        {45352 + 1.001 / 86400, "2024-03-01T00:00:01.001"},
        {45352.999999999, "2024-03-02"}, // nearer to midnight than a millisecond
        {45352 + 86399.0 / 86400, "2024-03-01T23:59:59"},
        {2958465, "9999-12-31"},
        {2958466, "2958466"},
        {-693594, "0001-01-01"},
        {-693595, "-693595"},
        {1e300, "1e+300"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(date_text(c.serial), c.text) << c.serial;
    EXPECT_EQ(date_text(std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(JsonString, EscapesWhatJsonForbids) {
    EXPECT_EQ(json_string("a\"b\\c\n\r\t\x01\x1F/\xC3\xA9"),
              "\"a\\\"b\\\\c\\n\\r\\t\\u0001\\u001f/\xC3\xA9\"");
}

} // namespace
} // namespace zxsheet
