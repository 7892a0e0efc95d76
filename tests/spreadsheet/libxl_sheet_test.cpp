// SPDX-License-Identifier: Apache-2.0
//
// What cells are and how they arrive in buffers and builders, with and without merged-cell rules.
#include <array>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/libxl/chart_sheet.h"
#include "spreadsheet/libxl/libxl_sheet.h"
#include "tests/spreadsheet/fake_library.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

constexpr auto kRepeatColumns = MergedCellColumnRule::repeat;
constexpr auto kRepeatRows = MergedCellRowRule::repeat;

MergedCellColumnRule column_rule(int value) {
    return static_cast<MergedCellColumnRule>(value);
}
MergedCellRowRule row_rule(int value) {
    return static_cast<MergedCellRowRule>(value);
}

/// Joins what callbacks receive, one entry a call.
struct Journal {
    std::vector<std::string> entries;
    static Journal& of(void* context) { return *static_cast<Journal*>(context); }
    static void add(void* context, char kind, std::string text) {
        text.insert(text.begin(), kind);
        of(context).entries.push_back(std::move(text));
    }
    static void text(void* context, const std::u16string& value) {
        add(context, 's', {value.begin(), value.end()});
    }
    static void number(void* context, double value) {
        add(context, 'n', std::to_string(value).substr(0, 4));
    }
    static void date(void* context, double value) {
        add(context, 'd', std::to_string(value).substr(0, 6));
    }
    static void boolean(void* context, bool value) {
        of(context).entries.push_back(value ? "true" : "false");
    }
};

/// Keeps what a cell array is made of.
class ArrayJournal : public output::CellOutputBuilder {
  public:
    Journal journal;
    void begin(std::size_t rows, std::size_t columns) override {
        journal.entries.push_back(std::to_string(rows) + "x" + std::to_string(columns));
    }
    void add_text(const std::u16string& value) override { Journal::text(&journal, value); }
    void add_number(double value) override { Journal::number(&journal, value); }
    void add_date(double serial) override { Journal::date(&journal, serial); }
    void add_boolean(bool value) override { Journal::boolean(&journal, value); }
    void add_empty() override { journal.entries.push_back("-"); }
};

std::vector<int> types_of(const std::vector<cell_type>& types) {
    std::vector<int> numbers;
    for (const cell_type type : types)
        numbers.push_back(static_cast<int>(type));
    return numbers;
}

TEST(LibXLSheet, ClassifiesCells) {
    const struct {
        const char* what;
        fake::FakeCell cell;
        int type;
    } cases[] = {
        {"empty", {}, 0},
        {"number", fake::number(5), 1},
        {"time of day", fake::date(0.5), 1},
        {"just below a day", fake::date(0.9999999), 1},
        {"negative date", fake::date(-3), 1},
        {"first day", fake::date(1.0), 3},
        {"date", fake::date(44000.25), 3},
        {"text", fake::text(u"x"), 2},
        {"boolean", fake::boolean(false), 4},
        {"blank", fake::blank(), 5},
        {"error", fake::error(u"#N/A"), 6},
        {"strict date", {workbook::CellKind::StrictDate, 0.25}, 3},
        {"a kind to come", {static_cast<workbook::CellKind>(7)}, 6},
    };
    for (const auto& test : cases) {
        fake::FakeSheet fake;
        fake.cells[{3, 4}] = test.cell;
        LibXLSheet sheet(fake, {});
        EXPECT_EQ(static_cast<int>(sheet.typeCheck(3, 4)), test.type) << test.what;
    }
}

/// Two rows, three columns: 1.5 true 7 / "ab" date(10) #N/A.
fake::FakeSheet six_cells() {
    fake::FakeSheet fake;
    fake.cells[{0, 0}] = fake::number(1.5);
    fake.cells[{1, 0}] = fake::text(u"ab");
    fake.cells[{0, 1}] = fake::boolean(true);
    fake.cells[{1, 1}] = fake::date(10);
    fake.cells[{0, 2}] = fake::number(7);
    fake.cells[{1, 2}] = fake::error(u"#N/A");
    return fake;
}

constexpr Range kSix{0, 0, 1, 2};

