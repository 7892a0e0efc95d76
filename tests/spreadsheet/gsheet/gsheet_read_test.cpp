// SPDX-License-Identifier: Apache-2.0
//
// Reading a sheet of the service against a script: what is asked for and how often, what cells are,
// what each kind of read makes of them.
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/cell_iterator.h"
#include "tests/spreadsheet/gsheet/scripted_service.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using test::refusal;
using test::Reply;
using test::Sent;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Sent cells_request(const std::string& range) {
    return {"GET", "/book?ranges=" + range +
                       "&fields=sheets.data.rowData.values(userEnteredFormat/numberFormat,"
                       "userEnteredValue,effectiveValue,effectiveFormat/numberFormat)"};
}

std::string cells_reply(const std::string& rows) {
    return "{\n\"sheets\": [\n{\"data\": [{\"rowData\": [" + rows + "]}]}]}\n";
}

/// A further member of a cell with a number format; nothing for an empty type.
std::string format_member(const std::string& name, const std::string& type) {
    if (type.empty()) return "";
    return R"(, ")" + name + R"(": {"numberFormat": {"type": ")" + type + R"("}})";
}

std::string entered(const std::string& value, const std::string& format = "") {
    return R"({"userEnteredValue": )" + value + R"(, "effectiveValue": )" + value +
           format_member("userEnteredFormat", format) + format_member("effectiveFormat", format) +
           "}";
}

std::string computed(const std::string& value, const std::string& entered_format = "",
                     const std::string& shown_format = "") {
    return R"({"effectiveValue": )" + value + R"(, "userEnteredValue": {"formulaValue": "=1"})" +
           format_member("userEnteredFormat", entered_format) +
           format_member("effectiveFormat", shown_format) + "}";
}

/// Collects what a builder is given, one line for each cell.
struct Lines {
    std::vector<std::string> lines;

    static Lines& of(void* context) { return *static_cast<Lines*>(context); }
    static std::string narrow(const std::u16string& text) {
        return std::string(text.begin(), text.end());
    }
    StringBuilder texts() {
        return {this, [](void* context, const std::u16string& text) {
                    of(context).lines.push_back(narrow(text));
                }};
    }
    CellBuilder cells() {
        return {this,
                [](void* context, const std::u16string& text) {
                    of(context).lines.push_back("text " + narrow(text));
                },
                [](void* context, double value) {
                    of(context).lines.push_back("number " + std::to_string(value));
                },
                [](void* context, double value) {
                    of(context).lines.push_back("date " + std::to_string(value));
                },
                [](void* context, bool value) {
                    of(context).lines.push_back(value ? "boolean true" : "boolean false");
                }};
    }
};

class Output : public output::CellOutputBuilder {
  public:
    void begin(std::size_t rows, std::size_t columns) override {
        lines.push_back(std::to_string(rows) + " x " + std::to_string(columns));
    }
    void add_text(const std::u16string& value) override {
        lines.push_back("text " + Lines::narrow(value));
    }
    void add_number(double value) override { lines.push_back("number " + std::to_string(value)); }
    void add_date(double serial) override { lines.push_back("date " + std::to_string(serial)); }
    void add_boolean(bool value) override {
        lines.push_back(value ? "boolean true" : "boolean false");
    }
    void add_empty() override { lines.push_back("empty"); }
    std::vector<std::string> lines;
};

class GSheetReading : public test::ScriptedService {};

