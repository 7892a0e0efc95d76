// SPDX-License-Identifier: Apache-2.0
//
// Ranges as tables and back, over new books in memory and two fixtures.
#include <cmath>
#include <initializer_list>
#include <variant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/unicode.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/table.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using testing::ElementsAre;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

using Value = std::variant<std::monostate, double, const char16_t*, bool, SerialDatenum>;
using Rows = std::initializer_list<std::initializer_list<Value>>;
constexpr std::monostate none;

std::shared_ptr<IBook> book_of(const Rows& rows, book::format format = book::format::XLSX) {
    auto book = create_new_book(1, format, book::interactive::file, u"");
    const auto sheet = book->sheet(std::size_t{0});
    int row = 0;
    for (const auto& cells : rows) {
        int column = 0;
        for (const Value& value : cells) {
            const Range cell{row, column, row, column};
            if (const auto* number = std::get_if<double>(&value)) sheet->write(cell, number);
            if (const auto* flag = std::get_if<bool>(&value)) sheet->write(cell, flag);
            if (const auto* date = std::get_if<SerialDatenum>(&value)) sheet->write(cell, date);
            if (const auto* text = std::get_if<const char16_t*>(&value))
                sheet->write(cell, {const_cast<char16_t*>(*text), [](void* context) {
                                        return std::u16string(static_cast<char16_t*>(context));
                                    }});
            ++column;
        }
        ++row;
    }
    return book;
}

Table table_of(const Rows& rows, const TableOptions& options = {}) {
    return read_table(book_of(rows), "", "", options);
}

/// A column in short: type, values, "-" where one is missing.
std::string text_of(const Column& column, std::size_t rows) {
    static constexpr std::array names{"number", "boolean", "date", "text", "mixed"};
    std::string text = names[static_cast<std::size_t>(column.type)];
    const auto string = [&](std::size_t row) {
        return std::string(column.strings[static_cast<std::size_t>(column.codes[row])]);
    };
    const auto number = [](double value) {
        std::array<char, 32> buffer{};
        return std::string(buffer.data(),
                           std::to_chars(buffer.data(), buffer.data() + 32, value).ptr);
    };
    std::size_t missing = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        text += ' ';
        if (!column.has_value(row)) {
            text += '-';
            ++missing;
            // What a host sees that does not look at the bitmap.
            EXPECT_TRUE(column.numbers.empty() || std::isnan(column.numbers[row]));
            EXPECT_TRUE(column.codes.empty() || column.codes[row] == kMissingText);
            EXPECT_TRUE(column.booleans.empty() || column.booleans[row] == 0);
            EXPECT_TRUE(column.microseconds.empty() || column.microseconds[row] == kMissingDate);
        } else if (column.type == ColumnType::number) {
            text += number(column.numbers[row]);
        } else if (column.type == ColumnType::boolean) {
            text += column.booleans[row] != 0 ? "true" : "false";
        } else if (column.type == ColumnType::date) {
            text += iso_text_from_microseconds(column.microseconds[row]);
        } else if (column.type == ColumnType::text || column.codes[row] != kMissingText) {
            text += string(row);
            EXPECT_TRUE(column.numbers.empty() || std::isnan(column.numbers[row]));
        } else {
            text += std::to_string(static_cast<int>(column.kinds[row])) + ':' +
                    number(column.numbers[row]);
        }
    }
    EXPECT_EQ(column.null_count, missing);
    return text;
}

std::vector<std::string> texts_of(const Table& table) {
    std::vector<std::string> texts;
    for (const Column& column : table.columns)
        texts.push_back(column.name + ": " + text_of(column, table.rows));
    return texts;
}

constexpr SerialDatenum kDay{45352.0}; // 2024-03-01