TEST(LibXLSheet, ReadsColumnAfterColumn) {
    fake::FakeSheet fake = six_cells();
    const LibXLSheet sheet(fake, {.dates_1904 = true});
    EXPECT_EQ(types_of(sheet.cell_types(kSix)), (std::vector<int>{1, 2, 4, 3, 1, 6}));

    std::array<double, 6> numbers{};
    sheet.read(kSix, numbers.data());
    EXPECT_EQ(numbers, (std::array<double, 6>{1.5, 0, 1, 10, 7, 0}));
    sheet.readDatesAsDoubles(kSix, numbers.data());
    EXPECT_EQ(numbers[3], 10) << "raw, though the workbook counts from 1904";
    std::array<SerialDatenum, 6> dates{};
    sheet.read(kSix, dates.data());
    EXPECT_EQ(dates[3].value, 1472);
    EXPECT_EQ(dates[1].value, 1462);
    std::array<bool, 6> booleans{};
    sheet.read(kSix, booleans.data());
    EXPECT_EQ(booleans, (std::array<bool, 6>{false, false, true, false, false, false}));
    std::array<unsigned char, 6> bytes{};
    sheet.read(kSix, bytes.data());
    EXPECT_EQ(bytes, (std::array<unsigned char, 6>{0, 0, 1, 0, 0, 0})) << "7 is no logical value";
    Journal journal;
    sheet.read(kSix, StringBuilder{&journal, Journal::text});
    EXPECT_EQ(journal.entries, (std::vector<std::string>{"s", "sab", "s", "s", "s", "s#N/A"}));
}

TEST(LibXLSheet, ReadsEveryCellAsTheTypeAskedFor) {
    fake::FakeSheet fake = six_cells();
    const LibXLSheet sheet(fake, {.dates_1904 = true});
    const std::vector<cell_type> types = {cell_type::number, cell_type::text,  cell_type::boolean,
                                          cell_type::date,   cell_type::other, cell_type::error};
    Journal journal;
    sheet.read(
        kSix, types.data(),
        CellBuilder{&journal, Journal::text, Journal::number, Journal::date, Journal::boolean});
    EXPECT_EQ(journal.entries,
              (std::vector<std::string>{"n1.50", "sab", "true", "d1472.0", "s", "s"}));
}

TEST(LibXLSheet, DoesNothingForAnEmptyRange) {
    fake::FakeSheet fake = six_cells();
    fake.regions = {{0, 0, 1, 0}};
    LibXLSheet sheet(fake, {});
    for (const Range& range : {Range{0, 0, -1, -1}, Range{5, 0, 4, 2}, Range{0, 5, 1, 4}}) {
        sheet.read(range, static_cast<double*>(nullptr));
        sheet.cell_types(range, nullptr);
        EXPECT_FALSE(sheet.read(range, static_cast<double*>(nullptr), kRepeatColumns, kRepeatRows));
        EXPECT_TRUE(sheet.get_merged_cells_vector().empty());
    }
}

TEST(LibXLSheet, BuildsCellArrays) {
    fake::FakeSheet fake = six_cells();
    fake.regions = {{0, 0, 0, 1}};
    LibXLSheet sheet(fake, {.dates_1904 = true});
    const std::vector<cell_type> types = {cell_type::number, cell_type::date,  cell_type::error,
                                          cell_type::number, cell_type::empty, cell_type::text};
    CellTypeIterator cells({0, 1, 5, 5}, {1, 0}, types.data(), types.size());
    const struct {
        bool dates_as_numbers;
        std::vector<std::string> entries;
    } cases[] = {{false, {"3x2", "n1.00", "d1472.0", "-", "n1.50", "-", "s"}},
                 {true, {"3x2", "n1.00", "n10.0", "-", "n1.50", "-", "s"}}};
    for (const auto& test : cases) {
        ArrayJournal array;
        sheet.read_cell_array(cells, array, test.dates_as_numbers);
        EXPECT_EQ(array.journal.entries, test.entries);
    }
    ArrayJournal array;
    sheet.read_cell_array(cells, array, false, column_rule(4), row_rule(0));
    EXPECT_EQ(array.journal.entries,
              (std::vector<std::string>{"3x2", "-", "d1472.0", "-", "-", "-", "s"}));
    EXPECT_EQ(sheet.get_omit_vars_vector(), (std::vector<int>{0, 1})) << "places within the walk";
    EXPECT_EQ(sheet.get_merged_cells_vector(),
              (std::vector<bool>{true, false, false, true, false, false}));
}

