// SPDX-License-Identifier: Apache-2.0
//
// Reading sheets of a spreadsheet application: areas, types, values, the calls that it takes.
#include <cmath>
#include <limits>

#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/com/date_formats.h"
#include "tests/spreadsheet/com/com_fixture.h"

namespace spreadsheet {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr auto kEmpty = cell_type::empty;
constexpr auto kNumber = cell_type::number;
constexpr auto kText = cell_type::text;
constexpr auto kDate = cell_type::date;
constexpr auto kBoolean = cell_type::boolean;
constexpr auto kOther = cell_type::other;
constexpr auto kError = cell_type::error;

Variant error_value(unsigned code) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ERROR;
    value.scode = static_cast<SCODE>(code);
    return Variant::adopt(value);
}

Variant money(LONGLONG ten_thousandths) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_CY;
    value.cyVal.int64 = ten_thousandths;
    return Variant::adopt(value);
}

class ComSheetRead : public ComTest {
  protected:
    std::shared_ptr<ISheet> sheet() {
        if (!book) book = open();
        return book->sheet(0);
    }
    void TearDown() override {
        book.reset();
        ComTest::TearDown();
    }
    void put(int row, int column, Variant value, const char16_t* format = u"General") {
        model().at(row, column).value = std::move(value);
        model().at(row, column).format = format;
    }
    std::shared_ptr<IBook> book;
};

/// Cells, and what each kind of read gives for them.
struct CellCase {
    Variant value;
    const char16_t* format;
    cell_type type;
    double number; ///< from Value2
    double date;
    bool boolean;
    const char16_t* text;
};

std::vector<CellCase> cell_cases() {
    std::vector<CellCase> cases;
    const auto add = [&](Variant value, const char16_t* format, cell_type type, double number,
                         double date, bool boolean, const char16_t* text) {
        cases.push_back({std::move(value), format, type, number, date, boolean, text});
    };
    add({}, u"General", kEmpty, kNaN, kNaN, false, u"");
    add(Variant::number(0.1), u"General", kNumber, 0.1, 0.1, false, u"0.1");
    add(Variant::number(1e21), u"0.00", kNumber, 1e21, 1e21, false, u"1e+21");
    add(Variant::number(45352.25), u"dd/mm/yyyy", kDate, 45352.25, 45352.25, false, u"45352.25");
    add(Variant::number(0.5), u"h:mm", kNumber, 0.5, 0.5, false, u"0.5");
    add(Variant::number(1.0), u"h:mm", kDate, 1.0, 1.0, false, u"1");
    add(Variant::number(7.0), u"[Red]0\"days\"", kNumber, 7.0, 7.0, false, u"7");
    add(Variant::date(45352.5), u"yyyy", kDate, 45352.5, 45352.5, false, u"45352.5");
    add(Variant::text(u"caf\u00e9"), u"@", kText, kNaN, kNaN, false, u"caf\u00e9");
    add(Variant::boolean(true), u"General", kBoolean, kNaN, kNaN, true, u"TRUE");
    add(Variant::boolean(false), u"General", kBoolean, kNaN, kNaN, false, u"FALSE");
    add(money(12345), u"0.00", kOther, 1.2345, 1.2345, false, u"1.2345");
    add(Variant::null(), u"General", kOther, kNaN, kNaN, false, u"");
    const std::pair<unsigned, const char16_t*> errors[] = {
        {2000, u"#NULL!"}, {2007, u"#DIV/0!"}, {2015, u"#VALUE!"}, {2023, u"#REF!"},
        {2029, u"#NAME?"}, {2036, u"#NUM!"},   {2042, u"#N/A"},    {2043, u"#GETTING_DATA"},
        {1999, u""},       {2008, u""}};
    for (const auto& [number, text] : errors)
        add(error_value(0x800a0000u + number), u"General", kError, kNaN, kNaN, false, text);
    add(error_value(0x80020004u), u"General", kError, kNaN, kNaN, false, u""); // left out
    return cases;
}

