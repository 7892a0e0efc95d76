// SPDX-License-Identifier: Apache-2.0
//
// What cells are and how they arrive in buffers and builders, with and without merged-cell rules.
#include <array>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/libxl/chart_sheet.h"
#include "tests/spreadsheet/drawn_book.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using test::Drawing;
using test::DrawnBook;

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

/// The digits of the types, one after another.
std::string digits_of(const std::vector<cell_type>& types) {
    std::string digits;
    for (const cell_type type : types)
        digits.push_back(static_cast<char>('0' + static_cast<int>(type)));
    return digits;
}

TEST(LibXLSheet, ClassifiesCells) {
    // Dates below 1 are times of day, whatever their format; ISO dates are dates.
    DrawnBook drawn({{". 5 d0.5 d0.9999999 d-3 d1 d44000.25 'x FALSE b #N/A 1900-01-01"}});
    EXPECT_EQ(digits_of(drawn->cell_types(Range{0, 0, 0, 11})), "011113324563");
    EXPECT_EQ(drawn->typeCheck(0, 6), cell_type::date);
    EXPECT_EQ(drawn->typeCheck(7, 7), cell_type::empty);
}

/// Two rows, three columns.
const Drawing kSixCells{.rows = {"1.5 TRUE 7", "'ab d10 #N/A"}, .dates_1904 = true};
constexpr Range kSix{0, 0, 1, 2};

TEST(LibXLSheet, ReadsColumnAfterColumn) {
    DrawnBook drawn(kSixCells);
    EXPECT_EQ(digits_of(drawn->cell_types(kSix)), "124316");

    std::array<double, 6> numbers{};
    drawn->read(kSix, numbers.data());
    EXPECT_EQ(numbers, (std::array<double, 6>{1.5, 0, 1, 10, 7, 0}));
    drawn->readDatesAsDoubles(kSix, numbers.data());
    EXPECT_EQ(numbers[3], 10) << "raw, though the workbook counts from 1904";
    std::array<SerialDatenum, 6> dates{};
    drawn->read(kSix, dates.data());
    EXPECT_EQ(dates[3].value, 1472);
    EXPECT_EQ(dates[1].value, 1462);
    std::array<bool, 6> booleans{};
    drawn->read(kSix, booleans.data());
    EXPECT_EQ(booleans, (std::array<bool, 6>{false, false, true, false, false, false}));
    std::array<unsigned char, 6> bytes{};
    drawn->read(kSix, bytes.data());
    EXPECT_EQ(bytes, (std::array<unsigned char, 6>{0, 0, 1, 0, 0, 0})) << "7 is no logical value";
    Journal journal;
    drawn->read(kSix, StringBuilder{&journal, Journal::text});
    EXPECT_EQ(journal.entries, (std::vector<std::string>{"s", "sab", "s", "s", "s", "s#N/A"}));
}

TEST(LibXLSheet, ReadsEveryCellAsTheTypeAskedFor) {
    DrawnBook drawn(kSixCells);
    const std::vector<cell_type> types = {cell_type::number, cell_type::text,  cell_type::boolean,
                                          cell_type::date,   cell_type::other, cell_type::error};
    Journal journal;
    drawn->read(
        kSix, types.data(),
        CellBuilder{&journal, Journal::text, Journal::number, Journal::date, Journal::boolean});
    EXPECT_EQ(journal.entries,
              (std::vector<std::string>{"n1.50", "sab", "true", "d1472.0", "s", "s"}));
}

TEST(LibXLSheet, DoesNothingForAnEmptyRange) {
    DrawnBook drawn({.rows = {"1"}, .merges = {"A1:A2"}});
    for (const Range& range : {Range{0, 0, -1, -1}, Range{5, 0, 4, 2}, Range{0, 5, 1, 4}}) {
        drawn->read(range, static_cast<double*>(nullptr));
        drawn->cell_types(range, nullptr);
        EXPECT_FALSE(
            drawn->read(range, static_cast<double*>(nullptr), kRepeatColumns, kRepeatRows));
        EXPECT_TRUE(drawn->get_merged_cells_vector().empty());
        drawn->clear(range);
    }
    EXPECT_EQ(drawn->typeCheck(0, 0), cell_type::number);
}

TEST(LibXLSheet, EndsReadsOfRangesThatEndWhereIntegersEnd) {
    DrawnBook drawn({.rows = {"1 2"}, .merges = {"A1:B1"}});
    constexpr int kLast = std::numeric_limits<int>::max();
    for (const Range& range : {Range{kLast - 1, 0, kLast, 1}, Range{0, kLast - 1, 1, kLast}}) {
        std::array<double, 4> numbers{9, 9, 9, 9};
        constexpr std::array<double, 4> zeros{};
        drawn->read(range, numbers.data());
        EXPECT_EQ(numbers, zeros);
        numbers.fill(9);
        drawn->read(range, numbers.data(), kRepeatColumns, kRepeatRows);
        EXPECT_EQ(numbers, zeros);
        EXPECT_EQ(digits_of(drawn->cell_types(range)), "0000");
        const std::vector<cell_type> types(4, cell_type::text);
        Journal journal;
        drawn->read(range, StringBuilder{&journal, Journal::text});
        drawn->read(range, types.data(), CellBuilder{&journal, Journal::text, {}, {}, {}});
        EXPECT_EQ(journal.entries, std::vector<std::string>(8, "s"));
        const Range start{range.first_row, range.first_column, range.first_row, range.first_column};
        EXPECT_EQ(drawn->get_data_span(range, column_rule(1), row_rule(0)), start);
    }
}