TEST_F(GSheetReading, DetectsTypesAndNumbers) {
    const char* const kHundred = R"({"numberValue": 100})";
    const struct {
        const char* about;
        std::string cell;
        cell_type type;
        double number; ///< as read(double*) gives it
    } cases[] = {
        {"nothing", "{}", cell_type::empty, kNaN},
        {"only a format", "{" + format_member("userEnteredFormat", "DATE").substr(2) + "}",
         cell_type::empty, kNaN},
        {"number", entered(R"({"numberValue": 1.5})"), cell_type::number, 1.5},
        {"percentage", entered(R"({"numberValue": 0.5})", "PERCENT"), cell_type::number, 0.5},
        {"date", entered(R"({"numberValue": 45352})", "DATE"), cell_type::date, 45352},
        {"time", entered(R"({"numberValue": 0.25})", "TIME"), cell_type::date, -0.75},
        {"both", entered(R"({"numberValue": 45352.5})", "DATE_TIME"), cell_type::date, 45352.5},
        {"entered by the other name", entered(R"({"numberValue": 1})", "DATETIME"),
         cell_type::number, 1},
        {"day 60", entered(R"({"numberValue": 60})", "DATE"), cell_type::date, 59},
        {"day 61", entered(R"({"numberValue": 61})", "DATE"), cell_type::date, 61},
        {"number 60", entered(R"({"numberValue": 60})"), cell_type::number, 60},
        {"text", entered(R"({"stringValue": "a"})"), cell_type::text, kNaN},
        {"boolean", entered(R"({"boolValue": true})"), cell_type::boolean, kNaN},
        {"computed number", computed(R"({"numberValue": 1})"), cell_type::number, 1},
        {"computed text", computed(R"({"stringValue": "1"})"), cell_type::text, kNaN},
        {"computed boolean", computed(R"({"boolValue": false})"), cell_type::boolean, kNaN},
        {"computed error", computed(R"({"errorValue": {"type": "N_A"}})"), cell_type::error, kNaN},
        {"an error wins over a text",
         R"({"userEnteredValue": {"stringValue": "x"}, "effectiveValue": {"errorValue": {}}})",
         cell_type::error, kNaN},
        {"computed nothing", R"({"userEnteredValue": {"formulaValue": "=A9"}})", cell_type::empty,
         kNaN},
        {"spilled from a formula elsewhere", R"({"effectiveValue": {"numberValue": 7}})",
         cell_type::number, 7},
        {"computed date", computed(kHundred, "DATE"), cell_type::date, 100},
        {"computed date by its shown format", computed(kHundred, "", "DATE"), cell_type::date, 100},
        {"computed date by the other name", computed(kHundred, "", "DATETIME"), cell_type::date,
         100},
        {"computed with date and time", computed(kHundred, "DATE_TIME"), cell_type::number, 100},
        {"the entered format comes before the shown one", computed(kHundred, "NUMBER", "DATE"),
         cell_type::number, 100},
        {"a double that is hard to read", entered(R"({"numberValue": 0.30000000000000004})"),
         cell_type::number, 0.1 + 0.2},
        {"a double that is harder", entered(R"({"numberValue": 1.7976931348623157e308})"),
         cell_type::number, std::numeric_limits<double>::max()},
        {"a large integer", entered(R"({"numberValue": 18446744073709551615})"), cell_type::number,
         18446744073709551616.0},
    };
    const auto sheet = open_sheet();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.about);
        answer(cells_reply(R"({"values": [)" + c.cell + "]}"));
        cell_type type{};
        sheet->cell_types(Range{0, 0, 0, 0}, &type);
        EXPECT_EQ(static_cast<int>(type), static_cast<int>(c.type));
        double number = -1;
        sheet->read({0, 0, 0, 0}, &number);
        if (std::isnan(c.number))
            EXPECT_TRUE(std::isnan(number)) << number;
        else
            EXPECT_EQ(number, c.number);
        SerialDatenum serial{-1};
        sheet->read({0, 0, 0, 0}, &serial);
        EXPECT_EQ(serial.value, c.type == cell_type::date ? c.number : 0.0);
        EXPECT_EQ(requests(), (std::vector<Sent>{cells_request("'Data'!A1")}));
    }
}

/// Two columns by five rows, ragged as the service sends them: 1, "ü", TRUE, empty, 2024-03-01 and
/// "a", 2.5, nothing, an error, FALSE.
const std::string kMixed = cells_reply(
    R"({"values": [)" + entered(R"({"numberValue": 1})") + "," +
    entered(R"({"stringValue": "a"})") + R"(]}, {"values": [)" +
    entered(R"({"stringValue": "u"})") + "," + entered(R"({"numberValue": 2.5})") +
    R"(]}, {"values": [)" + entered(R"({"boolValue": true})") + R"(]}, {"values": [{},)" +
    entered(R"({"errorValue": {"type": "N_A"}})") + R"(]}, {"values": [)" +
    entered(R"({"numberValue": 45352})", "DATE") + "," + entered(R"({"boolValue": false})") + "]}");