TEST(LibXLSheet, AnswersTypesOfAnIrregularSelection) {
    fake::FakeSheet fake = six_cells();
    const LibXLSheet sheet(fake, {});
    std::array<cell_type, 4> types{};
    sheet.cell_types(CellIterator({0, 0, 2, 2}, {1, 0}), types.data());
    EXPECT_EQ(types, (std::array<cell_type, 4>{cell_type::boolean, cell_type::empty,
                                               cell_type::number, cell_type::empty}));
}

/// 4 rows by 4 columns of 1..16 in reading order, with a horizontal region at A1:B1, a vertical one
/// at D2:D4 and a block at A3:B4. Cells other than a region's first are absent, as in real files.
fake::FakeSheet merged_sheet() {
    fake::FakeSheet fake;
    fake.regions = {{0, 0, 0, 1}, {1, 3, 3, 3}, {2, 0, 3, 1}};
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            fake.cells[{row, column}] = fake::number(row * 4 + column + 1);
    for (const auto& [row, column] : {std::pair{0, 1}, {2, 3}, {3, 3}, {2, 1}, {3, 0}, {3, 1}})
        fake.cells.erase({row, column});
    return fake;
}

TEST(LibXLSheet, AppliesMergedCellRules) {
    const struct {
        int columns, rows;
        std::array<double, 16> numbers; ///< column after column
        std::vector<int> omit_rows, omit_vars;
    } cases[] = {
        {2, 2, {1, 5, 9, 9, 1, 6, 9, 9, 3, 7, 11, 15, 4, 8, 8, 8}, {}, {}},
        {0, 0, {1, 5, 9, 0, 0, 6, 0, 0, 3, 7, 11, 15, 4, 8, 0, 0}, {}, {}},
        {1, 1, {0, 5, 0, 0, 1, 6, 0, 9, 3, 7, 11, 15, 4, 0, 0, 8}, {}, {}},
        {4, 2, {0, 5, 0, 0, 0, 6, 0, 0, 3, 7, 11, 15, 4, 8, 8, 8}, {}, {0, 1}},
        {0, 4, {1, 5, 0, 0, 0, 6, 0, 0, 3, 7, 11, 15, 4, 0, 0, 0}, {1, 2, 3}, {}},
        {4, 4, {0, 5, 0, 0, 0, 6, 0, 0, 3, 7, 11, 15, 4, 0, 0, 0}, {1, 2, 3}, {0, 1}},
    };
    const Range all{0, 0, 3, 3};
    for (const auto& test : cases) {
        SCOPED_TRACE(std::to_string(test.columns) + " " + std::to_string(test.rows));
        fake::FakeSheet fake = merged_sheet();
        LibXLSheet sheet(fake, {});
        const MergedCellColumnRule columns = column_rule(test.columns);
        const MergedCellRowRule rows = row_rule(test.rows);
        std::array<double, 16> numbers{};
        EXPECT_EQ(sheet.read(all, numbers.data(), columns, rows), !test.omit_vars.empty());
        EXPECT_EQ(numbers, test.numbers);
        EXPECT_EQ(sheet.get_omit_rows_vector(), test.omit_rows);
        EXPECT_EQ(sheet.get_omit_vars_vector(), test.omit_vars);
        EXPECT_EQ(sheet.get_merged_cells_vector(),
                  (std::vector<bool>{true, false, true, true, true, false, true, true, false, false,
                                     false, false, false, true, true, true}));
        std::array<cell_type, 16> types{};
        sheet.cell_types(all, types.data(), columns, rows);
        for (std::size_t i = 0; i < 16; ++i)
            EXPECT_EQ(types[i], test.numbers[i] != 0 ? cell_type::number : cell_type::empty) << i;
    }
}

TEST(LibXLSheet, CountsOffsetsWithinTheRangeRead) {
    fake::FakeSheet fake = merged_sheet();
    LibXLSheet sheet(fake, {});
    std::array<double, 6> numbers{};
    EXPECT_FALSE(sheet.read({2, 1, 3, 3}, numbers.data(), column_rule(0), row_rule(4)));
    EXPECT_EQ(sheet.get_omit_rows_vector(), (std::vector<int>{0, 1}));
    EXPECT_TRUE(sheet.read({2, 1, 3, 3}, numbers.data(), column_rule(4), row_rule(0)));
    EXPECT_EQ(sheet.get_omit_vars_vector(), std::vector<int>{0});
    EXPECT_TRUE(sheet.get_omit_rows_vector().empty()) << "of the last read only";
}