bool same(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

TEST_F(ComSheetRead, ConvertsEveryKindOfCell) {
    const auto cases = cell_cases();
    const int count = static_cast<int>(cases.size());
    for (int row = 0; row < count; ++row) {
        const CellCase& cell = cases[static_cast<std::size_t>(row)];
        put(row, 0, Variant::copy_of(cell.value.get()), cell.format);
    }
    // The whole column, and each cell as a range of its own.
    for (int first = -1; first < count; ++first) {
        const Range range = first < 0 ? Range{0, 0, count - 1, 0} : Range{first, 0, first, 0};
        const auto cells = static_cast<std::size_t>(range.count());
        const auto types = sheet()->cell_types(range);
        std::vector<double> numbers(cells);
        std::vector<double> raw(cells);
        std::vector<SerialDatenum> dates(cells);
        std::vector<unsigned char> bytes(cells);
        const std::unique_ptr<bool[]> booleans(new bool[cells]);
        std::vector<std::u16string> texts;
        sheet()->read(range, numbers.data());
        sheet()->readDatesAsDoubles(range, raw.data());
        sheet()->read(range, dates.data());
        sheet()->read(range, bytes.data());
        sheet()->read(range, booleans.get());
        const StringBuilder builder{
            &texts, [](void* context, const std::u16string& text) {
                static_cast<std::vector<std::u16string>*>(context)->push_back(text);
            }};
        sheet()->read(range, builder);
        ASSERT_EQ(texts.size(), cells);
        for (std::size_t index = 0; index < cells; ++index) {
            const std::size_t row = first < 0 ? index : static_cast<std::size_t>(first);
            const CellCase& expected = cases[row];
            EXPECT_EQ(types[index], expected.type) << row;
            EXPECT_TRUE(same(numbers[index], expected.number)) << row << " " << numbers[index];
            EXPECT_TRUE(same(raw[index], expected.number)) << row;
            EXPECT_TRUE(same(dates[index].value, expected.date)) << row;
            EXPECT_EQ(bytes[index], expected.boolean ? 1 : 0) << row;
            EXPECT_EQ(booleans[index], expected.boolean) << row;
            EXPECT_EQ(texts[index], expected.text) << row;
        }
    }
}

/// Writes down what a builder receives.
struct Received {
    std::string log;
    CellBuilder builder() {
        return {this,
                [](void* self, const std::u16string& text) {
                    static_cast<Received*>(self)->log +=
                        "t" + std::string(text.begin(), text.end()) + " ";
                },
                [](void* self, double value) { static_cast<Received*>(self)->add("n", value); },
                [](void* self, double value) { static_cast<Received*>(self)->add("d", value); },
                [](void* self, bool value) {
                    static_cast<Received*>(self)->log += value ? "true " : "false ";
                }};
    }
    void add(const char* kind, double value) {
        log += kind + std::to_string(std::lround(value * 10)) + " ";
    }
};

TEST_F(ComSheetRead, DeliversCellsAsTheTypesAskedForColumnByColumn) {
    file->date_1904 = true;
    put(0, 0, Variant::number(1.5));
    put(1, 0, Variant::date(45352));
    put(0, 1, Variant::text(u"x"));
    put(1, 1, Variant::boolean(true));
    const Range range{0, 0, 1, 1};
    const std::pair<std::vector<cell_type>, const char*> kCases[] = {
        {{kNumber, kDate, kText, kBoolean}, "n15 d453520 tx true "},
        // A raw serial date of a 1904 book is 1462 days later in the 1900 system.
        {{kDate, kNumber, kBoolean, kText}, "d14635 n438900 false tTRUE "},
        {{kText, kText, kError, kOther}, "t1.5 t43890 t t "}};
    for (const auto& [types, log] : kCases) {
        Received received;
        sheet()->read(range, types.data(), received.builder());
        EXPECT_EQ(received.log, log);
    }
}

TEST_F(ComSheetRead, ShiftsRawDatesOfThe1904SystemOnly) {
    put(0, 0, Variant::number(100.0), u"yyyy");
    put(1, 0, Variant::date(45352.0), u"yyyy");
    for (const bool date_1904 : {false, true}) {
        file->date_1904 = date_1904;
        SerialDatenum dates[2];
        double raw[2];
        sheet()->read(Range{0, 0, 1, 0}, dates);
        sheet()->readDatesAsDoubles(Range{0, 0, 1, 0}, raw);
        const double offset = date_1904 ? 1462.0 : 0.0;
        EXPECT_EQ(dates[0].value, 100.0 + offset);
        EXPECT_EQ(dates[1].value, 45352.0);
        EXPECT_EQ(raw[1], 45352.0 - offset);
    }
}

TEST_F(ComSheetRead, KnowsDatesByTheLettersOfTheUser) {
    const char16_t* const letters[] = {u"J", u"M", u"T", u"h", u"m", u"s"};
    for (std::size_t index = 0; index < 6; ++index)
        script.international[18 + index] = letters[index];
    script.international[24] = u"other";
    script.international[25] = u"Standard hT";
    const std::pair<const char16_t*, cell_type> kFormats[] = {{u"MM", kDate},
                                                              {u"hh", kDate},
                                                              {u"Standard hT", kNumber},
                                                              {u"dd.yyyy", kNumber},
                                                              {u"0 \"Tage\"", kNumber},
                                                              {u"[$-T]0", kNumber},
                                                              {u"\"T\"T", kDate},
                                                              {u"[Rot]JJ", kDate},
                                                              {u"#,##0", kNumber},
                                                              {u"mm", kDate},
                                                              {u"ss", kDate}};
    int row = 0;
    for (const auto& [format, type] : kFormats)
        put(row++, 0, Variant::number(40.0), format);
    row = 0;
    for (const auto& [format, type] : kFormats) {
        EXPECT_EQ(sheet()->cell_types(Range{row, 0, row, 0})[0], type) << row;
        ++row;
    }
    EXPECT_EQ(sheet()->cell_types(Range{0, 0, 8, 0})[3], kNumber) << "mixed formats";
}

TEST(DateFormats, DoNotTakeTheNameOfTheGeneralFormatForADate) {
    const DateFormats dutch(u"Standaard", u"jmdums");
    EXPECT_FALSE(dutch.is_date(Variant::text(u"Standaard").get()));
    EXPECT_TRUE(dutch.is_date(Variant::text(u"dd-mm-jjjj").get()));
    EXPECT_FALSE(dutch.is_date(Variant::null().get()));
}

TEST_F(ComSheetRead, AsksForTheFormatsOfMixedRangesSparingly) {
    constexpr int kRows = 512;
    for (int row = 0; row < kRows; ++row) {
        put(row, 0, Variant::number(row + 10.0), row == 300 ? u"yyyy" : u"0.0");
        put(row, 1, Variant::number(row + 10.0), u"d.m.yyyy");
        put(row, 2, Variant::number(0.5), row % 2 == 0 ? u"h:mm" : u"0.0"); // no dates, never asked
    }
    sheet();
    script.calls.clear();
    const auto types = sheet()->cell_types(Range{0, 0, kRows - 1, 2});
    for (int row = 0; row < kRows; ++row) {
        EXPECT_EQ(types[static_cast<std::size_t>(row)], row == 300 ? kDate : kNumber) << row;
        EXPECT_EQ(types[static_cast<std::size_t>(kRows + row)], kDate) << row;
        EXPECT_EQ(types[static_cast<std::size_t>(2 * kRows + row)], kNumber) << row;
    }
    EXPECT_LE(script.count("Worksheet.Cells get"), 4);
    EXPECT_LT(script.calls.size(), 60u);
}

TEST_F(ComSheetRead, TakesFourCallsForTypesAndValuesHoweverManyCells) {
    for (int column = 0; column < 20; ++column)
        for (int row = 0; row < 10'000; ++row)
            put(row, column, Variant::number(row + column), u"0");
    const Range range{0, 0, 9'999, 19};
    std::vector<double> numbers(static_cast<std::size_t>(range.count()));
    sheet();
    script.calls.clear();
    const auto types = sheet()->cell_types(range);
    sheet()->read(range, numbers.data());
    EXPECT_LE(script.calls.size(), 4u);
    EXPECT_EQ(numbers[10'000], 1.0) << "column after column";
    EXPECT_EQ(types.back(), kNumber);
    script.calls.clear();
    sheet()->write(range, numbers.data());
    EXPECT_LE(script.calls.size(), 2u);
}

TEST_F(ComSheetRead, SeesChangesSinceTheLastCall) {
    put(0, 0, Variant::number(1.0));
    double value = 0.0;
    sheet()->cell_types(Range{});
    put(0, 0, Variant::number(2.0));
    sheet()->read(Range{}, &value);
    EXPECT_EQ(value, 2.0);
    // The range object that is left for the read does not outlive a refusal.
    put(1, 1, Variant::number(3.0));
    sheet()->cell_types(Range{});
    script.fail_at = static_cast<int>(script.calls.size());
    sheet()->read(Range{}, &value);
    EXPECT_EQ(value, 2.0);
    sheet()->cell_types(Range{});
    sheet()->read(Range{1, 1, 1, 1}, &value);
    EXPECT_EQ(value, 3.0);
}

TEST_F(ComSheetRead, DeliversIrregularSelections) {
    for (int row = 0; row < 9; ++row)
        for (int column = 0; column < 5; ++column)
            put(row, column, Variant::number(row * 10 + column));
    put(7, 3, Variant::text(u"x"));
    const CellIterator cells({1, 2, 7, 7}, {3, 0, 1});
    std::vector<cell_type> types(cells.size());
    sheet();
    script.calls.clear();
    sheet()->cell_types(cells, types.data());
    EXPECT_EQ(script.count("Range.Value get"), 4) << "the gap is not read";
    EXPECT_EQ(types, (std::vector<cell_type>{kNumber, kNumber, kText, kNumber, kNumber, kNumber,
                                             kNumber, kNumber, kNumber}));
    types = {kNumber, kDate, kText, kNumber, kNumber, kText, kEmpty, kNumber, kNumber};
    CellTypeIterator typed({1, 2, 7, 7}, {3, 0, 1}, types.data(), types.size());
    output::CellArrayBuilder builder;
    sheet()->read_cell_array(typed, builder, false);
    const auto array = builder.take();
    const auto number = [&](std::size_t index) {
        return dynamic_cast<const foundation::ColumnMajorArray<double>&>(*array->data()[index])
            .data()[0];
    };
    EXPECT_EQ(number(0), 13.0);
    EXPECT_EQ(number(1), 23.0);
    EXPECT_EQ(number(3), 10.0);
    EXPECT_EQ(array->data()[6], nullptr);
    EXPECT_EQ(number(8), 71.0);
}

// --- Areas and names

TEST_F(ComSheetRead, ReportsItsUsedRange) {
    EXPECT_EQ(sheet()->used_range(), (Range{0, 0, -1, -1})) << "an empty sheet is not A1";
    put(0, 0, Variant::text(u"x"));
    EXPECT_EQ(sheet()->used_range(), (Range{0, 0, 0, 0}));
    put(4, 2, Variant::text(u"x"));
    EXPECT_EQ(sheet()->used_range(), (Range{0, 0, 4, 2}));
    model().cells.clear();
    model().used = Range{3, 3, 3, 3};
    EXPECT_EQ(sheet()->used_range(), (Range{3, 3, 3, 3})) << "only A1 is looked at";
    script.refused["Worksheet.UsedRange"] = scripted::kRefused;
    EXPECT_EQ(thrown_id([&] { sheet()->used_range(); }), 22);
    script.refused = {{"Range.Address", scripted::kRefused}};
    EXPECT_EQ(thrown_id([&] { sheet()->used_range(); }), 22);
}

TEST_F(ComSheetRead, FindsNamesOfTheSheetAndOfTheBook) {
    file->add_sheet(u"Other", 1)->workbook = file;
    model().names[u"Local"] = u"B2:C3";
    model().names[u"Both"] = u"A1";
    file->names[u"Both"] = {u"Data", u"D4"};
    file->names[u"Total"] = {u"Data", u"E5"};
    file->names[u"Elsewhere"] = {u"Other", u"A1"};
    file->names[u"Areas"] = {u"Data", u"A1:B2,D4"};
    EXPECT_EQ(sheet()->named_range(u"Local"), (Range{1, 1, 2, 2}));
    EXPECT_EQ(sheet()->named_range(u"Both"), (Range{}));
    EXPECT_EQ(sheet()->named_range(u"Total"), (Range{4, 4, 4, 4}));
    for (const char16_t* name : {u"None", u"Elsewhere", u"Areas"})
        EXPECT_EQ(thrown_id([&] { sheet()->named_range(name); }), 23);
    EXPECT_EQ(sheet_range(u"Total", 5, sheet(), book->format(), false, nullptr, nullptr),
              (Range{4, 4, 4, 4}));
}

// --- Failures

TEST_F(ComSheetRead, FailsWithTheErrorOfEachStep) {
    put(0, 0, Variant::number(2.0), u"yyyy");
    put(1, 0, Variant::number(2.0));
    const Range range{0, 0, 1, 0};
    double numbers[2];
    const auto types = [&] { sheet()->cell_types(range); };
    const auto read = [&] { sheet()->read(range, numbers); };
    const auto name = [&] { EXPECT_EQ(sheet()->name(), u""); };
    const struct {
        const char* member;
        std::function<void()> action;
        int id;
    } kCases[] = {{"Worksheet.Range", types, 22},    {"Range.Value", types, 18},
                  {"Range.NumberFormat", types, 18}, {"Worksheet.Cells", types, 18},
                  {"Worksheet.Range", read, 22},     {"Range.Value2", read, 18},
                  {"Worksheet.Name", name, -1}};
    for (const auto& expected : kCases) {
        sheet();
        script.refused = {{expected.member, scripted::kRefused}};
        EXPECT_EQ(thrown_id(expected.action), expected.id) << expected.member;
        script.refused.clear();
    }
    for (const Range beyond : {Range{0, 0, 1 << 20, 0}, Range{-1, 0, 0, 0}})
        EXPECT_EQ(thrown_id([&] { sheet()->read(beyond, numbers); }), 22);
    sheet()->read(Range{0, 0, -1, -1}, numbers);
}

TEST_F(ComSheetRead, FailsWithoutTheLettersOfDatesWhereTheyMatter) {
    put(0, 0, Variant::number(2.0), u"yyyy");
    put(1, 0, Variant::text(u"x"));
    script.refused["Application.International"] = scripted::kRefused;
    EXPECT_EQ(sheet()->cell_types(Range{1, 0, 1, 0})[0], kText);
    EXPECT_EQ(thrown_id([&] { sheet()->cell_types(Range{}); }), 18);
    script.refused["Application.International"] = E_OUTOFMEMORY;
    EXPECT_THROW(sheet()->cell_types(Range{}), std::bad_alloc);
    script.refused.clear();
    script.international.resize(20);
    EXPECT_EQ(thrown_id([&] { sheet()->cell_types(Range{}); }), 18);
}

TEST_F(ComSheetRead, RefusesRulesForMergedCells) {
    const auto column = MergedCellColumnRule::first;
    const auto row = MergedCellRowRule::first;
    const Range range;
    cell_type types[1];
    unsigned char bytes[1];
    bool booleans[1];
    SerialDatenum dates[1];
    double numbers[1];
    const StringBuilder texts{};
    CellTypeIterator cells({0, 0}, {0}, types, 1);
    output::CellArrayBuilder builder;
    const std::function<void()> kActions[] = {
        [&] { sheet()->cell_types(range, types, column, row); },
        [&] { sheet()->read(range, bytes, column, row); },
        [&] { sheet()->read(range, booleans, column, row); },
        [&] { sheet()->read(range, dates, column, row); },
        [&] { sheet()->read(range, numbers, column, row); },
        [&] { sheet()->read(range, texts, column, row); },
        [&] { sheet()->read_cell_array(cells, builder, false, column, row); },
        [&] { sheet()->readDatesAsDoubles(range, numbers, column, row); }};
    for (const auto& action : kActions)
        EXPECT_EQ(thrown_id(action), 40);
    EXPECT_EQ(thrown_id([&] { sheet()->prefetch(range, types); }), 51);
    EXPECT_EQ(sheet()->get_data_span(Range{1, 1, 2, 2}, column, row), (Range{1, 1, 2, 2}));
    EXPECT_TRUE(sheet()->get_merged_cells_vector().empty());
}

} // namespace
} // namespace spreadsheet