constexpr Range kMixedRange{2, 1, 6, 2};

TEST_F(GSheetReading, GoesColumnAfterColumnOverOneRequest) {
    const auto sheet = open_sheet();
    answer(kMixed);
    const auto types = sheet->cell_types(kMixedRange);
    const std::vector<cell_type> expected{cell_type::number, cell_type::text,  cell_type::boolean,
                                          cell_type::empty,  cell_type::date,  cell_type::text,
                                          cell_type::number, cell_type::empty, cell_type::error,
                                          cell_type::boolean};
    EXPECT_EQ(types, expected);

    std::vector<double> numbers(10);
    sheet->read(kMixedRange, numbers.data());
    EXPECT_EQ(numbers[0], 1);
    EXPECT_EQ(numbers[4], 45352);
    EXPECT_EQ(numbers[6], 2.5);
    EXPECT_TRUE(std::isnan(numbers[1]) && std::isnan(numbers[3]) && std::isnan(numbers[8]));
    std::vector<double> dates(10);
    sheet->readDatesAsDoubles(kMixedRange, dates.data());
    EXPECT_EQ(dates[4], 45352);
    unsigned char bytes[10];
    sheet->read(kMixedRange, bytes);
    EXPECT_EQ(std::string(bytes, bytes + 10), std::string("\0\0\1\0\0\0\0\0\0\0", 10));
    bool booleans[10];
    sheet->read(kMixedRange, booleans);
    EXPECT_TRUE(booleans[2]);
    EXPECT_FALSE(booleans[0] || booleans[9]);
    Lines texts;
    sheet->read(kMixedRange, texts.texts());
    EXPECT_EQ(texts.lines, (std::vector<std::string>{"1", "u", "TRUE", "", "45352", "a", "2.5", "",
                                                     "", "FALSE"}));
    Lines own;
    sheet->read(kMixedRange, types.data(), own.cells());
    EXPECT_EQ(own.lines,
              (std::vector<std::string>{"number 1.000000", "text u", "boolean true", "text ",
                                        "date 45352.000000", "text a", "number 2.500000", "text ",
                                        "text ", "boolean false"}));
    double part = 0;
    sheet->read({3, 2, 3, 2}, &part); // within what is there
    EXPECT_EQ(part, 2.5);
    EXPECT_EQ(requests(), (std::vector<Sent>{cells_request("'Data'!B3:C7")}));
}

TEST_F(GSheetReading, DeliversEveryCellAsAnyType) {
    const cell_type all[] = {cell_type::number,  cell_type::text,  cell_type::date,
                             cell_type::boolean, cell_type::other, cell_type::error,
                             cell_type::empty};
    const struct {
        std::string cell;
        std::vector<std::string> lines;
    } cases[] = {
        {entered(R"({"numberValue": 1e21})"),
         {"number 1000000000000000000000.000000", "text 1e+21",
          "date 1000000000000000000000.000000", "boolean false", "text ", "text ", "text "}},
        {entered(R"({"numberValue": 100000})"),
         {"number 100000.000000", "text 100000", "date 100000.000000", "boolean false", "text ",
          "text ", "text "}},
        {entered(R"({"numberValue": 45352.5})", "DATE_TIME"),
         {"number 45352.500000", "text 45352.5", "date 45352.500000", "boolean false", "text ",
          "text ", "text "}},
        {entered(R"({"stringValue": "5"})"),
         {"number nan", "text 5", "date nan", "boolean false", "text ", "text ", "text "}},
        {entered(R"({"boolValue": true})"),
         {"number nan", "text TRUE", "date nan", "boolean true", "text ", "text ", "text "}},
        {"{}", {"number nan", "text ", "date nan", "boolean false", "text ", "text ", "text "}},
    };
    const auto sheet = open_sheet();
    for (const auto& c : cases) {
        std::string row = c.cell;
        for (int copy = 1; copy < 7; ++copy)
            row += "," + c.cell;
        answer(cells_reply(R"({"values": [)" + row + "]}"));
        sheet->prefetch({0, 0, 0, 6}, nullptr);
        Lines got;
        sheet->read({0, 0, 0, 6}, all, got.cells());
        EXPECT_EQ(got.lines, c.lines) << c.cell;
    }
    EXPECT_EQ(requests().size(), std::size(cases));
}