TEST(ReadTable, GivesAColumnTheTypeThatAllItsValuesHave) {
    const Table table = table_of({{u"n", u"b", u"d", u"t", u"m", u"nothing"},
                                  {1.5, true, kDay, u"x", 1.0, none},
                                  {none, none, none, none, none, none},
                                  {-2.0, false, SerialDatenum{45352.25}, u"y", u"1", none},
                                  {3.0, true, kDay, u"x", true, none},
                                  {4.0, true, kDay, u"x", kDay, none},
                                  {5.0, true, kDay, u"x", false, none},
                                  {6.0, true, kDay, u"x", none, none},
                                  {7.0, true, kDay, u"x", none, none},
                                  {8.0, true, kDay, u"z", none, none}});
    EXPECT_THAT(texts_of(table),
                ElementsAre("n: number 1.5 - -2 3 4 5 6 7 8",
                            "b: boolean true - false true true true true true true",
                            "d: date 2024-03-01 - 2024-03-01T06:00:00 2024-03-01 2024-03-01 "
                            "2024-03-01 2024-03-01 2024-03-01 2024-03-01",
                            "t: text x - y x x x x x z", "m: mixed 1:1 - 1 4:1 3:45352 4:0 - - -",
                            "nothing: number - - - - - - - - -"));
    EXPECT_EQ(table.range, (Range{0, 0, 9, 5}));
    EXPECT_THAT(table.columns[3].codes, ElementsAre(0, -1, 1, 0, 0, 0, 0, 0, 2));
    EXPECT_THAT(table.columns[0].validity, ElementsAre(0xFD, 0x01));
    EXPECT_TRUE(table.coerced.empty());
}

TEST(ReadTable, FollowsItsOptions) {
    const Rows rows{{u"title", none, none, none},
                    {u"a", u"a", none, 7.0},
                    {1.0, none, none, u"NA"},
                    {none, none, none, none},
                    {-999.0, none, none, 2.0}};
    TableOptions options;
    options.header_row = 1;
    EXPECT_THAT(texts_of(table_of(rows, options)),
                ElementsAre("a: number 1 - -999", "a.1: number - - -", "column3: number - - -",
                            "7: mixed NA - 1:2"));
    options.missing = {"NA", "-999"};
    options.drop_blank_rows = true;
    EXPECT_THAT(
        texts_of(table_of(rows, options)),
        ElementsAre("a: number 1 -", "a.1: number - -", "column3: number - -", "7: number - 2"));
    options.drop_blank_columns = true;
    EXPECT_THAT(texts_of(table_of(rows, options)), ElementsAre("a: number 1 -", "7: number - 2"));
    options = {};
    options.header_row = kNoHeader;
    EXPECT_EQ(texts_of(table_of(rows, options))[3], "column4: mixed - 1:7 NA - 1:2");
    options.header_row = 5;
    EXPECT_EQ(thrown_id([&] { table_of(rows, options); }), 12);
    options = {};
    options.max_cells = 20;
    EXPECT_EQ(table_of(rows, options).rows, 4U);
    options.max_cells = 19;
    EXPECT_EQ(failure_of_thrown([&] { table_of(rows, options); }).kind, FailureKind::Limit);
    options = {};
    options.interrupt = {nullptr, [](void*) { return true; }};
    EXPECT_EQ(thrown_id([&] { table_of(rows, options); }), 18);
}

TEST(ReadTable, ConvertsToTheTypeAskedForAndReportsIt) {
    const Rows rows{{u"v"},     {u" 12.5 "}, {true},  {kDay},  {u"2024-03-01 13:05"},
                    {u"False"}, {0.0},       {u"12"}, {-1e300}};
    const struct {
        ColumnType type;
        const char* values;
        std::size_t converted, not_convertible;
    } cases[]{
        {ColumnType::number, "v: number 12.5 1 45352 - - 0 12 -1e+300", 4, 2},
        {ColumnType::boolean, "v: boolean - true - - false false - -", 2, 5},
        {ColumnType::date, "v: date - - 2024-03-01 2024-03-01T13:05:00 - 1899-12-31 - -", 2, 5},
        {ColumnType::text, "v: text  12.5  true 2024-03-01 2024-03-01 13:05 False 0 12 -1e+300", 4,
         0},
    };
    for (const auto& one : cases) {
        TableOptions options;
        options.types = {{"v", one.type}};
        const Table table = table_of(rows, options);
        EXPECT_THAT(texts_of(table), ElementsAre(one.values));
        std::size_t converted = 0, not_convertible = 0;
        for (const CoercedCells& cells : table.coerced)
            (cells.coercion == Coercion::converted ? converted : not_convertible) += cells.count;
        EXPECT_EQ(converted, one.converted) << one.values;
        EXPECT_EQ(not_convertible, one.not_convertible) << one.values;
    }
    TableOptions options;
    options.types = {{"w", ColumnType::text}};
    EXPECT_EQ(thrown_id([&] { table_of(rows, options); }), 12);
}