TEST(LibXLSheet, KeepsTheOmissionFlagUntilReset) {
    fake::FakeSheet fake = merged_sheet();
    LibXLSheet sheet(fake, {});
    double number = 0;
    EXPECT_TRUE(sheet.read({0, 0, 0, 0}, &number, column_rule(4), row_rule(0)));
    EXPECT_TRUE(sheet.read({1, 1, 1, 1}, &number, column_rule(4), row_rule(0)));
    sheet.reset_omit_vars_bool();
    EXPECT_FALSE(sheet.read({1, 1, 1, 1}, &number, column_rule(4), row_rule(0)));
    EXPECT_EQ(sheet.get_merged_cells_vector(), std::vector<bool>{false});
    sheet.reset_merged_cells_vector();
    EXPECT_TRUE(sheet.get_merged_cells_vector().empty());
}

TEST(LibXLSheet, CountsColumnsWithoutValuesAsOmittedOnRequest) {
    fake::FakeSheet fake;
    fake.cells[{0, 0}] = fake::number(1);
    fake.cells[{1, 1}] = fake::blank();
    fake.cells[{1, 2}] = fake::error(u"#N/A");
    fake.cells[{0, 3}] = fake::number(4);
    fake.regions = {{0, 3, 0, 4}};
    const Range range{0, 0, 1, 5};
    const struct {
        bool return_empty;
        int column_rule;
        std::vector<int> omit_vars;
    } cases[] = {
        {true, 0, {}},      {false, 0, {1, 4, 5}},    {false, 1, {1, 3, 5}},
        {false, 2, {1, 5}}, {false, 4, {1, 3, 4, 5}},
    };
    for (const auto& test : cases) {
        LibXLSheet sheet(fake, {});
        sheet.set_return_empty_vars_bool(test.return_empty);
        std::array<cell_type, 12> types{};
        EXPECT_EQ(sheet.cell_types(range, types.data(), column_rule(test.column_rule), kRepeatRows),
                  !test.omit_vars.empty());
        EXPECT_EQ(sheet.get_omit_vars_vector(), test.omit_vars) << test.column_rule;
    }
}

TEST(LibXLSheet, DeliversCellsWithoutAValueLikeEmptyOnes) {
    fake::FakeSheet fake;
    fake.regions = {{0, 0, 0, 1}, {1, 0, 1, 1}};
    fake.cells[{0, 0}] = fake::text(u"merged");
    fake.cells[{1, 0}] = fake::boolean(true);
    LibXLSheet sheet(fake, {.dates_1904 = true});
    const Range range{0, 0, 1, 1};
    const auto columns = MergedCellColumnRule::last;
    Journal journal;
    sheet.read(range, StringBuilder{&journal, Journal::text}, columns, kRepeatRows);
    EXPECT_EQ(journal.entries, (std::vector<std::string>{"s", "s", "smerged", "s"}));
    std::array<bool, 4> booleans{true, true, true, true};
    sheet.read(range, booleans.data(), columns, kRepeatRows);
    EXPECT_EQ(booleans, (std::array<bool, 4>{false, false, false, true}));
    std::array<SerialDatenum, 4> dates{};
    sheet.read(range, dates.data(), columns, kRepeatRows);
    EXPECT_EQ(dates[0].value, 1462);
    std::array<double, 4> numbers{9, 9, 9, 9};
    sheet.readDatesAsDoubles(range, numbers.data(), columns, kRepeatRows);
    EXPECT_EQ(numbers, (std::array<double, 4>{0, 0, 0, 1}));
}

TEST(LibXLSheet, RaisesTheErrorRules) {
    fake::FakeSheet fake = merged_sheet();
    LibXLSheet sheet(fake, {});
    std::array<unsigned char, 16> bytes{};
    const auto read = [&](Range range, int columns, int rows) {
        return thrown_id(
            [&] { sheet.read(range, bytes.data(), column_rule(columns), row_rule(rows)); });
    };
    EXPECT_EQ(read({0, 0, 3, 3}, 3, 3), 38);
    EXPECT_EQ(read({1, 2, 3, 3}, 3, 3), 39) << "only the vertical region is met";
    EXPECT_EQ(read({1, 2, 3, 3}, 3, 0), -1);
    EXPECT_EQ(read({2, 0, 3, 1}, 0, 3), 39);
    EXPECT_EQ(read({1, 0, 1, 2}, 3, 3), -1) << "no region is met";
}

