// SPDX-License-Identifier: Apache-2.0
//
// What a sheet of the service tells of itself: the used range, named ranges, what the metadata
// hold.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/gsheet/grid_range.h"
#include "tests/spreadsheet/gsheet/scripted_service.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using test::refusal;
using test::Sent;

using GSheetRanges = test::ScriptedService;

TEST_F(GSheetRanges, AsksForTheUsedRangeOnce) {
    const auto sheet = open_sheet();
    const std::vector<Sent> both{
        {"GET", "/book/values/'Data'?fields=values&majorDimension=COLUMNS"},
        {"GET", "/book/values/'Data'?fields=values&majorDimension=ROWS"}};
    answer({{"{}"}, {"{}"}});
    EXPECT_EQ(sheet->used_range(), (Range{0, 0, -1, -1}));
    EXPECT_EQ(requests(), both);
    answer({{R"({"values": [["a", "b"], [], ["c"]]})"}, {"{}"}});
    EXPECT_EQ(sheet->used_range(), (Range{0, 0, -1, 2}));
    EXPECT_EQ(requests(), both);
    answer({{R"({"values": [["a", "b"], [], ["c"]]})"},
            {R"({"range": "x", "values": [["a", null, "c"], ["b"]]})"}});
    EXPECT_EQ(sheet->used_range(), (Range{0, 0, 1, 2}));
    EXPECT_EQ(requests(), both);
    EXPECT_EQ(sheet->used_range(), (Range{0, 0, 1, 2}));
    EXPECT_EQ(
        sheet->get_data_span({5, 5, 5, 5}, MergedCellColumnRule::omit, MergedCellRowRule::omit),
        (Range{0, 0, 1, 2}));
    EXPECT_TRUE(requests().empty());
}

TEST_F(GSheetRanges, FindsNamedRanges) {
    const auto entry = [](const std::string& name, const std::string& range) {
        return R"({"namedRangeId": "5", "name": ")" + name + R"(", "range": {)" + range + "}}";
    };
    const std::string seven = R"("sheetId": 7)";
    const std::string corner =
        R"(, "startRowIndex": 1, "endRowIndex": 4, "startColumnIndex": 1, "endColumnIndex": 4)";
    const std::string far = R"(, "startRowIndex": -9999999999, "endRowIndex": 9999999999)";
    const struct {
        const char* about;
        std::string entries;
        int id;
        Range range;
    } cases[] = {
        {"a block", entry("Sales", seven + corner), -1, {1, 1, 3, 3}},
        {"among others",
         entry("X", seven) + "," + entry("sALES", seven + corner),
         -1,
         {1, 1, 3, 3}},
        {"columns",
         entry("Sales", seven + R"(, "startColumnIndex": 2, "endColumnIndex": 3)"),
         -1,
         {0, 2, 999, 2}},
        {"the whole sheet", entry("Sales", seven), -1, {0, 0, 999, 25}},
        {"out of all bounds", entry("Sales", seven + far), -1, {0, 0, 999, 25}},
        {"absent", entry("Other", seven + corner), 23, {}},
        {"none at all", "", 23, {}},
        {"on another sheet", entry("Sales", R"("sheetId": 8)" + corner), 23, {}},
        {"on the sheet with the identifier 0", entry("Sales", corner.substr(2)), 23, {}},
        {"upside down",
         entry("Sales", seven + R"(, "startRowIndex": 5, "endRowIndex": 5)"),
         23,
         {}},
    };
    const auto sheet = open_sheet();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.about);
        answer(R"({"namedRanges": [)" + c.entries + "]}");
        Range range;
        EXPECT_EQ(thrown_id([&] { range = sheet->named_range(u"Sales"); }), c.id);
        EXPECT_EQ(range, c.range);
        EXPECT_EQ(requests(),
                  (std::vector<Sent>{{"GET", "/book?ranges=Sales&fields=namedRanges"}}));
    }
    answer(
        {refusal(400, "Unable to parse range: Sales"),
         {R"({"error": {"status": "INVALID_ARGUMENT", "details": [{"reason": "API_KEY_INVALID"}]}})",
          400},
         refusal(400, "Request contains an invalid argument."),
         refusal(404, "Unable to parse range: Sales")});
    for (const int id : {23, 47, 47, 42})
        EXPECT_EQ(thrown_id([&] { sheet->named_range(u"Sales"); }), id);
    requests();
}

TEST(GridRange, IsCoveredByManyPartsInReasonableTime) {
    // Every second column and every second row: what is left are a million single cells.
    constexpr std::int64_t kCount = 2000;
    const gsheet::GridRange whole{0, kCount, 0, kCount};
    std::vector<gsheet::GridRange> parts;
    for (std::int64_t at = 0; at < kCount; at += 2) {
        parts.push_back({0, kCount, at, at + 1});
        parts.push_back({at, at + 1, 0, kCount});
    }
    EXPECT_FALSE(gsheet::is_covered(whole, parts));
    EXPECT_TRUE(gsheet::is_covered({4, 5, 0, kCount}, parts));
    EXPECT_FALSE(gsheet::is_covered({4, 6, 6, 8}, parts));
    for (std::int64_t at = 1; at < kCount; at += 2)
        parts.push_back({at, at + 1, 0, kCount});
    EXPECT_TRUE(gsheet::is_covered(whole, parts));
    parts.pop_back();
    EXPECT_FALSE(gsheet::is_covered(whole, parts)) << "the last row";
}

TEST_F(GSheetRanges, TellsOfTheSheetWithoutARequest) {
    const auto book = open(test::metadata(
        {R"({"properties": {"title": "Shown", "sheetId": 0, "sheetType": "GRID"}})",
         R"({"properties": {"title": "Hidden", "sheetId": 1, "sheetType": "GRID", "hidden": true},
             "protectedRanges": [{"protectedRangeId": 1, "range": {"sheetId": 1, "startRowIndex": 1}}]})",
         R"({"properties": {"title": "Protected", "sheetId": 2, "sheetType": "GRID"},
             "protectedRanges": [{"protectedRangeId": 2, "range": {"sheetId": 2}}]})",
         R"({"properties": {"title": "Named", "sheetId": 3, "sheetType": "GRID"},
             "protectedRanges": [{"protectedRangeId": 3, "namedRangeId": "n"}]})"}));
    const sheet::hidden hidden[] = {sheet::hidden::visible, sheet::hidden::hidden,
                                    sheet::hidden::visible, sheet::hidden::visible};
    const bool is_protected[] = {false, false, true, false};
    for (std::size_t index = 0; index < 4; ++index) {
        EXPECT_EQ(book->sheet(index)->hidden(), hidden[index]) << index;
        EXPECT_EQ(book->sheet(index)->is_protected(), is_protected[index]) << index;
    }
    EXPECT_TRUE(requests().empty());
}

} // namespace
} // namespace spreadsheet
