// SPDX-License-Identifier: Apache-2.0
//
// Changes of a sheet of the service against a script: what each sends and in which order, and what
// of it stays when a request fails.
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/gsheet/grid_plan.h"
#include "tests/spreadsheet/gsheet/scripted_service.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using gsheet::GridPlan;
using gsheet::GridSize;
using test::refusal;
using test::Sent;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// A host's cells, one behind the other.
struct Cells {
    struct Cell {
        cell_type type;
        double number = 0.0;
        std::u16string text{};
    };
    std::vector<Cell> cells;
    std::size_t next = 0;
    std::vector<cell_type> types{};

    const cell_type* all_types() {
        types.clear();
        for (const Cell& cell : cells)
            types.push_back(cell.type);
        return types.data();
    }
    static const Cell& take(void* context, cell_type type) {
        auto& self = *static_cast<Cells*>(context);
        const Cell& cell = self.cells.at(self.next++);
        const bool is_for_nothing = type == cell_type::empty;
        EXPECT_TRUE(is_for_nothing || cell.type == type);
        return cell;
    }
    CellProvider provider() {
        next = 0;
        return {this,
                [](void* context) { return take(context, cell_type::text).text; },
                [](void* context) { return take(context, cell_type::number).number; },
                [](void* context) { return SerialDatenum{take(context, cell_type::date).number}; },
                [](void* context) { return take(context, cell_type::boolean).number != 0.0; },
                [](void* context) { take(context, cell_type::empty); }};
    }
};

/// Three rows by three columns with everything that can be written.
Cells mixed_cells() {
    return {{{cell_type::date, 45352},
             {cell_type::date, 45353.5},
             {cell_type::text, 0, u"say \"ü\" \\ \x0001"},
             {cell_type::number, 0.1},
             {cell_type::number, kNaN},
             {cell_type::boolean, 1},
             {cell_type::empty},
             {cell_type::date, 1e21},
             {cell_type::error}}};
}

std::string batch(const std::string& name, const std::string& request) {
    return R"({"requests": [{")" + name + R"(": )" + request + "}]}";
}
Sent batch_request(const std::string& name, const std::string& request) {
    return {"POST", "/book:batchUpdate", batch(name, request)};
}
Sent append_request(const std::string& dimension, int length) {
    return batch_request("appendDimension", R"({"sheetId": 7, "dimension": ")" + dimension +
                                                R"(", "length": )" + std::to_string(length) + "}");
}

class GSheetWriting : public test::ScriptedService {
  protected:
    /// Writes one number into every cell of a range.
    static void write_numbers(ISheet& sheet, const Range& range, bool preserve_format = true) {
        Cells cells;
        cells.cells.assign(static_cast<std::size_t>(range.count()), {cell_type::number, 1.0});
        sheet.write(range, cells.all_types(), cells.provider(), preserve_format);
    }
};

TEST_F(GSheetWriting, ReplacesValuesAndFormats) {
    const auto sheet = open_sheet();
    Cells cells = mixed_cells();
    answer("{}");
    sheet->write({1, 2, 3, 4}, cells.all_types(), cells.provider(), false);
    EXPECT_EQ(cells.next, 9u);
    const std::string date = R"("userEnteredFormat": {"numberFormat": {"type": "DATE_TIME"}})";
    EXPECT_EQ(
        requests(),
        (std::vector<Sent>{batch_request(
            "updateCells",
            R"({"range": {"sheetId": 7, "startRowIndex": 1, "endRowIndex": 4, "startColumnIndex": 2,
                "endColumnIndex": 5}, "fields": "userEnteredFormat, userEnteredValue", "rows": [
                {"values": [{"userEnteredValue": {"numberValue": 45352}, )" +
                date + R"(}, {"userEnteredValue": {"numberValue": 0.1}}, {}]},
                {"values": [{"userEnteredValue": {"numberValue": 45353.5}, )" +
                date + R"(}, {}, {"userEnteredValue": {"numberValue": 1e21}, )" + date + R"(}]},
                {"values": [{"userEnteredValue": {"stringValue": "say \"ü\" \\ \u0001"}},
                            {"userEnteredValue": {"boolValue": true}}, {}]}]})")}));
}

TEST_F(GSheetWriting, KeepsFormatsAndGivesDatesTheirs) {
    const auto sheet = open_sheet();
    Cells cells = mixed_cells();
    answer({{"{}"}, {"{}"}});
    sheet->write({1, 2, 3, 4}, cells.all_types(), cells.provider(), true);
    const auto run = [](int first_row, int end_row, int column) {
        return R"({"repeatCell": {"range": {"sheetId": 7, "startRowIndex": )" +
               std::to_string(first_row) + R"(, "endRowIndex": )" + std::to_string(end_row) +
               R"(, "startColumnIndex": )" + std::to_string(column) + R"(, "endColumnIndex": )" +
               std::to_string(column + 1) +
               R"(}, "cell": {"userEnteredFormat": {"numberFormat": {"type": "DATE_TIME",
                   "pattern": "yyyy-mm-dd hh:mm:ss"}}}, "fields": "userEnteredFormat.numberFormat"}})";
    };
    EXPECT_EQ(requests(), (std::vector<Sent>{
                              {"PUT", "/book/values/'Data'!C2:E4?valueInputOption=USER_ENTERED",
                               R"({"range": "'Data'!C2:E4", "majorDimension": "COLUMNS", "values": [
                       [45352, 45353.5, "say \"ü\" \\ \u0001"], [0.1, "", true], ["", 1e21, ""]]})"},
                              {"POST", "/book:batchUpdate",
                               R"({"requests": [)" + run(1, 3, 2) + "," + run(2, 3, 4) + "]}"}}));
    answer("{}");
    write_numbers(*sheet, {0, 0, 0, 0});
    EXPECT_EQ(requests().size(), 1u) << "no dates, no formats";
}