TEST(LibXLSheet, BuildsCellArrays) {
    Drawing drawing = kSixCells;
    drawing.merges = {"A1:B1"};
    DrawnBook drawn(drawing);
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
        drawn->read_cell_array(cells, array, test.dates_as_numbers);
        EXPECT_EQ(array.journal.entries, test.entries);
    }
    ArrayJournal array;
    drawn->read_cell_array(cells, array, false, column_rule(4), row_rule(0));
    EXPECT_EQ(array.journal.entries,
              (std::vector<std::string>{"3x2", "-", "d1472.0", "-", "-", "-", "s"}));
    EXPECT_EQ(drawn->get_omit_vars_vector(), (std::vector<int>{0, 1})) << "places within the walk";
    EXPECT_EQ(drawn->get_merged_cells_vector(),
              (std::vector<bool>{true, false, false, true, false, false}));
}

TEST(LibXLSheet, AnswersTypesOfAnIrregularSelection) {
    DrawnBook drawn(kSixCells);
    std::vector<cell_type> types(4);
    drawn->cell_types(CellIterator({0, 0, 2, 2}, {1, 0}), types.data());
    EXPECT_EQ(digits_of(types), "4010");
}

/// 4 rows by 4 columns of 1..16 in reading order, with a horizontal region at A1:B1, a vertical one
/// at D2:D4 and a block at A3:B4. Cells other than a region's first are absent, as in real files.
const Drawing kMerged{.rows = {"1 . 3 4", "5 6 7 8", "9 . 11 .", ". . 15 ."},
                      .merges = {"A1:B1", "D2:D4", "A3:B4"}};

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
        DrawnBook drawn(kMerged);
        LibXLSheet& sheet = drawn.sheet();
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
    DrawnBook drawn(kMerged);
    LibXLSheet& sheet = drawn.sheet();
    std::array<double, 6> numbers{};
    EXPECT_FALSE(sheet.read({2, 1, 3, 3}, numbers.data(), column_rule(0), row_rule(4)));
    EXPECT_EQ(sheet.get_omit_rows_vector(), (std::vector<int>{0, 1}));
    EXPECT_TRUE(sheet.read({2, 1, 3, 3}, numbers.data(), column_rule(4), row_rule(0)));
    EXPECT_EQ(sheet.get_omit_vars_vector(), std::vector<int>{0});
    EXPECT_TRUE(sheet.get_omit_rows_vector().empty()) << "of the last read only";
}

TEST(LibXLSheet, KeepsTheOmissionFlagUntilReset) {
    DrawnBook drawn(kMerged);
    LibXLSheet& sheet = drawn.sheet();
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
        DrawnBook drawn({.rows = {"1 . . 4", ". b #N/A"}, .merges = {"D1:E1"}});
        LibXLSheet& sheet = drawn.sheet();
        sheet.set_return_empty_vars_bool(test.return_empty);
        std::array<cell_type, 12> types{};
        EXPECT_EQ(sheet.cell_types(range, types.data(), column_rule(test.column_rule), kRepeatRows),
                  !test.omit_vars.empty());
        EXPECT_EQ(sheet.get_omit_vars_vector(), test.omit_vars) << test.column_rule;
    }
}