TEST_F(GSheetReading, WalksSelections) {
    const auto sheet = open_sheet();
    answer(kMixed);
    const CellIterator cells({2, 2, 5, 6}, {2, 1});
    std::vector<cell_type> types(cells.size());
    sheet->cell_types(cells, types.data());
    EXPECT_EQ(types,
              (std::vector<cell_type>{cell_type::text, cell_type::error, cell_type::boolean,
                                      cell_type::number, cell_type::empty, cell_type::date}));
    CellTypeIterator wanted({2, 2, 5, 6}, {2, 1}, types.data(), types.size());
    for (const bool dates_as_numbers : {false, true}) {
        Output out;
        sheet->read_cell_array(wanted, out, dates_as_numbers);
        EXPECT_EQ(out.lines,
                  (std::vector<std::string>{
                      "3 x 2", "text a", "empty", "boolean false", "number 1.000000", "empty",
                      dates_as_numbers ? "number 45352.000000" : "date 45352.000000"}));
    }
    EXPECT_EQ(requests(), (std::vector<Sent>{cells_request("'Data'!B3:C7")}));
    const CellIterator none({}, {});
    sheet->cell_types(none, nullptr);
    CellTypeIterator no_types({}, {}, nullptr, 0);
    Output out;
    sheet->read_cell_array(no_types, out, false);
    EXPECT_EQ(out.lines, (std::vector<std::string>{"0 x 0"}));
    EXPECT_TRUE(requests().empty());
}

TEST_F(GSheetReading, FetchesAgainWhatItDoesNotHold) {
    const auto sheet = open_sheet();
    double value = 0;
    answer({{cells_reply("")}, {cells_reply("")}, {cells_reply("")}, {"{}"}});
    sheet->read({0, 0, 0, 0}, &value); // the first
    std::vector<double> values(2);
    sheet->read({0, 0, 1, 0}, values.data()); // larger
    sheet->read({0, 0, 0, 0}, &value);        // within
    cell_type type{};
    sheet->cell_types(Range{0, 0, 0, 0}, &type); // asks on purpose
    sheet->prefetch({0, 0, 0, 0}, &type);
    EXPECT_EQ(requests().size(), 4u);
    EXPECT_TRUE(std::isnan(value));
    EXPECT_EQ(type, cell_type::empty);
}

TEST_F(GSheetReading, KeepsCellsWhenAFetchFails) {
    const auto sheet = open_sheet();
    answer(kMixed);
    sheet->cell_types(kMixedRange);
    requests();
    const Reply failures[] = {refusal(404, "x"),
                              {"{\"sheets\": [", 200},
                              {"5", 200},
                              {"", 200},
                              {cells_reply(R"({"values": [}]})"), 200}};
    for (const Reply& failure : failures) {
        answer({failure});
        EXPECT_NE(thrown_id([&] { sheet->cell_types(Range{0, 0, 0, 0}); }), -1);
        EXPECT_EQ(requests().size(), 1u);
    }
    answer({{"", 0, true}});
    EXPECT_THROW(sheet->cell_types(Range{0, 0, 0, 0}),
                 foundation::http::HttpRequestTimeoutException);
    requests();
    double value = 0;
    sheet->read({3, 2, 3, 2}, &value);
    EXPECT_EQ(value, 2.5);
    EXPECT_TRUE(requests().empty());
}