TEST(ReadTable, TakesWholeNumbersFromTexts) {
    TableOptions options;
    options.types = {{"v", ColumnType::number}};
    const Table table = table_of(
        {{u"v"}, {u"+12"}, {u"1e3"}, {u"+-5"}, {u"inf"}, {u"nan"}, {u"0x10"}, {u"1,5"}}, options);
    EXPECT_THAT(texts_of(table), ElementsAre("v: number 12 1000 - - - - -"));
}

TEST(ReadTable, ReportsTheFirstCellOfEachColumnAndCoercion) {
    TableOptions options;
    options.types = {{"true", ColumnType::text},
                     {"2024-03-01", ColumnType::boolean},
                     {"false", ColumnType::date}};
    options.drop_blank_rows = true;
    const Table table =
        read_table(book_of({{none, none, none, none},
                            {none, true, kDay, false},
                            {none, none, none, none},
                            {none, u"x", SerialDatenum{1.0}, SerialDatenum{60.5}},
                            {none, SerialDatenum{2958466.0}, 2.0, SerialDatenum{2958466.0}},
                            {none, 7.0, true, SerialDatenum{60.0}},
                            {none, u"x", true, u"2024-03-01T00:00"}}),
                   "", "B2:D7", options);
    EXPECT_THAT(texts_of(table),
                ElementsAre("true: text x 2958466 7 x", "2024-03-01: boolean - - true true",
                            "false: date 1900-02-28T12:00:00 - 1900-02-28 2024-03-01"));
    std::vector<std::array<int, 5>> coerced;
    for (const CoercedCells& cells : table.coerced)
        coerced.push_back({static_cast<int>(cells.column), static_cast<int>(cells.coercion),
                           static_cast<int>(cells.count), cells.first.row, cells.first.column});
    const auto converted = static_cast<int>(Coercion::converted);
    const auto refused = static_cast<int>(Coercion::not_convertible);
    const auto no_such_date = static_cast<int>(Coercion::no_such_date);
    const auto out_of_range = static_cast<int>(Coercion::date_out_of_range);
    EXPECT_THAT(coerced,
                ElementsAre(std::array{0, converted, 2, 4, 1}, std::array{1, refused, 2, 3, 2},
                            std::array{2, converted, 1, 6, 3}, std::array{2, no_such_date, 2, 3, 3},
                            std::array{2, out_of_range, 1, 4, 3}));
}

TEST(ReadTable, CodesManyTextsOnce) {
    auto book = create_new_book(1, book::format::XLSX, book::interactive::file, u"");
    const auto sheet = book->sheet(std::size_t{0});
    int next = 0;
    CellProvider provider{};
    provider.context = &next;
    provider.text = [](void* from) {
        return u"text " +
               foundation::unicode::to_utf16(std::to_string((*static_cast<int*>(from))++ % 1000));
    };
    const std::vector<cell_type> types(2000, cell_type::text);
    sheet->write({0, 0, 1999, 0}, types.data(), provider, false);
    TableOptions options;
    options.header_row = kNoHeader;
    const Column column = read_table(book, "", "", options).columns[0];
    EXPECT_EQ(column.strings.size(), 1000U);
    for (std::size_t row = 0; row < 2000; ++row)
        ASSERT_EQ(column.strings[static_cast<std::size_t>(column.codes[row])],
                  "text " + std::to_string(row % 1000));
}

