// SPDX-License-Identifier: Apache-2.0
//
// Typed writes with their conversions, and the sheet's other changes, against a scripted library.
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/libxl/libxl_sheet.h"
#include "tests/spreadsheet/fake_library.h"
#include "tests/spreadsheet/log_lines.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using workbook::CellKind;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// A sheet over a fake one, with the date format of its book.
struct Fixture {
    explicit Fixture(bool dates_1904 = false)
        : sheet(library, {&date_format, nullptr, dates_1904, nullptr}) {}
    const fake::FakeCell& at(int row, int column) { return library.cells.at({row, column}); }

    fake::FakeSheet library;
    fake::FakeFormat date_format{22};
    LibXLSheet sheet;
};

TEST(WriteNumbers, ConvertsWhatCellsCannotHold) {
    const struct {
        double given;
        CellKind kind;
        double stored;
    } cases[] = {
        {1.5, CellKind::Number, 1.5},
        {kInfinity, CellKind::Number, 65535.0},
        {-kInfinity, CellKind::Number, 65535.0},
        {std::numeric_limits<double>::max(), CellKind::Number, std::numeric_limits<double>::max()},
        {kNaN, CellKind::Blank, 0.0},
    };
    for (const auto& test : cases) {
        Fixture f;
        f.sheet.write({0, 0, 0, 0}, &test.given);
        EXPECT_EQ(f.at(0, 0).kind, test.kind) << test.given;
        EXPECT_EQ(f.at(0, 0).number, test.stored) << test.given;
    }
}

