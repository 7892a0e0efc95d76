// SPDX-License-Identifier: Apache-2.0
//
// Formulas that are one rectangle, and which name a sheet finds.
#include <gtest/gtest.h>

#include "foundation/unicode.h"
#include "workbook/xlsx/reading/defined_names.h"

namespace workbook {
namespace {

/// "sheet first_row-last_row first_column-last_column", "none" when it is no rectangle.
std::string described(std::string_view formula) {
    const std::optional<NamedArea> area = parse_named_area(formula);
    if (!area) return "none";
    const Rectangle& cells = area->cells;
    return foundation::unicode::to_utf8(area->sheet) + " " + std::to_string(cells.first_row) + "-" +
           std::to_string(cells.last_row) + " " + std::to_string(cells.first_column) + "-" +
           std::to_string(cells.last_column);
}

TEST(ParseNamedArea, ReadsOneRectangleOnly) {
    struct Case {
        const char *formula, *area;
    } const cases[] = {
        {"Sheet1!$A$1:$B$2", "Sheet1 0-1 0-1"},
        {"Sheet1!B2", "Sheet1 1-1 1-1"},
        {"=Sheet1!$B$2:$A$1", "Sheet1 0-1 0-1"},
        {" Sheet1!a1:xfd1048576 ", "Sheet1 0-1048575 0-16383"},
        {"'It''s here'!$C$3", "It's here 2-2 2-2"},
        {"'a!b'!$C$3", "a!b 2-2 2-2"},
        {"Данные!$A$1", "Данные 0-0 0-0"},
        {"Sheet1!$A:$C", "Sheet1 0-1048575 0-2"},
        {"Sheet1!$1:$3", "Sheet1 0-2 0-16383"},
        {"$A$1:$B$2", " 0-1 0-1"},
        {"Sheet1!$A", "none"},
        {"Sheet1!$1", "none"},
        {"Sheet1!$A:$1", "none"},
        {"Sheet1!$A$1:$B", "none"},
        {"Sheet1!$XFE$1", "none"},
        {"Sheet1!$A$1048577", "none"},
        {"Sheet1!$A$0", "none"},
        {"Sheet1!$A$99999999999999999999", "none"},
        {"Sheet1!$AAAAAAAAAAAAAAA$1", "none"},
        {"Sheet1!A$", "none"},
        {"Sheet1!$A$1,Sheet1!$B$2", "none"},
        {"Sheet1!$A$1 Sheet1!$B$2", "none"},
        {"Sheet1!$A$1:Sheet1!$B$2", "none"},
        {"Sheet1:Sheet3!$A$1", "none"},
        {"'Sheet1:Sheet3'!$A$1", "none"},
        {"[1]Sheet1!$A$1", "none"},
        {"'[1]Sheet 1'!$A$1", "none"},
        {"Sheet1!#REF!", "none"},
        {"#REF!$A$1", "none"},
        {"#REF!", "none"},
        {"OFFSET(Sheet1!$A$1,1,1)", "none"},
        {"'open!$A$1", "none"},
        {"''!$A$1", "none"},
        {"!$A$1", "none"},
        {"12", "none"},
        {"\"text\"", "none"},
        {"", "none"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(described(c.formula), c.area) << c.formula;
}

TEST(FindNamedCells, PrefersTheSheetsOwnNames) {
    const std::vector<DefinedName> names = {
        {u"Data", "One!$A$1", std::nullopt, false},
        {u"data", "Two!$B$2", 1, false},
        {u"Away", "Two!$C$3", 0, false},
        {u"Bare", "$D$4", 0, false},
        {u"BareBook", "$E$5", std::nullopt, false},
        {u"Away", "One!$F$6", std::nullopt, false},
    };
    const auto row = [&](std::u16string_view name, int sheet) {
        const auto cells = find_named_cells(names, name, sheet, sheet == 0 ? u"ONE" : u"two");
        return cells ? cells->first_row : -1;
    };
    EXPECT_EQ(row(u"DATA", 0), 0);
    EXPECT_EQ(row(u"DATA", 1), 1);
    EXPECT_EQ(row(u"Data", 2), -1) << "a name of the book that refers to another sheet";
    EXPECT_EQ(row(u"Away", 0), -1) << "the sheet's own name hides that of the book";
    EXPECT_EQ(row(u"bare", 0), 3);
    EXPECT_EQ(row(u"bare", 1), -1);
    EXPECT_EQ(row(u"BareBook", 0), -1);
    EXPECT_EQ(row(u"absent", 0), -1);
}

} // namespace
} // namespace workbook
