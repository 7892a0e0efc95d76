// SPDX-License-Identifier: Apache-2.0
//
// Typed writes with their conversions and the sheet's other changes, read back from the real
// engine; failures come from a scripted library.
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <climits>
#include <gtest/gtest.h>

#include "spreadsheet/book_factory.h"
#include "tests/spreadsheet/drawn_book.h"
#include "tests/spreadsheet/fake_library.h"
#include "tests/spreadsheet/log_lines.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using test::Drawing;
using test::DrawnBook;
using Lines = std::vector<std::string>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr Range kA1{0, 0, 0, 0};

double number_at(const ISheet& sheet, int row, int column) {
    double number = 0.0;
    sheet.readDatesAsDoubles({row, column, row, column}, &number);
    return number;
}

std::u16string text_at(const ISheet& sheet, int row, int column) {
    std::u16string text;
    sheet.read({row, column, row, column},
               StringBuilder{&text, [](void* context, const auto& s) {
                                 *static_cast<std::u16string*>(context) = s;
                             }});
    return text;
}

TEST(WriteNumbers, ConvertsWhatCellsCannotHold) {
    constexpr double kMax = std::numeric_limits<double>::max();
    const struct {
        double given;
        cell_type type;
        double stored;
    } cases[] = {{1.5, cell_type::number, 1.5},
                 {kInfinity, cell_type::number, 65535.0},
                 {-kInfinity, cell_type::number, 65535.0},
                 {kMax, cell_type::number, kMax},
                 {kNaN, cell_type::other, 0.0}};
    DrawnBook drawn({});
    for (const auto& test : cases) {
        drawn->write(kA1, &test.given);
        EXPECT_EQ(drawn->typeCheck(0, 0), test.type) << test.given;
        EXPECT_EQ(number_at(drawn.sheet(), 0, 0), test.stored) << test.given;
    }
}

TEST(WriteDates, CountFromTheWorkbooksEpoch) {
    const struct {
        bool dates_1904;
        double given;
        cell_type type;
        double stored;
    } cases[] = {
        {false, 45000.25, cell_type::date, 45000.25}, {true, 1463.0, cell_type::date, 1.0},
        {true, 1462.0, cell_type::number, 0.0}, // a time of day in the cell
        {true, kNaN, cell_type::other, 0.0},          {false, kInfinity, cell_type::other, 0.0},
        {true, -kInfinity, cell_type::other, 0.0},
    };
    LogLines log;
    for (const auto& test : cases) {
        DrawnBook drawn({.rows = {"7"}, .dates_1904 = test.dates_1904});
        log.take();
        const SerialDatenum date{test.given};
        drawn->write(kA1, &date);
        EXPECT_EQ(log.take(), Lines{}) << test.given;
        EXPECT_EQ(drawn->typeCheck(0, 0), test.type) << test.given;
        EXPECT_EQ(number_at(drawn.sheet(), 0, 0), test.stored) << test.given;
    }
}

/// Hands out texts one after another.
struct Texts {
    std::vector<std::u16string> texts;
    std::size_t next = 0;
    StringProvider provider() {
        return {this, [](void* context) {
                    auto& self = *static_cast<Texts*>(context);
                    return self.texts[self.next++];
                }};
    }
};

TEST(WriteTexts, CutsWhatIsTooLongAndBlanksWhatIsEmpty) {
    Texts texts{{u"a", u"", std::u16string(32767, u'x'), std::u16string(40000, u'x')}};
    DrawnBook drawn({});
    drawn->write({0, 0, 3, 0}, texts.provider());
    const std::size_t units[] = {1, 0, 32767, 32767};
    for (int row = 0; row < 4; ++row)
        EXPECT_EQ(text_at(drawn.sheet(), row, 0).size(), units[row]);
    EXPECT_EQ(drawn->typeCheck(1, 0), cell_type::other);
}

TEST(Write, GoesColumnAfterColumn) {
    DrawnBook drawn({});
    const double numbers[] = {1, 2, 3, 4};
    drawn->write({1, 2, 2, 3}, numbers);
    EXPECT_EQ(number_at(drawn.sheet(), 2, 2), 2.0);
    EXPECT_EQ(number_at(drawn.sheet(), 1, 3), 3.0);

    const bool booleans[] = {true, false};
    drawn->write({0, 0, 1, 0}, booleans);
    const unsigned char bytes[] = {0, 7};
    drawn->write({2, 0, 3, 0}, bytes);
    for (int row = 0; row < 4; ++row) {
        EXPECT_EQ(drawn->typeCheck(row, 0), cell_type::boolean);
        EXPECT_EQ(number_at(drawn.sheet(), row, 0), row == 0 || row == 3 ? 1.0 : 0.0);
    }
}