TEST(LibXLSheet, ReportsBoundsNamesAndProtection) {
    fake::FakeSheet fake;
    LibXLSheet sheet(fake, {});
    EXPECT_EQ(sheet.used_range(), (Range{0, 0, -1, -1}));
    fake.cells[{2, 1}] = fake::number(1);
    fake.cells[{9, 3}] = fake::blank();
    EXPECT_EQ(sheet.used_range(), (Range{2, 1, 9, 3}));
    fake.names[u"Totals"] = {1, 2, 3, 4};
    EXPECT_EQ(sheet.named_range(u"Totals"), (Range{1, 2, 3, 4}));
    EXPECT_EQ(thrown_id([&] { sheet.named_range(u"Nothing"); }), 23);
    EXPECT_EQ(thrown_id([&] { sheet.prefetch({}, nullptr); }), 51);

    fake.formats = {{{0, 0}, fake::FakeFormat(0, false)}, {{0, 1}, fake::FakeFormat(0, true)}};
    EXPECT_TRUE(sheet.is_range_writeable({0, 0, 9, 9})) << "not protected";
    fake.is_protected = true;
    EXPECT_TRUE(sheet.is_protected());
    EXPECT_TRUE(sheet.is_range_writeable({0, 0, 0, 0}));
    EXPECT_FALSE(sheet.is_range_writeable({0, 0, 0, 1}));
    EXPECT_FALSE(sheet.is_range_writeable({1, 0, 1, 0})) << "a cell that does not exist is locked";
}

TEST(LibXLSheet, CachesTheDataSpanByRule) {
    fake::FakeSheet fake;
    fake.cells[{0, 0}] = fake.cells[{0, 1}] = fake.cells[{5, 5}] = fake::number(1);
    fake.cells[{9, 9}] = fake::blank();
    LibXLSheet sheet(fake, {});
    const Range first{0, 0, 0, 1};
    const Range second{5, 5, 5, 5};
    EXPECT_EQ(sheet.get_data_span({0, 0, 8, 8}, column_rule(0), row_rule(0)), first);
    EXPECT_EQ(sheet.get_data_span({5, 5, 8, 8}, column_rule(0), row_rule(0)), first) << "cached";
    EXPECT_EQ(sheet.used_range(), (Range{0, 0, 9, 9}));
    EXPECT_EQ(sheet.get_data_span({5, 5, 8, 8}, column_rule(1), row_rule(0)), second);
    EXPECT_EQ(sheet.used_range(), (Range{0, 0, 5, 5})) << "filled bounds from now on";
    EXPECT_EQ(sheet.get_data_span({0, 0, 8, 8}, column_rule(0), row_rule(2)), first);
    EXPECT_EQ(sheet.get_data_span({5, 5, 8, 8}, column_rule(0), row_rule(0)), first) << "cached";
}

TEST(ChartSheet, RefusesEveryOperationOnItsData) {
    ChartSheet sheet;
    double number = 0;
    cell_type type{};
    const std::function<void()> refused[] = {
        [&] { sheet.name(); },
        [&] { sheet.hidden(); },
        [&] { sheet.is_protected(); },
        [&] { sheet.used_range(); },
        [&] { sheet.cell_types(Range{}, &type); },
        [&] { sheet.read(Range{}, &number); },
        [&] { sheet.read(Range{}, &number, kRepeatColumns, kRepeatRows); },
        [&] { sheet.write(Range{}, &number); },
        [&] { sheet.clear(Range{}); },
        [&] { sheet.named_range(u"x"); },
        [&] { sheet.is_range_writeable(Range{}); },
        // Taken over from the worksheet, without a worksheet behind them:
        [&] { sheet.typeCheck(0, 0); },
        [&] { sheet.get_data_span(Range{}, kRepeatColumns, kRepeatRows); },
        [&] { sheet.cell_types(Range{}, &type, kRepeatColumns, kRepeatRows); },
    };
    for (std::size_t i = 0; i < std::size(refused); ++i)
        EXPECT_EQ(thrown_id(refused[i]), 31) << i;
    EXPECT_EQ(thrown_id([&] { sheet.prefetch({}, nullptr); }), 51);
    EXPECT_TRUE(sheet.get_merged_cells_vector().empty());
}

} // namespace
} // namespace spreadsheet