TEST(ReadTable, KnowsWhichSheetIsMeantAndWhichCellsAreBlank) {
    const auto load = [](const char* name, auto... index) {
        const auto path = foundation::unicode::to_utf16(std::string(ZX_TEST_DATA "/") + name);
        if constexpr (sizeof...(index) > 0)
            return load_book_from_file_with_sheet_index(path, book::format::XLSX,
                                                        book::interactive::file, index...);
        else
            return load_book_from_file(path, book::interactive::file);
    };
    const auto whole = load("chart_and_dialog_sheets.xlsm");
    reorder_sheet(whole, 1, 0);
    ASSERT_EQ(whole->sheet_type(0), sheet::type::chart);
    TableOptions options;
    options.header_row = kNoHeader;
    EXPECT_THAT(texts_of(read_table(whole, "", "", options)), ElementsAre("column1: number 1"));
    const auto one = load("merged_regions.xlsx", std::size_t{1});
    EXPECT_THAT(texts_of(read_table(one, "", "", options)), ElementsAre("column1: number 1"));
    options.drop_blank_rows = options.drop_blank_columns = true;
    EXPECT_THAT(texts_of(read_table(load("formatted_blanks.xlsx"), "", "A1:D4", options)),
                ElementsAre("column1: number 1"));
}

TEST(ReadTable, ConvertedTextsShareTheCodesOfEqualTexts) {
    TableOptions options;
    options.types = {{"v", ColumnType::text}};
    const Table table = table_of({{u"v"}, {u"a"}, {1.0}, {u"1"}, {1.0}, {u"a"}}, options);
    EXPECT_THAT(table.columns[0].codes, ElementsAre(0, 1, 1, 1, 0));
    EXPECT_EQ(table.columns[0].strings.size(), 2U);
}

TEST(ReadTable, ReadsErrorCellsAsMissingWithAReport) {
    const auto book = load_book_from_file(
        foundation::unicode::to_utf16(ZX_TEST_DATA "/booleans_errors_formulas.xlsx"),
        book::interactive::file);
    TableOptions options;
    options.header_row = kNoHeader;
    const Table table = read_table(book, "data", "A1:A3", options);
    EXPECT_THAT(texts_of(table), ElementsAre("column1: mixed 4:1 - 1:2"));
    ASSERT_EQ(table.coerced.size(), 1U);
    EXPECT_EQ(table.coerced[0].coercion, Coercion::error_dropped);
    EXPECT_EQ(table.coerced[0].first, (Cell{1, 0}));
    options.merged = MergedCellRules{};
    EXPECT_EQ(read_table(book, "data", "A1:A3", options).coerced.size(), 1U);
    EXPECT_EQ(failure_of_thrown([&] { read_table(book, "no such", "", {}); }).kind,
              FailureKind::Missing);
}

TEST(ReadTable, AppliesTheRulesForMergedCells) {
    const auto book =
        load_book_from_file(foundation::unicode::to_utf16(ZX_TEST_DATA "/merged_regions.xlsx"),
                            book::interactive::file); // A1:C1 is merged and holds 1
    TableOptions options;
    options.header_row = kNoHeader;
    options.merged = MergedCellRules{MergedCellColumnRule::repeat, MergedCellRowRule::repeat};
    EXPECT_THAT(texts_of(read_table(book, "Open", "A1:C2", options)),
                ElementsAre("column1: number 1 -", "column2: number 1 -", "column3: number 1 -"));
    options.merged->columns = MergedCellColumnRule::error;
    EXPECT_EQ(thrown_id([&] { read_table(book, "Open", "A1:C2", options); }), 38);
    options.merged->columns = MergedCellColumnRule::omit;
    EXPECT_EQ(read_table(book, "Open", "A1:D2", options).columns.size(), 1U);
    options.merged = MergedCellRules{MergedCellColumnRule::first, MergedCellRowRule::omit};
    EXPECT_EQ(read_table(book, "Open", "D1:D6", options).rows, 2U);
}