TEST(Write, ReportsTheFirstOfTheCellsThatHaveNoPlace) {
    DrawnBook drawn({});
    LogLines log;
    const double numbers[] = {1, 2, 3};
    drawn->write({0, 16383, 0, 16385}, numbers);
    const Lines lines = log.take();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(number_at(drawn.sheet(), 0, 16383), 1.0);
    drawn->write({INT_MAX - 1, 0, INT_MAX, 0}, numbers);
    EXPECT_EQ(log.take().size(), 1u);
    const std::optional<Failure> failure = drawn.book().take_unreported_failure();
    ASSERT_TRUE(failure.has_value());
    EXPECT_NE(lines[0].find("column 16384 to"), std::string::npos) << lines[0];
    EXPECT_NE(failure->cause.find("column 16384 to"), std::string::npos) << "the first write's";
    EXPECT_NE(failure->kind, FailureKind::Unknown);
    EXPECT_FALSE(drawn.book().take_unreported_failure().has_value());
}

/// Supplies a value of each kind and notes which member was called.
struct Mixed {
    std::string calls{};
    double number = 2.0;
    static Mixed& of(void* context, char call) {
        auto& self = *static_cast<Mixed*>(context);
        self.calls += call;
        return self;
    }
    CellProvider provider() {
        return {this,
                [](void* c) { return of(c, 't'), std::u16string(u"x"); },
                [](void* c) { return of(c, 'n').number; },
                [](void* c) { return of(c, 'd'), SerialDatenum{1463.0}; },
                [](void* c) { return of(c, 'b'), true; },
                [](void* c) { of(c, 's'); }};
    }
};

TEST(WriteMixed, CallsOneMemberPerCell) {
    using enum cell_type;
    const cell_type types[] = {number, text, date, boolean, empty, other, error, cell_type{99}};
    DrawnBook drawn({.dates_1904 = true});
    Mixed values;
    drawn->write({0, 0, 7, 0}, types, values.provider(), false);
    EXPECT_EQ(values.calls, "ntdbssss");
    const cell_type found[] = {number, text, date, boolean, text, text, text, text};
    for (int row = 0; row < 8; ++row) {
        EXPECT_EQ(drawn->typeCheck(row, 0), found[row]) << row;
        EXPECT_EQ(text_at(drawn.sheet(), row, 0), row == 1 ? u"x" : u"") << row;
    }
    EXPECT_EQ(number_at(drawn.sheet(), 2, 0), 1.0);
}

TEST(WriteMixed, KeepsFormatsOnRequest) {
    // The number format shows in the type of a number that is written last with its format kept.
    const struct {
        const char* what;
        cell_type type;
        double number;
    } cases[] = {{"number", cell_type::number, 5.0},
                 {"NaN", cell_type::number, kNaN},
                 {"text", cell_type::text, 0.0},
                 {"boolean", cell_type::boolean, 0.0},
                 {"nothing", cell_type::empty, 0.0}};
    for (const auto& test : cases)
        for (const bool preserve : {false, true}) {
            DrawnBook drawn({.rows = {"d5"}});
            Mixed first{.number = test.number}, second;
            drawn->write(kA1, &test.type, first.provider(), preserve);
            constexpr cell_type number = cell_type::number;
            drawn->write(kA1, &number, second.provider(), true);
            EXPECT_EQ(drawn->typeCheck(0, 0), preserve ? cell_type::date : cell_type::number)
                << test.what;
        }
}

TEST(WriteMixed, GivesDatesTheBooksFormatWhateverTheFlag) {
    DrawnBook drawn({.rows = {"1~p"}});
    const cell_type type = cell_type::date;
    drawn->write(kA1, &type, Mixed().provider(), true);
    EXPECT_EQ(drawn->typeCheck(0, 0), cell_type::date);
}

TEST(WriteMixed, KeepsFormatsOfRowsThatWereNotLoaded) {
    DrawnBook drawn({.rows = {"1", "2", "d3"}}, 0, 0);
    const cell_type type = cell_type::number;
    drawn->write({2, 0, 2, 0}, &type, Mixed().provider(), true);
    EXPECT_EQ(drawn->typeCheck(2, 0), cell_type::date);
    const auto saved = drawn.saved();
    EXPECT_EQ(saved->typeCheck(2, 0), cell_type::date);
    EXPECT_EQ(number_at(*saved, 1, 0), 2.0);
}