TEST(WriteDates, CountFromTheWorkbooksEpoch) {
    const struct {
        bool dates_1904;
        double given;
        CellKind kind;
        double stored;
    } cases[] = {
        {false, 45000.25, CellKind::Number, 45000.25},
        {true, 1462.0, CellKind::Number, 0.0},
        {true, kNaN, CellKind::Blank, 0.0},
    };
    for (const auto& test : cases) {
        Fixture f(test.dates_1904);
        const SerialDatenum date{test.given};
        f.sheet.write({0, 0, 0, 0}, &date);
        EXPECT_EQ(f.at(0, 0).kind, test.kind);
        EXPECT_EQ(f.at(0, 0).number, test.stored);
        EXPECT_EQ(f.at(0, 0).is_date, test.kind == CellKind::Number);
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
    const struct {
        std::u16string given;
        CellKind kind;
        std::size_t stored_units;
    } cases[] = {
        {u"a", CellKind::String, 1},
        {u"", CellKind::Blank, 0},
        {std::u16string(32767, u'x'), CellKind::String, 32767},
        {std::u16string(40000, u'x'), CellKind::String, 32767},
    };
    for (const auto& test : cases) {
        Fixture f;
        Texts texts{{test.given}};
        f.sheet.write({0, 0, 0, 0}, texts.provider());
        EXPECT_EQ(f.at(0, 0).kind, test.kind);
        EXPECT_EQ(f.at(0, 0).text.size(), test.stored_units);
    }
}

TEST(Write, GoesColumnAfterColumn) {
    Fixture f;
    const double numbers[] = {1, 2, 3, 4};
    f.sheet.write({1, 2, 2, 3}, numbers);
    EXPECT_EQ(f.library.changes, (std::vector<std::string>{"1,2", "2,2", "1,3", "2,3"}));
    EXPECT_EQ(f.at(2, 2).number, 2.0);

    const bool booleans[] = {true, false};
    f.sheet.write({0, 0, 1, 0}, booleans);
    const unsigned char bytes[] = {0, 7};
    f.sheet.write({2, 0, 3, 0}, bytes);
    for (int row = 0; row < 4; ++row) {
        EXPECT_EQ(f.at(row, 0).kind, CellKind::Boolean);
        EXPECT_EQ(f.at(row, 0).number, row == 0 || row == 3 ? 1.0 : 0.0);
    }
}

TEST(Write, TakesARangeThatEndsWhereIntegersEnd) {
    Fixture f;
    const double numbers[] = {1, 2};
    f.sheet.write({INT_MAX - 1, 0, INT_MAX, 0}, numbers);
    EXPECT_EQ(f.library.changes.size(), 2u);
}

/// Supplies a value of each kind and notes which member was called.
struct Mixed {
    std::string calls;
    static Mixed& of(void* context, char call) {
        auto& self = *static_cast<Mixed*>(context);
        self.calls += call;
        return self;
    }
    CellProvider provider() {
        return {this,
                [](void* c) { return of(c, 't'), std::u16string(u"x"); },
                [](void* c) { return of(c, 'n'), 2.0; },
                [](void* c) { return of(c, 'd'), SerialDatenum{1463.0}; },
                [](void* c) { return of(c, 'b'), true; },
                [](void* c) { of(c, 's'); }};
    }
};

TEST(WriteMixed, CallsOneMemberPerCellAndKeepsFormatsOnRequest) {
    using enum cell_type;
    const cell_type types[] = {number, text, date, boolean, empty, other, error, cell_type{99}};
    for (const bool preserve : {false, true}) {
        Fixture f(true);
        f.library.formats.emplace(std::pair{0, 0}, fake::FakeFormat(9));
        f.library.formats.emplace(std::pair{2, 0}, fake::FakeFormat(9));
        f.library.formats.emplace(std::pair{7, 0}, fake::FakeFormat(9));
        Mixed values;
        f.sheet.write({0, 0, 7, 0}, types, values.provider(), preserve);
        EXPECT_EQ(values.calls, "ntdbssss");
        const std::string kept = preserve ? " format 9" : "";
        EXPECT_EQ(f.library.changes,
                  (std::vector<std::string>{"0,0" + kept, "1,0", "2,0 format 22", "3,0", "4,0",
                                            "5,0", "6,0", "7,0" + kept}));
        EXPECT_EQ(f.at(2, 0).number, 1.0);
        for (int row = 4; row < 8; ++row) {
            EXPECT_EQ(f.at(row, 0).kind, CellKind::String);
            EXPECT_EQ(f.at(row, 0).text, u"");
        }
    }
}

TEST(SheetChanges, UnmergeRemovesOnlyRegionsThatLieWithin) {
    Fixture f;
    f.library.regions = {{0, 0, 1, 1}, {0, 0, 0, 2}, {3, 0, 4, 1}, {1, 0, 1, 1}};
    f.sheet.unmerge({0, 0, 1, 1});
    EXPECT_EQ(f.library.changes, (std::vector<std::string>{"delete_merge 3", "delete_merge 0"}));
    EXPECT_EQ(f.library.regions, (std::vector<Range>{{0, 0, 0, 2}, {3, 0, 4, 1}}));
}

TEST(SheetChanges, AutoFitWidensColumnsOfDates) {
    Fixture f;
    const SerialDatenum dates[] = {{45000.0}, {45001.0}};
    f.sheet.write({0, 2, 0, 3}, dates);
    f.library.widths = {{2, 10.0}, {3, 20.0}};
    f.sheet.auto_fit_column_widths({0, 1, 5, 3});
    EXPECT_EQ(f.library.changes.back(), "auto_fit_columns 1 3");
    EXPECT_EQ(f.library.widths, (std::map<int, double>{{2, 14.71}, {3, 20.0}}));
}

TEST(SheetChanges, RangeIsWriteableUnlessALockedCellIsProtected) {
    Fixture f;
    const Range range{0, 0, 0, 1};
    EXPECT_TRUE(f.sheet.is_range_writeable(range)) << "not protected";
    f.sheet.set_protected(true);
    f.library.formats.emplace(std::pair{0, 0}, fake::FakeFormat(0, false));
    EXPECT_FALSE(f.sheet.is_range_writeable(range)) << "a cell without a format is locked";
    f.library.formats.emplace(std::pair{0, 1}, fake::FakeFormat(0, false));
    EXPECT_TRUE(f.sheet.is_range_writeable(range));
}

TEST(SheetChanges, ReachWhatWasReadBefore) {
    Fixture f;
    const double number = 1.0;
    constexpr auto columns = MergedCellColumnRule::first;
    constexpr auto rows = MergedCellRowRule::first;
    f.sheet.write({0, 0, 0, 0}, &number);
    EXPECT_EQ(f.sheet.get_data_span({0, 0, 9, 9}, columns, rows), (Range{0, 0, 0, 0}));
    f.sheet.write({1, 0, 1, 0}, &number);
    EXPECT_EQ(f.sheet.get_data_span({0, 0, 9, 9}, columns, rows), (Range{0, 0, 1, 0}));
}

TEST(SheetChanges, FailWithTheirIdentifier) {
    fake::FakeWorkbook script;
    script.message = "why";
    fake::FakeBook library_book(script);
    const std::u16string file;
    libxl::FailureReporter reporter(library_book, file);
    Fixture f;
    LibXLSheet sheet(f.library, {&f.date_format, nullptr, false, &reporter});
    f.library.can_change = false;
    f.library.regions = {{0, 0, 1, 1}};
    const double number = 1.0;
    const struct {
        const char* what;
        std::function<void()> action;
        int id;
        const char* log;
    } cases[] = {
        {"clear",
         [&] {
             sheet.clear(Range{0, 0, 1, 1});
         },
         10, "[LIBXL SHEET CLEAR MSG]: why"},
        {"clear cell",
         [&] {
             sheet.clear(Cell{0, 0});
         },
         10, "[LIBXL SHEET CLEAR MSG]: why"},
        {"hide", [&] { sheet.hidden(sheet::hidden::hidden); }, 19, "[LIBXL SHEET HIDDEN MSG]: why"},
        {"no such state", [&] { sheet.hidden(sheet::hidden{3}); }, 19, nullptr},
        {"unmerge",
         [&] {
             sheet.unmerge({0, 0, 9, 9});
         },
         27, "[LIBXL SHEET UNMERGE MSG]: why"},
        {"name", [&] { sheet.name(u"x"); }, -1, "[LIBXL SHEET NAME MSG]: why"},
        {"write",
         [&] {
             sheet.write({0, 0, 0, 0}, &number);
         },
         -1, "[LIBXL SHEET WRITE MSG]: why"},
    };
    for (const auto& test : cases) {
        LogLines log;
        EXPECT_EQ(thrown_id(test.action), test.id) << test.what;
        const std::vector<std::string> lines = log.take();
        EXPECT_EQ(lines, test.log ? std::vector<std::string>{test.log} : std::vector<std::string>{})
            << test.what;
    }
}

} // namespace
} // namespace spreadsheet