TEST(DistinctNames, NumbersEmptyAndEqualNames) {
    EXPECT_THAT(distinct_names({"", "a", "a", "a.1", "a", "column1", ""}),
                ElementsAre("column1.1", "a", "a.2", "a.1", "a.3", "column1", "column7"));
    EXPECT_EQ(distinct_names(std::vector<std::string>(100'000, "same")).back(), "same.99999");
}

TEST(Dates, HaveOneTimeForEachSerialNumber) {
    const struct {
        double serial;
        const char* text;
    } cases[]{
        {25569, "1970-01-01"},
        {1, "1900-01-01"},
        {59, "1900-02-28"},
        {60.5, "1900-02-28T12:00:00"}, // the day that never was
        {61, "1900-03-01"},
        {0.25, "1899-12-31T06:00:00"},
        {-1.5, "1899-12-29T12:00:00"},
        {2958465, "9999-12-31"},
        {2958466, ""},
        {-700000, ""},
        {1e300, ""},
        {kNan, ""},
        {45352.5451388889, "2024-03-01T13:05:00"}, // 15 digits
        {45352.545138888891, "2024-03-01T13:05:00"},
    };
    for (const auto& one : cases)
        EXPECT_EQ(iso_text_from_microseconds(microseconds_from_serial(one.serial)), one.text)
            << one.serial;
    EXPECT_EQ(serial_from_microseconds(microseconds_from_iso_text("1900-02-28T12:00")), 59.5);
    const double first = serial_from_microseconds(microseconds_from_iso_text("0001-01-01"));
    EXPECT_EQ(iso_text_from_microseconds(microseconds_from_serial(first)), "0001-01-01");
    EXPECT_EQ(microseconds_from_serial(first - 1), kMissingDate);
    for (std::int64_t time = -2'203'891'200'000'000; time < 3'000'000'000'000'000;
         time += 1'234'567'890'123)
        ASSERT_EQ(microseconds_from_serial(serial_from_microseconds(time)), time);
}

TEST(Dates, AreReadFromIsoTextAsAWhole) {
    for (const char* text :
         {"2024-03-01", "2024-02-29", "0001-01-01", "9999-12-31T23:59:59.999999"})
        EXPECT_EQ(iso_text_from_microseconds(microseconds_from_iso_text(text)), text);
    for (const char* text : {"", "2024", "2024-02-30", "2024-13-01", "2024-03-01T", "2024-03-01x",
                             "2024-03-01T24:00", "2024-03-01T13:60", "2024-03-01T13:05:60",
                             "2024-03-01T13:05:00.", "0000-01-01", "2024-03-01T13:05Z"})
        EXPECT_EQ(microseconds_from_iso_text(text), kMissingDate) << text;
}

TEST(WriteTable, WritesWhatReadTableReads) {
    const Rows rows{{u"n", u"b", u"d", u"t", u"m"},
                    {1.5, true, kDay, u"x", 1.0},
                    {none, none, none, none, none},
                    {-2.0, false, SerialDatenum{45352.25}, u"y", u"1"},
                    {3.0, none, SerialDatenum{60.0}, none, true}};
    for (const auto format : {book::format::XLSX, book::format::XLS})
        for (const bool keep_format : {false, true}) {
            const Table table = table_of(rows);
            // What was there goes away.
            const auto book = book_of({{none, none, none},
                                       {none, 9.0, 9.0},
                                       {none, 9.0, 9.0},
                                       {none, u"old", u"old", u"old"}},
                                      format);
            const auto sheet = book->sheet(std::size_t{0});
            EXPECT_EQ(write_table(book, *sheet, {1, 1}, table, {true, keep_format}),
                      (Range{1, 1, 5, 5}));
            EXPECT_EQ(texts_of(read_table(book, "", "B2:F6", {})), texts_of(table));
        }
}

TEST(WriteTable, RefusesWhatTheWorkbookWouldStoreAsSomethingElse) {
    const auto date = [](const char* text) {
        Table table = table_of({{u"d"}, {kDay}});
        table.columns[0].microseconds[0] = microseconds_from_iso_text(text);
        return table;
    };
    Table infinite = table_of({{u"n"}, {1.0}});
    infinite.columns[0].numbers[0] = HUGE_VAL;
    Table short_column = table_of({{u"n"}, {1.0}, {2.0}});
    short_column.columns[0].numbers.pop_back();
    Table no_text = table_of({{u"t"}, {u"x"}});
    no_text.columns[0].codes[0] = 1;
    Table long_text = table_of({{u"t"}, {u"x"}});
    long_text.columns[0].strings = {};
    long_text.columns[0].strings.add(std::string(32'768, 'x'));
    Table long_name = table_of({{u"t"}, {u"x"}});
    long_name.columns[0].name = std::string(32'768, 'x');
    Table after_9999 = date("9999-12-31");
    after_9999.columns[0].microseconds[0] += 86'400'000'000;
    Table short_bits = table_of({{u"n"}, {1.0}});
    short_bits.columns[0].validity.clear();
    Table short_mixed = table_of({{u"m"}, {1.0}, {u"x"}});
    short_mixed.columns[0].numbers.pop_back();
    const struct {
        const Table& table;
        const char* where;
    } cases[]{
        {infinite, "cell B5"},
        {short_column, "Column 'n'"},
        {no_text, "cell B5"},
        {long_text, "cell B5"},
        {long_name, "cell B4"},
        {date("1899-12-31"), "cell B5"},
        {date("0001-01-01"), "cell B5"},
        {after_9999, "cell B5"},
        {short_bits, "Column 'n'"},
        {short_mixed, "Column 'm'"},
    };
    for (const auto& [table, where] : cases) {
        const auto book = book_of({});
        const auto sheet = book->sheet(std::size_t{0});
        const Failure failure = failure_of_thrown([&] {
            write_table(book, *sheet, {3, 1}, table, {});
        });
        EXPECT_EQ(failure.kind, FailureKind::Refused) << failure.cause;
        EXPECT_THAT(failure.cause, testing::HasSubstr(where));
        EXPECT_EQ(sheet->used_range().last_row, -1) << "something was written";
    }
    const auto book = book_of({});
    const auto sheet = book->sheet(std::size_t{0});
    EXPECT_EQ(thrown_id([&] {
                  write_table(book, *sheet, {1'048'575, 0}, table_of({{u"n"}, {1.0}}), {});
              }),
              24);
}

TEST(WriteTable, TakesWhatJustFitsAndLeavesWhatIsMissingOut) {
    Table table = table_of(
        {{u"n", u"d", u"t", u"e", u"l", u"u"}, {1.0, SerialDatenum{1.0}, u"x", u"", u"x", u"x"}});
    table.columns[4].strings = {};
    table.columns[4].strings.add(std::string(32'767, 'x'));
    table.columns[5].strings = {};
    for (int i = 0; i < 20'000; ++i)
        table.columns[5].strings.bytes += "\u00e9"; // more bytes than a cell has units
    table.columns[5].strings.offsets.push_back(40'000);
    const auto book = book_of({{none, none, none, 9.0}, {9.0, kDay, u"old", u"old"}});
    const auto sheet = book->sheet(std::size_t{0});
    write_table(book, *sheet, {0, 0}, table, {false, false});
    EXPECT_EQ(texts_of(read_table(book, "", "B1", {kNoHeader})).at(0), "column1: date 1900-01-01");
    table.columns.resize(4);
    table.columns[0].numbers[0] = kNan;
    table.columns[1].microseconds[0] = kMissingDate;
    table.columns[2].codes[0] = kMissingText;
    write_table(book, *sheet, {1, 0}, table, {false, false});
    std::array<cell_type, 4> types{};
    std::as_const(*sheet).cell_types({1, 0, 1, 3}, types.data());
    EXPECT_THAT(types, testing::Each(cell_type::empty));
}

TEST(WriteTable, CountsDatesOfA1904WorkbookFromItsOwnEpoch) {
    const auto book = load_book_from_file(
        foundation::unicode::to_utf16(ZX_TEST_DATA "/dates_1904.xlsx"), book::interactive::file);
    const auto sheet = book->sheet(std::size_t{0});
    Table table = table_of({{u"d"}, {kDay}});
    write_table(book, *sheet, {4, 0}, table, {});
    EXPECT_THAT(texts_of(read_table(book, "", "A5:A6", {})), ElementsAre("d: date 2024-03-01"));
    double raw = 0.0;
    sheet->readDatesAsDoubles({5, 0, 5, 0}, &raw);
    EXPECT_EQ(raw, 45352.0 - 1462.0);
    table.columns[0].microseconds[0] = microseconds_from_iso_text("1903-12-31");
    EXPECT_EQ(thrown_id([&] { write_table(book, *sheet, {4, 0}, table, {}); }), 28);
}

TEST(Numbers, TravelInEitherOrderWithNanWhereThereIsNone) {
    const auto book = book_of({{1.0, u"x", kDay}, {none, 5.0, true}});
    const auto sheet = book->sheet(std::size_t{0});
    std::array<double, 6> values{};
    read_numbers(*sheet, {0, 0, 1, 2}, values.data(), MatrixOrder::columns_first);
    EXPECT_THAT(values, testing::Pointwise(testing::NanSensitiveDoubleEq(),
                                           {1.0, kNan, kNan, 5.0, 45352.0, 1.0}));
    read_numbers(*sheet, {0, 0, 1, 2}, values.data(), MatrixOrder::rows_first);
    EXPECT_THAT(values, testing::Pointwise(testing::NanSensitiveDoubleEq(),
                                           {1.0, kNan, 45352.0, kNan, 5.0, 1.0}));
    read_numbers(*sheet, {0, 1, 1, 2}, values.data(), MatrixOrder::columns_first);
    EXPECT_EQ(values[2], 45352.0);
    read_numbers(*sheet, {0, 0, 1, 2}, values.data(), MatrixOrder::rows_first);
    write_numbers(book, *sheet, {2, 0, 3, 2}, values.data(), MatrixOrder::rows_first);
    std::array<double, 6> again{};
    read_numbers(*sheet, {2, 0, 3, 2}, again.data(), MatrixOrder::rows_first);
    EXPECT_THAT(again, testing::Pointwise(testing::NanSensitiveDoubleEq(), values));
    values[4] = -HUGE_VAL;
    const Failure failure = failure_of_thrown([&] {
        write_numbers(book, *sheet, {2, 0, 3, 2}, values.data(), MatrixOrder::rows_first);
    });
    EXPECT_THAT(failure.cause, testing::HasSubstr("cell B4 is infinite"));
}

TEST(Numbers, TravelInBlocksOfRows) {
    const auto book = book_of({{kDay}});
    const auto sheet = book->sheet(std::size_t{0});
    double day = 0.0; // a date beside no boolean
    read_numbers(*sheet, {0, 0, 0, 0}, &day, MatrixOrder::columns_first);
    EXPECT_EQ(day, 45352.0);
    constexpr int kRows = 70'000;
    constexpr int kColumns = 16; // more cells than a block has
    std::vector<double> values(std::size_t{kRows} * kColumns, kNan);
    values[5] = 1.0;
    values[values.size() - 3] = 2.0;
    const Range range{0, 0, kRows - 1, kColumns - 1};
    write_numbers(book, *sheet, range, values.data(), MatrixOrder::rows_first);
    std::vector<double> again(values.size());
    read_numbers(*sheet, range, again.data(), MatrixOrder::rows_first);
    EXPECT_TRUE(std::equal(values.begin(), values.end(), again.begin(), [](double a, double b) {
        return a == b || (std::isnan(a) && std::isnan(b));
    }));
    for (const auto order : {MatrixOrder::rows_first, MatrixOrder::columns_first})
        EXPECT_EQ(thrown_id([&] {
                      read_numbers(*sheet, range, again.data(), order,
                                   {nullptr, [](void*) { return true; }});
                  }),
                  18);
    EXPECT_EQ(thrown_id([&] {
                  write_numbers(book, *sheet, {0, 16'380, 0, 16'384}, values.data(),
                                MatrixOrder::columns_first);
              }),
              24);
}

} // namespace
} // namespace spreadsheet
