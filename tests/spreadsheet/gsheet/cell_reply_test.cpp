// SPDX-License-Identifier: Apache-2.0
//
// Reading the service's replies without a tree: cells in their places, texts whole, and what is no
// reply.
#include <string>

#include <gtest/gtest.h>

#include "foundation/json.h"
#include "spreadsheet/gsheet/cell_reply.h"

namespace spreadsheet {
namespace {

/// The types of a range, row after row, one digit for each.
std::string types_of(const gsheet::CellCache& cells, const Range& range) {
    std::string digits;
    for (int row = range.first_row; row <= range.last_row; ++row)
        for (int column = range.first_column; column <= range.last_column; ++column)
            digits += static_cast<char>('0' + static_cast<int>(cells.at(row, column).type()));
    return digits;
}

TEST(CellReply, KeepsCellsInTheirPlaces) {
    const std::string one = R"({"effectiveValue": {"numberValue": 1}})";
    const auto in_rows = [](const std::string& rows) {
        return R"({"sheets": [{"data": [{"rowData": [)" + rows + "]}]}]}";
    };
    const struct {
        const char* about;
        std::string text;
        const char* types; ///< of two rows by two columns
    } cases[] = {
        {"nothing", "{}", "0000"},
        {"no rows", in_rows(""), "0000"},
        {"rows without cells", in_rows(R"({}, {"values": [)" + one + "]}"), "0010"},
        {"a cell behind an empty one", in_rows(R"({"values": [{}, )" + one + "]}"), "0100"},
        {"more than asked for",
         in_rows(R"({"values": [{}, {}, )" + one + R"(]}, {}, {"values": [)" + one + "]}"), "0000"},
        {"null for a cell and a row", in_rows(R"(null, {"values": [null, )" + one + "]}"), "0001"},
        {"other things for a cell and a row",
         in_rows(R"("row", {"values": [[)" + one + "], " + one + "]}"), "0001"},
        {"a text for a row behind a format",
         in_rows(
             R"({"values": [{"userEnteredFormat": {"numberFormat": {"type": "DATE"}}}]}, "row",
                {"values": [)" +
             one + "]}"),
         "0000"},
        {"a second sheet and a second block",
         R"({"sheets": [{"data": [{"rowData": []}, {"rowData": [{"values": [)" + one +
             R"(]}]}]}, {"data": [{"rowData": [{"values": [)" + one + "]}]}]}]}",
         "0000"},
        {"the same names elsewhere",
         R"({"other": {"sheets": [{"data": [{"rowData": [{"values": [)" + one +
             R"(]}]}]}]}, "values": [)" + one + R"(], "rowData": 1, "data": "x"})",
         "0000"},
        {"unknown members of a cell",
         in_rows(
             R"({"values": [{"note": "n", "effectiveValue": {"numberValue": 1, "numberValue2": "x"},
                 "userEnteredFormat": {"textFormat": {"type": "DATE"}}, "more": [{"a": [1]}]}]})"),
         "1000"},
        {"a value of another type than its name",
         in_rows(R"({"values": [{"effectiveValue": {"numberValue": "1"}}, )" + one + "]}"), "0100"},
        {"escapes in names",
         in_rows(R"({"values": [{"effective\u0056alue": {"numberV\u0061lue": 1}}]})"), "1000"},
    };
    const Range range{5, 3, 6, 4};
    for (const auto& c : cases)
        EXPECT_EQ(types_of(gsheet::parse_cells(c.text, range), range), c.types) << c.about;
}

TEST(CellReply, KeepsTextsWhole) {
    const std::string long_text(100'000, 'x');
    const gsheet::CellCache cells = gsheet::parse_cells(
        R"({"sheets": [{"data": [{"rowData": [{"values": [
            {"userEnteredValue": {"stringValue": "a\"\\\u00fc\ud83c\udf35\n"}},
            {"userEnteredValue": {"stringValue": ""}},
            {"userEnteredValue": {"stringValue": ")" +
            long_text + R"("}, "effectiveValue": {"stringValue": "other"}}]}]}]}]})",
        {0, 0, 0, 2});
    EXPECT_EQ(cells.text(cells.at(0, 0)), "a\"\\\u00fc\U0001F335\n");
    EXPECT_EQ(cells.text(cells.at(0, 1)), "");
    EXPECT_EQ(cells.at(0, 1).type(), cell_type::text);
    EXPECT_EQ(cells.text(cells.at(0, 2)), long_text);
}

TEST(CellReply, RefusesWhatIsNoReply) {
    std::string deep = "{\"a\":";
    for (int level = 0; level < 100'000; ++level)
        deep += "[";
    for (const std::string& text :
         {std::string(), std::string("[]"), std::string("5"), std::string("\"text\""),
          std::string("null"), std::string("{\"sheets\": [{"), std::string("{} {}"),
          std::string("{\"a\": \"\\ud800\"}"), deep}) {
        EXPECT_THROW(gsheet::parse_cells(text, {0, 0, 1, 1}), foundation::json::ParseError) << text;
        EXPECT_THROW(gsheet::count_values(text), foundation::json::ParseError);
    }
    EXPECT_NO_THROW(gsheet::parse_cells(" {} \n", {0, 0, 1, 1}));
}

TEST(CountValues, CountsTheElementsOfTheRoot) {
    const struct {
        const char* text;
        std::size_t count;
    } cases[] = {
        {"{}", 0},
        {R"({"values": []})", 0},
        {R"({"values": [[1, 2], [], 3, "x", true, null, {"values": [1]}]})", 7},
        {R"({"a": {"values": [1, 2]}, "values": [1]})", 1},
        {R"({"values": {"a": 1, "b": 2}})", 0},
        {R"({"values": 5, "other": [1, 2]})", 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(gsheet::count_values(c.text), c.count) << c.text;
}

} // namespace
} // namespace spreadsheet