TEST(PlanGrid, CutsAndGrows) {
    const int last = std::numeric_limits<int>::max();
    const struct {
        GridSize grid;
        Range target;
        int last_used_column;
        int id; ///< -1 when there is a plan
        GridSize cut, wanted;
    } cases[] = {
        {{1000, 26}, {0, 0, 999, 25}, -1, -1, {1000, 26}, {1000, 26}}, // it fits
        {{1000, 26}, {1999, 0, 1999, 0}, -1, -1, {1000, 26}, {2000, 26}},
        {{1000, 26}, {0, 30, 0, 30}, -1, -1, {1000, 26}, {1000, 31}},
        {{0, 0}, {0, 0, 0, 0}, -1, -1, {0, 0}, {1, 1}},
        // exactly full
        {{1000, 26}, {0, 0, 999'999, 9}, -1, -1, {1000, 10}, {1'000'000, 10}},
        {{10, 10}, {0, 0, 999'999, 9}, -1, -1, {10, 10}, {1'000'000, 10}},
        // fewer rows for more columns, or for as many as there are
        {{1'000'000, 10}, {0, 0, 0, 29}, -1, -1, {333'333, 10}, {333'333, 30}},
        {{1'000'001, 10}, {0, 0, 0, 9}, -1, -1, {1'000'000, 10}, {1'000'000, 10}},
        // fewer columns for more rows, as far as they are not in use
        {{1000, 10'000}, {0, 0, 4999, 0}, -1, -1, {1000, 2000}, {5000, 2000}},
        {{1000, 10'000}, {0, 0, 4999, 0}, 2000, -1, {1000, 2000}, {5000, 2000}},
        {{1000, 10'000}, {0, 0, 4999, 0}, 2001, 52, {}, {}},
        // too large, with and without a cut
        {{5, 5}, {0, 0, 3'999'999, 2}, -1, 52, {}, {}},
        {{1, 1}, {0, 0, 9'999'999, 1}, -1, 52, {}, {}},
        {{1'000'000, 10}, {900'000, 0, 900'000, 29}, -1, 52, {}, {}},
        {{1, 1}, {0, 0, 0, 18'278}, -1, 52, {}, {}},
        {{1, 1}, {0, 0, 0, 18'277}, -1, -1, {1, 1}, {1, 18'278}}, // as wide as can be
        {{1, 1}, {last, last, last, last}, -1, 52, {}, {}},
        {{1, 1}, {0, 0, last, 0}, -1, 52, {}, {}},
        // not a range, which is noticed first
        {{1, 1}, {-1, 0, 0, 0}, -1, 53, {}, {}},
        {{1, 1}, {0, -1, 0, 20'000}, -1, 53, {}, {}},
        {{1, 1}, {1, 0, 0, 0}, -1, 53, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        GridPlan plan;
        const auto used = [&] { return Range{0, 0, 0, c.last_used_column}; };
        EXPECT_EQ(thrown_id([&] { plan = gsheet::plan_grid(c.grid, c.target, used); }), c.id);
        EXPECT_EQ(plan, (GridPlan{c.cut, c.wanted}));
    }
}

TEST_F(GSheetWriting, FitsTheGridFirst) {
    const auto sheet = open_sheet(1'000'000, 10);
    answer({{"{}"}, {"{}"}, {"{}"}});
    write_numbers(*sheet, {0, 0, 0, 29});
    auto sent = requests();
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_EQ(sent[0],
              batch_request("deleteDimension",
                            R"({"range": {"sheetId": 7, "dimension": "ROWS", "startIndex": 333333,
                                "endIndex": 1000000}})"));
    EXPECT_EQ(sent[1], append_request("COLUMNS", 20));
    EXPECT_EQ(sent[2].method, "PUT");
    const std::string url = "https://sheets.googleapis.com/v4/spreadsheets/book:batchUpdate";
    EXPECT_TRUE(is_logged("Request URL for DeleteDimension request:" + url));
    EXPECT_TRUE(is_logged("Request URL for AppendDimension request:" + url));

    answer("{}");
    write_numbers(*sheet, {0, 0, 0, 29}); // the grid is known to be larger now
    EXPECT_EQ(requests().size(), 1u);
}

TEST_F(GSheetWriting, CutsColumnsBehindTheUsedOnes) {
    const auto sheet = open_sheet(1000, 10'000);
    answer({{R"({"values": [["a"]]})"}, {R"({"values": [["a"]]})"}, {"{}"}, {"{}"}, {"{}"}});
    write_numbers(*sheet, {0, 0, 4999, 0});
    const auto sent = requests();
    ASSERT_EQ(sent.size(), 5u);
    EXPECT_EQ(sent[2],
              batch_request("deleteDimension",
                            R"({"range": {"sheetId": 7, "dimension": "COLUMNS", "startIndex": 2000,
                                "endIndex": 10000}})"));
    EXPECT_EQ(sent[3], append_request("ROWS", 4000));
    EXPECT_EQ(sheet->used_range(), (Range{0, 0, 4999, 0})) << "what was written counts as used";
    Cells empty{{{cell_type::text, 0, u""}}};
    answer("{}");
    sheet->write({4999, 9, 4999, 9}, empty.all_types(), empty.provider(), false);
    EXPECT_EQ(sheet->used_range(), (Range{0, 0, 4999, 0})) << "an empty text does not";
    requests();
}

TEST_F(GSheetWriting, KnowsNoUsedColumnBehindTheGrid) {
    const auto sheet = open_sheet(1000, 10'000);
    std::string columns = "[1]";
    for (int column = 1; column <= 2000; ++column)
        columns += ",[1]";
    answer({{R"({"values": [)" + columns + "]}"}, {R"({"values": [[1]]})"}});
    EXPECT_EQ(sheet->used_range(), (Range{0, 0, 0, 2000}));
    answer({{"{}"}, {"{}"}, {"{}"}});
    write_numbers(*sheet, {0, 0, 4999, 0});
    EXPECT_EQ(sheet->used_range(), (Range{0, 0, 4999, 1999}));
    requests();
}

TEST_F(GSheetWriting, RefusesBeforeAnyRequest) {
    const auto sheet = open_sheet();
    const cell_type none[1] = {};
    const struct {
        Range range;
        int id;
    } cases[] = {{{0, 0, 0, 18'278}, 52}, {{-1, 0, 0, 0}, 53}, {{0, 0, 9'999'999, 1}, 52}};
    for (const auto& c : cases)
        for (const bool preserve_format : {false, true})
            EXPECT_EQ(thrown_id([&] { sheet->write(c.range, none, {}, preserve_format); }), c.id);
    for (const Range& range : {Range{-1, 0, 0, 0}, Range{0, 0, -1, -1}}) {
        EXPECT_EQ(thrown_id([&] { sheet->clear(range); }), 53);
        EXPECT_EQ(thrown_id([&] { sheet->unmerge(range); }), 53);
        EXPECT_EQ(thrown_id([&] { sheet->auto_fit_column_widths(range); }), 53);
        EXPECT_EQ(thrown_id([&] { sheet->is_range_writeable(range); }), 53);
    }
    EXPECT_TRUE(requests().empty());
}

TEST_F(GSheetWriting, KeepsCountOfTheGridWhenTheWriteFails) {
    const auto sheet = open_sheet(10, 5);
    answer({{"{}"}, refusal(500, "x")});
    EXPECT_EQ(thrown_id([&] { write_numbers(*sheet, {19, 0, 19, 0}); }), 47);
    EXPECT_EQ(requests().size(), 2u);
    answer({refusal(503, "x")});
    EXPECT_EQ(thrown_id([&] { write_numbers(*sheet, {29, 0, 29, 0}); }), 48);
    requests();
    answer({{"{}"}, {"{}"}, {"{}"}});
    write_numbers(*sheet, {29, 6, 29, 6});
    const auto sent = requests();
    EXPECT_EQ(sent[0], append_request("ROWS", 10));
    EXPECT_EQ(sent[1], append_request("COLUMNS", 2));
}

TEST_F(GSheetWriting, TakesTheProtectionOfTheWholeSheetAway) {
    const Sent question{"GET", "/book?ranges='Data'&fields=sheets.protectedRanges"};
    const auto sheet = open_sheet();
    answer({{R"({"sheets": [{"protectedRanges": [
                {"protectedRangeId": 1, "range": {"sheetId": 7}},
                {"protectedRangeId": 2, "range": {"sheetId": 7, "startRowIndex": 1}},
                {"protectedRangeId": 3, "range": {"sheetId": 7}, "warningOnly": true},
                {"protectedRangeId": 4, "range": {"sheetId": 7}, "namedRangeId": "n"}]}]})"},
            {"{}"}});
    sheet->set_protected(false);
    EXPECT_EQ(requests(), (std::vector<Sent>{
                              question,
                              {"POST", "/book:batchUpdate",
                               R"({"requests": [{"deleteProtectedRange": {"protectedRangeId": 1}},
                                   {"deleteProtectedRange": {"protectedRangeId": 3}}]})"}}));
    EXPECT_FALSE(sheet->is_protected());
    answer("{}");
    sheet->set_protected(false);
    EXPECT_EQ(requests(), (std::vector<Sent>{question})) << "nothing to take away";
}

TEST_F(GSheetWriting, TellsWhatIsWriteable) {
    const auto range = [](int first_row, int end_row, int first_column, int end_column) {
        return R"({"sheetId": 7, "startRowIndex": )" + std::to_string(first_row) +
               R"(, "endRowIndex": )" + std::to_string(end_row) + R"(, "startColumnIndex": )" +
               std::to_string(first_column) + R"(, "endColumnIndex": )" +
               std::to_string(end_column) + "}";
    };
    const auto entry = [](const std::string& where, const std::string& unprotected = "") {
        return R"({"range": )" + where + R"(, "unprotectedRanges": [)" + unprotected + "]}";
    };
    const std::string whole = R"({"sheetId": 7})";
    const struct {
        const char* about;
        std::string entries;
        bool expected;
    } cases[] = {
        // of rows 2 to 4, columns 1 to 3
        {"nothing protected", "", true},
        {"the whole sheet", entry(whole), false},
        {"elsewhere", entry(range(0, 2, 0, 9)) + "," + entry(range(2, 5, 4, 9)), true},
        {"one cell", entry(range(4, 5, 3, 4)), false},
        {"rows without end", entry(R"({"startRowIndex": 4})"), false},
        {"rows behind", entry(R"({"startRowIndex": 5})"), true},
        {"a hole of the same size", entry(whole, range(2, 5, 1, 4)), true},
        {"a hole too small", entry(whole, range(2, 5, 1, 3)), false},
        {"a hole of three parts",
         entry(whole, range(2, 4, 1, 3) + "," + range(4, 5, 1, 4) + "," + range(0, 4, 3, 9)), true},
        {"parts that leave the middle free",
         entry(whole, range(2, 3, 1, 4) + "," + range(4, 5, 1, 4) + "," + range(2, 5, 1, 2) + "," +
                          range(2, 5, 3, 4)),
         false},
        {"a hole in another protected range", entry(whole, range(2, 5, 1, 4)) + "," + entry(whole),
         false},
        {"no range given", R"({"protectedRangeId": 1})", false},
        {"a hole without bounds", entry(whole, whole), true},
    };
    const auto sheet = open_sheet();
    for (const auto& c : cases) {
        answer(R"({"sheets": [{"protectedRanges": [)" + c.entries + "]}]}");
        EXPECT_EQ(sheet->is_range_writeable({2, 1, 4, 3}), c.expected) << c.about;
        EXPECT_EQ(requests(),
                  (std::vector<Sent>{
                      {"GET", "/book?ranges='Data'!B3:D5&fields=sheets.protectedRanges"}}));
    }
}

} // namespace
} // namespace spreadsheet