TEST(LibXLSheet, DeliversCellsWithoutAValueLikeEmptyOnes) {
    DrawnBook drawn(
        {.rows = {"'merged", "TRUE"}, .merges = {"A1:B1", "A2:B2"}, .dates_1904 = true});
    LibXLSheet& sheet = drawn.sheet();
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
    DrawnBook drawn(kMerged);
    LibXLSheet& sheet = drawn.sheet();
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

TEST(LibXLSheet, ReportsBoundsAndNames) {
    EXPECT_EQ(DrawnBook({})->used_range(), (Range{0, 0, -1, -1}));
    DrawnBook drawn({.rows = {". .", ". 1", ". . b"},
                     .defined_names = "<definedName name=\"Totals\">Data!$C$2:$E$4</definedName>"});
    EXPECT_EQ(drawn->used_range(), (Range{1, 1, 2, 2}));
    EXPECT_EQ(drawn->named_range(u"totals"), (Range{1, 2, 3, 4}));
    EXPECT_EQ(thrown_id([&] { drawn->named_range(u"Nothing"); }), 23);
    EXPECT_EQ(thrown_id([&] { drawn->prefetch({}, nullptr); }), 51);
}

TEST(LibXLSheet, SaysWhetherProtectionLocksACellOfTheRange) {
    // Two unlocked cells above a locked and an absent one.
    Drawing drawing{.rows = {"1~u 2~u", "3"}, .is_protected = true};
    const struct {
        const char* what;
        Range range;
        bool is_writeable;
        bool with_unlocked_default;
    } cases[] = {
        {"unlocked", {0, 0, 0, 1}, true, true},
        {"locked in the second row", {0, 0, 1, 0}, false, true},
        {"absent in the second row", {0, 1, 1, 1}, false, true},
        {"absent", {9, 9, 9, 9}, false, true},
    };
    for (const auto& test : cases) {
        drawing.is_default_unlocked = false;
        EXPECT_EQ(DrawnBook(drawing)->is_range_writeable(test.range), test.is_writeable)
            << test.what;
        drawing.is_default_unlocked = true;
        EXPECT_EQ(DrawnBook(drawing)->is_range_writeable(test.range), test.with_unlocked_default)
            << test.what;
    }
    drawing.is_protected = drawing.is_default_unlocked = false;
    EXPECT_TRUE(DrawnBook(drawing)->is_range_writeable({0, 0, 9, 9})) << "not protected";
}

TEST(LibXLSheet, CachesTheDataSpanByRule) {
    DrawnBook drawn({{"1 1", "", "", "", "", ". . . . . 1", "", "", "", ". . . . . . . . . b"}});
    LibXLSheet& sheet = drawn.sheet();
    const Range first{0, 0, 0, 1};
    const Range second{5, 5, 5, 5};
    EXPECT_EQ(sheet.get_data_span({0, 0, 8, 8}, column_rule(0), row_rule(0)), first);
    EXPECT_EQ(sheet.get_data_span({5, 5, 8, 8}, column_rule(0), row_rule(0)), first) << "cached";
    EXPECT_EQ(sheet.used_range(), (Range{0, 0, 9, 9}));
    EXPECT_EQ(sheet.get_data_span({5, 5, 8, 8}, column_rule(1), row_rule(0)), second);
    EXPECT_EQ(sheet.used_range(), (Range{0, 0, 5, 5})) << "filled bounds from now on";
    EXPECT_EQ(sheet.get_data_span({0, 0, 8, 8}, column_rule(0), row_rule(2)), first);
    EXPECT_EQ(sheet.get_data_span({5, 5, 8, 8}, column_rule(0), row_rule(0)), first) << "cached";
    const double number = 1.0;
    sheet.write({1, 0, 1, 0}, &number);
    EXPECT_EQ(sheet.get_data_span({0, 0, 8, 8}, column_rule(0), row_rule(0)), (Range{0, 0, 1, 1}))
        << "found again after a change";
}

TEST(LibXLSheet, LooksUpWhatALoadOfSomeRowsLeftOut) {
    const Drawing drawing{
        .rows = {"1~u", "2", "3~u", "4"}, .merges = {"A3:B3"}, .is_protected = true};
    DrawnBook drawn(drawing, 0, 0);
    EXPECT_EQ(drawn->used_range(), (Range{0, 0, 0, 0}));
    EXPECT_TRUE(drawn->is_protected());
    EXPECT_TRUE(drawn->is_range_writeable({2, 0, 2, 0})) << "unlocked outside the rows";
    EXPECT_FALSE(drawn->is_range_writeable({0, 0, 3, 0}));
    std::array<double, 2> numbers{};
    drawn->read({2, 0, 2, 1}, numbers.data(), kRepeatColumns, kRepeatRows);
    EXPECT_EQ(numbers, (std::array<double, 2>{3, 3}));
}

TEST(LibXLSheet, FailsWhereWhatALoadOfSomeRowsLeftOutIsDamaged) {
    const Drawing drawing{.rows = {"1", "2"}, .is_damaged_after_cells = true};
    EXPECT_EQ(thrown_id([&] { DrawnBook whole(drawing); }), 9);
    DrawnBook drawn(drawing, 0, 0);
    double number = 0;
    const std::function<void()> actions[] = {
        [&] { drawn->is_protected(); },
        [&] {
            drawn->is_range_writeable({0, 0, 0, 0});
        },
        [&] {
            drawn->unmerge({0, 0, 9, 9});
        },
        [&] {
            drawn->read({0, 0, 0, 0}, &number, kRepeatColumns, kRepeatRows);
        },
    };
    for (std::size_t i = 0; i < std::size(actions); ++i) {
        EXPECT_EQ(thrown_id(actions[i]), 9) << i;
        EXPECT_EQ(failure_of_thrown(actions[i]).kind, FailureKind::Damaged) << i;
    }
    drawn->read({0, 0, 0, 0}, &number);
    EXPECT_EQ(number, 1) << "what was loaded can be read";
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
