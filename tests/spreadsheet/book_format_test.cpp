// SPDX-License-Identifier: Apache-2.0
//
// Formats, their names and limits.
#include <gtest/gtest.h>

#include "spreadsheet/book_format.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet::book {
namespace {

TEST(BookFormat, HasNamesAndLimits) {
    const struct {
        int value;
        const char16_t* name;
        int row_limit, column_limit;
        bool larger_than_xls;
    } cases[] = {
        {0, u"XLS", 65535, 255, false},        {1, u"XLSX", 1048575, 16383, true},
        {2, u"XLSM", 1048575, 16383, true},    {3, u"XLSB", 1048575, 16383, true},
        {4, u"XLTX", 1048575, 16383, true},    {5, u"XLTM", 1048575, 16383, true},
        {6, u"ODS", 1048575, 16383, true},     {7, u"CSV", 1048575, 16383, true},
        {8, u"GSHEET", 1048575, 18277, false}, {9, nullptr, 1048575, 16383, false},
        {255, nullptr, 1048575, 16383, false},
    };
    for (const auto& c : cases) {
        const auto value = static_cast<format>(c.value);
        EXPECT_EQ(get_row_limit(value), c.row_limit) << c.value;
        EXPECT_EQ(get_col_limit(value), c.column_limit) << c.value;
        EXPECT_EQ(larger_than_xls(value), c.larger_than_xls) << c.value;
        if (c.name == nullptr) {
            EXPECT_EQ(thrown_id([&] { to_string(value); }), 29) << c.value;
        } else {
            EXPECT_EQ(to_string(value), c.name);
            EXPECT_EQ(create_format(c.name), value);
        }
    }
}

TEST(CreateFormat, IgnoresCaseOnly) {
    EXPECT_EQ(create_format(u"xlsx"), format::XLSX);
    EXPECT_EQ(create_format(u"gSheet"), format::GSHEET);
    for (const char16_t* name : {u"", u".xlsx", u" XLSX", u"XLS ", u"XL", u"XLSXX", u"XL\u017F"})
        EXPECT_EQ(thrown_id([&] { create_format(name); }), 29);
    EXPECT_EQ(thrown_id([] { create_format(std::u16string(u"XLS\0", 4)); }), 29);
}

} // namespace
} // namespace spreadsheet::book