TEST(SheetChanges, UnmergeRemovesOnlyRegionsThatLieWithin) {
    DrawnBook drawn({.rows = {"1 . ."}, .merges = {"A1:B2", "D1:D3", "A4:B5", "C1:C2"}});
    const Range all{0, 0, 4, 3};
    std::vector<double> numbers(20);
    const auto merged_cells = [&] {
        drawn->read(all, numbers.data(), MergedCellColumnRule::repeat, MergedCellRowRule::repeat);
        const std::vector<bool> flags = drawn->get_merged_cells_vector();
        return std::count(flags.begin(), flags.end(), true);
    };
    EXPECT_EQ(merged_cells(), 13);
    drawn->unmerge({0, 0, 1, 3});
    EXPECT_EQ(merged_cells(), 7) << "the region that is partly inside stays";
    EXPECT_EQ(numbers[1], 0.0) << "no value of a region that is gone";
}

TEST(SheetChanges, AutoFitWidensColumnsOfDates) {
    DrawnBook drawn({});
    const SerialDatenum dates[] = {{45000.0}, {45001.0}};
    drawn->write({0, 2, 0, 3}, dates);
    const cell_type types[] = {cell_type::date, cell_type::number};
    drawn->write({0, 5, 0, 6}, types, Mixed().provider(), false);
    workbook::Sheet& library = *drawn->handle();
    drawn->auto_fit_column_widths({0, 3, 5, 6});
    EXPECT_LT(library.column_width(2), 14.71) << "not asked for";
    EXPECT_EQ(library.column_width(3), 14.71);
    EXPECT_EQ(library.column_width(5), 14.71) << "a date in a mixed write";
    EXPECT_LT(library.column_width(6), 14.71);
    const std::u16string long_text(40, u'x');
    Texts texts{{long_text}};
    drawn->write({1, 3, 1, 3}, texts.provider());
    drawn->auto_fit_column_widths({0, 3, 5, 3});
    EXPECT_GT(library.column_width(3), 14.71) << "wide enough already";
}

TEST(SheetChanges, FailWithTheirIdentifier) {
    fake::FakeWorkbook script;
    script.message = "why";
    script.error_kind = workbook::ErrorKind::Refused;
    fake::FakeBook library_book(script);
    const std::u16string file = u"f.xlsx";
    libxl::FailureReporter reporter(library_book, file);
    fake::FakeSheet library;
    LibXLSheet sheet(library, {.reporter = &reporter});
    library.can_change = false;
    const double number = 1.0;
    const struct {
        const char* what;
        std::function<void()> action;
        int id;
        const char* log;
    } cases[] = {
        {"clear", [&] { sheet.clear(kA1); }, 10, "[LIBXL SHEET CLEAR MSG]: why"},
        {"clear cell",
         [&] {
             sheet.clear(Cell{0, 0});
         },
         10, "[LIBXL SHEET CLEAR MSG]: why"},
        {"hide", [&] { sheet.hidden(sheet::hidden::hidden); }, 19, "[LIBXL SHEET HIDDEN MSG]: why"},
        {"no such state", [&] { sheet.hidden(sheet::hidden{3}); }, 19, nullptr},
        {"unmerge", [&] { sheet.unmerge(kA1); }, 27, "[LIBXL SHEET UNMERGE MSG]: why"},
        {"name", [&] { sheet.name(u"x"); }, -1, "[LIBXL SHEET NAME MSG]: why"},
        {"protect", [&] { sheet.set_protected(true); }, -1, "[LIBXL SHEET PROTECT MSG]: why"},
        {"fit", [&] { sheet.auto_fit_column_widths(kA1); }, -1, "[LIBXL SHEET AUTOFIT MSG]: why"},
        {"write", [&] { sheet.write(kA1, &number); }, -1, "[LIBXL SHEET WRITE MSG]: why"},
    };
    for (const auto& test : cases) {
        LogLines log;
        EXPECT_EQ(thrown_id(test.action), test.id) << test.what;
        EXPECT_EQ(log.take(), test.log ? Lines{test.log} : Lines{}) << test.what;
        const auto unreported = reporter.take_unreported();
        EXPECT_EQ(unreported.has_value(), test.id == -1) << test.what;
        const Failure failure = unreported ? *unreported : failure_of_thrown(test.action);
        if (test.log == nullptr) continue;
        EXPECT_EQ(failure.kind, FailureKind::Refused) << test.what;
        EXPECT_EQ(failure.file, file) << test.what;
    }
}

} // namespace
} // namespace spreadsheet
