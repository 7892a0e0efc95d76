// SPDX-License-Identifier: Apache-2.0
//
// The placeholder of an object sheet refuses everything, and the reading of replies takes odd ones.
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/gsheet/cell_reply.h"
#include "spreadsheet/gsheet/gsheet_chart_sheet.h"
#include "tests/spreadsheet/gsheet/scripted_service.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using GSheetChart = test::ScriptedService;

TEST_F(GSheetChart, RefusesEveryOperation) {
    const auto book = open(test::metadata(
        {R"({"properties": {"title": "Chart", "sheetId": 3, "sheetType": "OBJECT"}})"}));
    const auto sheet = book->sheet(std::size_t{0});
    const auto& chart = dynamic_cast<const GSheetChartSheet&>(*sheet);
    const MergedCellColumnRule columns{};
    const MergedCellRowRule rows{};
    const Range cell{0, 0, 0, 0};
    double* const numbers = nullptr;
    SerialDatenum* const dates = nullptr;
    bool* const booleans = nullptr;
    unsigned char* const bytes = nullptr;
    cell_type* const types = nullptr;
    output::CellArrayBuilder builder;
    CellTypeIterator selection({}, {}, nullptr, 0);
    const std::function<void()> actions[] = {
        [&] { (void)(chart == chart); },
        [&] { chart.get_sheet(); },
        [&] { sheet->name(u"x"); },
        [&] { sheet->name(); },
        [&] { sheet->hidden(sheet::hidden::visible); },
        [&] { sheet->hidden(); },
        [&] { sheet->is_protected(); },
        [&] { sheet->set_protected(true); },
        [&] { sheet->used_range(); },
        [&] { sheet->clear(Cell{}); },
        [&] { sheet->clear(cell); },
        [&] { sheet->named_range(u"x"); },
        [&] { sheet->cell_types(CellIterator({}, {}), types); },
        [&] { sheet->cell_types(cell, types, columns, rows); },
        [&] { sheet->cell_types(cell, types); },
        [&] { sheet->get_merged_cells_vector(); },
        [&] { sheet->get_omit_rows_vector(); },
        [&] { sheet->get_omit_vars_vector(); },
        [&] { sheet->reset_merged_cells_vector(); },
        [&] { sheet->reset_omit_vars_bool(); },
        [&] { sheet->set_return_empty_vars_bool(true); },
        [&] { sheet->typeCheck(0, 0); },
        [&] { sheet->read(cell, bytes, columns, rows); },
        [&] { sheet->read(cell, bytes); },
        [&] { sheet->read(cell, booleans, columns, rows); },
        [&] { sheet->read(cell, booleans); },
        [&] { sheet->read(cell, dates, columns, rows); },
        [&] { sheet->read(cell, dates); },
        [&] { sheet->read(cell, numbers, columns, rows); },
        [&] { sheet->read(cell, numbers); },
        [&] { sheet->read(cell, StringBuilder{}, columns, rows); },
        [&] { sheet->read(cell, StringBuilder{}); },
        [&] { sheet->read(cell, types, CellBuilder{}); },
        [&] { sheet->write(cell, bytes); },
        [&] { sheet->write(cell, booleans); },
        [&] { sheet->write(cell, dates); },
        [&] { sheet->write(cell, numbers); },
        [&] { sheet->write(cell, StringProvider{}); },
        [&] { sheet->write(cell, types, CellProvider{}, true); },
        [&] { sheet->auto_fit_column_widths(cell); },
        [&] { sheet->unmerge(cell); },
        [&] { sheet->is_range_writeable(cell); },
        [&] { sheet->get_data_span(cell, columns, rows); },
        [&] { sheet->get_types(types); },
        [&] { sheet->read_cell_array(selection, builder, true, columns, rows); },
        [&] { sheet->read_cell_array(selection, builder, true); },
        [&] { sheet->readDatesAsDoubles(cell, numbers, columns, rows); },
        [&] { sheet->readDatesAsDoubles(cell, numbers); },
        [&] { sheet->prefetch(cell, types); },
    };
    for (const auto& action : actions) {
        const std::size_t before = log_lines("gsheet/gsheet_chart_sheet").size();
        EXPECT_EQ(thrown_id(action), 31) << before;
        EXPECT_GT(log_lines("gsheet/gsheet_chart_sheet").size(), before);
    }
    EXPECT_EQ(book->get_sheet_name(0), u"Chart");
    EXPECT_TRUE(requests().empty());
}

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