TEST_F(GSheetReading, DropsCellsWithEveryChange) {
    const auto sheet = open_sheet();
    const cell_type no_value = cell_type::empty;
    const CellProvider nothing{nullptr, nullptr, nullptr, nullptr, nullptr, [](void*) {}};
    const std::function<void()> changes[] = {
        [&] {
            sheet->write({0, 0, 0, 0}, &no_value, nothing, false);
        },
        [&] {
            sheet->write({0, 0, 0, 0}, &no_value, nothing, true);
        },
        [&] {
            sheet->clear(Range{0, 0, 0, 0});
        },
        [&] {
            sheet->unmerge({0, 0, 0, 0});
        },
    };
    for (const auto& change : changes) {
        answer({{cells_reply("")}, {"{}"}, {cells_reply("")}});
        double value = 0;
        sheet->read({0, 0, 0, 0}, &value);
        change();
        sheet->read({0, 0, 0, 0}, &value);
        EXPECT_EQ(requests().size(), 3u);
        answer("{}");
        sheet->unmerge({0, 0, 0, 0});
        requests();
    }
}

TEST_F(GSheetReading, GuardsTheNumberOfRows) {
    const auto sheet = open_sheet();
    const Range too_long{0, 0, 500'001, 0};
    EXPECT_EQ(thrown_id([&] { sheet->prefetch(too_long, nullptr); }), 56);
    EXPECT_TRUE(is_logged("Read Request Row size exceeds : 500001"));
    const int last = std::numeric_limits<int>::max();
    const struct {
        Range range;
        int id;
    } cases[] = {
        {{0, 0, last, 0}, 56},
        {{-1, 0, 0, 0}, 53},
        {{0, -1, 0, 0}, 53},
        {{0, 0, 0, last}, 52},
        {{last, last, last, last}, 52},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrown_id([&] { sheet->prefetch(c.range, nullptr); }), c.id) << c.range.last_row;
    EXPECT_TRUE(requests().empty());
    sheet->prefetch({0, 0, -1, -1}, nullptr); // the used range of an empty sheet
    EXPECT_TRUE(requests().empty());
    answer("{}");
    sheet->prefetch({0, 0, 500'000, 0}, nullptr);
    EXPECT_EQ(requests(), (std::vector<Sent>{cells_request("'Data'!A1:A500001")}));
}

TEST_F(GSheetReading, RefusesMergedCellRulesAndOtherThings) {
    const auto sheet = open_sheet();
    const MergedCellColumnRule columns{};
    const MergedCellRowRule rows{};
    const Range cell{0, 0, 0, 0};
    cell_type type{};
    double number = 0;
    Lines lines;
    Output out;
    CellTypeIterator none({}, {}, nullptr, 0);
    const auto refuse = [&](const char* line, const std::function<void()>& action) {
        const std::size_t before = log_lines(line).size();
        EXPECT_EQ(thrown_id(action), 43);
        EXPECT_EQ(log_lines(line).size(), before + 1);
    };
    const char* const rules =
        "MergedCellColumnRule and MergedCellRowRule are not supported with Google Sheets.";
    const char* const variables =
        "Writing individaul variables is currently not a supported workflow.";
    const auto refuse_typed = [&](auto value) {
        refuse(rules, [&] { sheet->read(cell, &value, columns, rows); });
        refuse(variables, [&] { sheet->write(cell, &value); });
    };
    refuse_typed(number);
    refuse_typed(SerialDatenum());
    refuse_typed(false);
    refuse_typed(static_cast<unsigned char>(0));
    refuse(rules, [&] { sheet->cell_types(cell, &type, columns, rows); });
    refuse(rules, [&] { sheet->read(cell, lines.texts(), columns, rows); });
    refuse(rules, [&] { sheet->read_cell_array(none, out, false, columns, rows); });
    refuse(rules, [&] { sheet->readDatesAsDoubles(cell, &number, columns, rows); });
    refuse(variables, [&] { sheet->write(cell, StringProvider{}); });
    EXPECT_EQ(sheet->typeCheck(0, 0), cell_type::error);
    EXPECT_TRUE(is_logged("typeCheck method should never be called"));
    sheet->hidden(sheet::hidden::hidden);
    EXPECT_EQ(sheet->hidden(), sheet::hidden::visible);
    sheet->clear(Cell{0, 0});
    EXPECT_TRUE(requests().empty());
}

} // namespace
} // namespace spreadsheet
