// SPDX-License-Identifier: Apache-2.0
//
// Loading in every mode with its fall-back, and the cache of sheets.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/exception.h"
#include "spreadsheet/libxl/libxl_book.h"
#include "spreadsheet/sheet.h"
#include "tests/spreadsheet/fake_library.h"
#include "tests/spreadsheet/log_lines.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using Lines = std::vector<std::string>;
using workbook::SheetKind;

constexpr auto kXlsx = book::format::XLSX;

/// A worksheet, a chart sheet and a hidden worksheet.
fake::FakeWorkbook three_sheets() {
    fake::FakeWorkbook workbook;
    workbook.entries = {{u"Data"}, {u"Chart", SheetKind::Chart}, {u"Notes"}};
    workbook.message = "why";
    return workbook;
}

TEST(LibXLBook, LoadsEveryModeAndFallsBackToTheWhole) {
    using Load = std::function<void(LibXLBook&)>;
    const Load sheet = [](LibXLBook& b) { b.init_from_file_with_sheet(u"f", kXlsx, 2); };
    const Load rows = [](LibXLBook& b) { b.init_from_file_with_range(u"f", kXlsx, 2, 5, 9); };
    const Load names = [](LibXLBook& b) { b.init_from_file_only_sheetNames(u"f", kXlsx); };
    const std::string whole_log = "[LIBXL BOOK OBJ INIT_SHEETS MSG]: why";
    const struct {
        const char* what;
        Load load;
        bool part_fails;
        Lines calls;
        Lines log;
        std::size_t cached;
        bool sheet_loaded, names_only;
        std::size_t names;
    } cases[] = {
        {"whole",
         [](LibXLBook& b) { b.init_from_file(u"f", kXlsx); },
         false,
         {"load"},
         {whole_log},
         3,
         false,
         false,
         0},
        {"sheet", sheet, false, {"load_sheet 2"}, {}, 1, true, false, 0},
        {"rows", rows, false, {"load_partially 2 5 9"}, {}, 1, true, false, 0},
        {"names", names, false, {"load_info"}, {}, 0, false, true, 3},
        {"no sheet",
         sheet,
         true,
         {"load_sheet 2", "load"},
         {"[LIBXL BOOK OBJ INIT_FROM_FILE_WITH_SHEET MSG]: why", whole_log},
         3,
         false,
         false,
         0},
        {"no rows",
         rows,
         true,
         {"load_partially 2 5 9", "load"},
         {"[LIBXL BOOK OBJ INIT_FROM_FILE_WITH_RANGE MSG]: why", whole_log},
         3,
         false,
         false,
         0},
        {"no names",
         names,
         true,
         {"load_info", "load"},
         {"[LIBXL BOOK OBJ INIT_FROM_FILE_ONLY_SHEETNAMES LOADINFO FAILURE MSG]: why", whole_log},
         3,
         false,
         false,
         0},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.what);
        fake::FakeWorkbook script = three_sheets();
        script.can_load_part = script.can_load_info = !test.part_fails;
        LogLines log;
        {
            LibXLBook book(fake::creators(script));
            EXPECT_FALSE(book.is_loaded());
            test.load(book);
            EXPECT_TRUE(book.is_loaded());
            EXPECT_EQ(script.calls, test.calls);
            EXPECT_EQ(log.take(), test.log);
            EXPECT_EQ(book.format(), kXlsx);
            EXPECT_EQ(book.num_sheets(), 3u);
            EXPECT_EQ(book.get_file_name(true), u"f");
            EXPECT_EQ(book.is_sheet_loaded(), test.sheet_loaded);
            EXPECT_EQ(book.sheet_names_only_required(), test.names_only);
            EXPECT_EQ(book.get_sheet_names().size(), test.names);
            for (std::size_t i = 0; i <= 3; ++i)
                EXPECT_EQ(book.sheet(i) != nullptr, i < test.cached) << i;
            if (test.cached == 1) {
                EXPECT_EQ(book.sheet(std::size_t{0})->name(), u"Notes");
            }
        }
        EXPECT_EQ(script.calls.back(), "release");
        EXPECT_EQ(log.take(), Lines{"[LIBXL BOOK OBJ DTOR MSG]: why"});
    }
}

TEST(LibXLBook, ReportsAFileThatCannotBeLoaded) {
    fake::FakeWorkbook script = three_sheets();
    script.can_load = script.can_load_part = false;
    LogLines log;
    LibXLBook book(fake::creators(script));
    EXPECT_EQ(thrown_id([&] { book.init_from_file_with_sheet(u"f", kXlsx, 0); }), 9);
    EXPECT_EQ(log.take(), (Lines{"[LIBXL BOOK OBJ INIT_FROM_FILE_WITH_SHEET MSG]: why",
                                 "[LIBXL BOOK OBJ INIT_FROM_FILE_COMMON MSG]: why"}));
    EXPECT_FALSE(book.is_sheet_loaded());
    try {
        book.init_from_file(u"f", kXlsx);
        FAIL();
    } catch (const Exception& e) {
        EXPECT_STREQ(e.what(), error_id_message(error_id::book_not_loaded));
    }
}

TEST(LibXLBook, CarriesWhyAFileCannotBeLoadedOrSaved) {
    using foundation::files::FileProblem;
    using workbook::ErrorKind;
    const struct {
        ErrorKind kind;
        std::optional<FileProblem> problem;
        FailureKind loading, saving;
    } cases[] = {
        {ErrorKind::None, {}, FailureKind::Unknown, FailureKind::Unknown},
        {ErrorKind::File, FileProblem::NotFound, FailureKind::FileNotFound,
         FailureKind::FileNotWritten},
        {ErrorKind::File, FileProblem::AccessDenied, FailureKind::FileNotReadable,
         FailureKind::FileNotWritten},
        {ErrorKind::NotAWorkbook, {}, FailureKind::NotAWorkbook, FailureKind::NotAWorkbook},
        {ErrorKind::Encrypted, {}, FailureKind::Encrypted, FailureKind::Encrypted},
        {ErrorKind::Damaged, {}, FailureKind::Damaged, FailureKind::Damaged},
        {ErrorKind::Limit, {}, FailureKind::Limit, FailureKind::Limit},
        {ErrorKind::Missing, {}, FailureKind::Missing, FailureKind::Missing},
        {ErrorKind::Refused, {}, FailureKind::Refused, FailureKind::Refused},
        {ErrorKind::Memory, {}, FailureKind::OutOfMemory, FailureKind::OutOfMemory},
    };
    for (const auto& test : cases) {
        fake::FakeWorkbook script = three_sheets();
        script.message = "the reason";
        LibXLBook book(fake::creators(script));
        book.init_from_file(u"f", kXlsx);
        script.error_kind = test.kind;
        script.file_problem = test.problem;
        script.can_load = script.can_save = false;
        const Failure saving = failure_of_thrown([&] { book.save(u"g.xlsx"); });
        EXPECT_EQ(saving.kind, test.saving);
        EXPECT_EQ(saving.file, u"g.xlsx");
        const Failure loading = failure_of_thrown([&] { book.init_from_file(u"f", kXlsx); });
        EXPECT_EQ(loading.kind, test.loading);
        EXPECT_EQ(loading.cause, "The reason");
        EXPECT_EQ(loading.file, u"f");
    }
}

TEST(LibXLBook, GivesUpWhenMemoryRunsOut) {
    const struct {
        std::function<void(LibXLBook&)> load;
        const char* tag;
    } cases[] = {
        {[](LibXLBook& b) { b.init_from_file(u"f", kXlsx); }, "INIT_FROM_FILE_COMMON"},
        {[](LibXLBook& b) { b.init_from_file_with_sheet(u"f", kXlsx, 0); },
         "INIT_FROM_FILE_WITH_SHEET"},
        {[](LibXLBook& b) { b.init_from_file_with_range(u"f", kXlsx, 0, 0, 1); },
         "INIT_FROM_FILE_WITH_RANGE"},
        {[](LibXLBook& b) { b.init_from_file_only_sheetNames(u"f", kXlsx); },
         "INIT_FROM_FILE_ONLY_SHEETNAMES LOADINFO FAILURE"},
    };
    for (const auto& test : cases) {
        fake::FakeWorkbook script = three_sheets();
        script.has_memory = false;
        LibXLBook book(fake::creators(script));
        LogLines log;
        EXPECT_EQ(thrown_id([&] { test.load(book); }), 9) << test.tag;
        EXPECT_EQ(log.take(), Lines{std::string("[LIBXL BOOK OBJ ") + test.tag +
                                    " MSG]: there is not enough memory for the workbook"});
        EXPECT_EQ(script.calls.size(), 1u) << "the whole would need even more";
        EXPECT_EQ(failure_of_thrown([&] { test.load(book); }).kind, FailureKind::OutOfMemory);
    }
}

TEST(LibXLBook, RefusesFormatsBeforeAnyFileAccess) {
    const struct {
        int format;
        int id;
    } cases[] = {{0, 0},  {1, -1}, {2, -1}, {3, 30}, {4, -1},
                 {5, -1}, {6, 30}, {7, 30}, {8, 30}, {9, 30}};
    for (const auto& test : cases) {
        fake::FakeWorkbook script = three_sheets();
        const auto format = static_cast<book::format>(test.format);
        LibXLBook book(fake::creators(script));
        EXPECT_EQ(thrown_id([&] { book.init_from_file(u"f", format); }), test.id) << test.format;
        EXPECT_EQ(script.calls.empty(), test.id >= 0);
        EXPECT_EQ(book.is_loaded(), test.id < 0);
    }
}

TEST(LibXLBook, TakesTheOnlySheetWhateverTheIndex) {
    fake::FakeWorkbook script;
    script.entries = {{u"Only"}};
    LibXLBook book(fake::creators(script));
    book.init_from_file_with_sheet(u"f", kXlsx, 5);
    ASSERT_NE(book.sheet(std::size_t{0}), nullptr);
    EXPECT_EQ(book.sheet(std::size_t{0})->name(), u"Only");
}

TEST(LibXLBook, CutsIndicesThatTheLibraryCannotCount) {
    fake::FakeWorkbook script = three_sheets();
    LibXLBook book(fake::creators(script));
    const std::size_t beyond = std::size_t{1} << 32; // 0 in 32 bits
    EXPECT_EQ(thrown_id([&] { book.init_from_file_with_range(u"f", kXlsx, beyond, 0, beyond); }),
              30);
    EXPECT_EQ(script.calls, Lines{"load_partially 2147483647 0 2147483647"});
}

TEST(LibXLBook, KeepsAPlaceForAChartSheet) {
    fake::FakeWorkbook script = three_sheets();
    LibXLBook book(fake::creators(script));
    book.init_from_file(u"f", kXlsx);
    EXPECT_EQ(book.sheet_type(0), sheet::type::worksheet);
    EXPECT_EQ(book.sheet_type(1), sheet::type::chart);
    EXPECT_EQ(book.sheet_type(9), sheet::type::worksheet) << "unknown kinds count as worksheets";
    EXPECT_EQ(book.get_sheet_name(1), u"Chart");
    EXPECT_EQ(book.get_sheet_name(7), u"");
    ASSERT_NE(book.sheet(std::size_t{1}), nullptr);
    EXPECT_EQ(thrown_id([&] { book.sheet(std::size_t{1})->name(); }), 31);
}

TEST(LibXLBook, FindsSheetsByNameIgnoringCase) {
    fake::FakeWorkbook script = three_sheets();
    script.entries[0].name = u"\u00C4rger";
    LibXLBook book(fake::creators(script));
    book.init_from_file(u"f", kXlsx);
    LogLines log;
    EXPECT_EQ(book.sheet(u"\u00E4RGER"), book.sheet(std::size_t{0}));
    EXPECT_EQ(log.take(), Lines{}) << "the chart sheet comes later";
    EXPECT_EQ(book.sheet(u"notes"), book.sheet(std::size_t{2}));
    EXPECT_EQ(log.take(), Lines{"[LIBXL BOOK SHEET METHOD MSG]: why"});
    EXPECT_EQ(thrown_id([&] { book.sheet(u"CHART"); }), 31);
    EXPECT_EQ(book.sheet(u"other"), nullptr);
}

TEST(LibXLBook, LooksUpTheNameOfALoneChartSheet) {
    fake::FakeWorkbook script = three_sheets();
    LibXLBook book(fake::creators(script));
    book.init_from_file_with_sheet(u"f", kXlsx, 1);
    EXPECT_EQ(thrown_id([&] { book.sheet(u"Chart"); }), 31);
    EXPECT_EQ(book.sheet(u"Data"), nullptr) << "not loaded";
}

TEST(LibXLBook, HandlesSheetsThatTheLibraryDoesNotHandOut) {
    fake::FakeWorkbook script = three_sheets();
    script.entries[0].readable = false;
    LogLines log;
    {
        LibXLBook book(fake::creators(script));
        book.init_from_file(u"f", kXlsx);
        EXPECT_EQ(log.take(), Lines(2, "[LIBXL BOOK OBJ INIT_SHEETS MSG]: why"));
        EXPECT_EQ(book.sheet(std::size_t{1})->name(), u"Notes") << "the unreadable one is left out";
        EXPECT_EQ(thrown_id([&] { book.sheet(u"chart"); }), 31);
    }
    script.entries[2].kind = SheetKind::Unknown;
    log.take();
    LibXLBook whole(fake::creators(script));
    EXPECT_EQ(thrown_id([&] { whole.init_from_file(u"f", kXlsx); }), 30);
    LibXLBook part(fake::creators(script));
    log.take();
    EXPECT_EQ(thrown_id([&] { part.init_from_file_with_sheet(u"f", kXlsx, 2); }), 30);
    EXPECT_EQ(log.take(), Lines{"[LIBXL BOOK OBJ SETSHEETSINBOOK MSG]: why"});
}

TEST(LibXLBook, LeavesOutNamesThatTheLibraryCannotGive) {
    fake::FakeWorkbook script = three_sheets();
    script.entries[1].has_name = false;
    script.dates_1904 = true;
    LogLines log;
    LibXLBook book(fake::creators(script));
    book.init_from_file_only_sheetNames(u"f", kXlsx);
    EXPECT_EQ(book.get_sheet_names(), (std::vector<std::u16string>{u"Data", u"Notes"}));
    EXPECT_EQ(
        log.take(),
        Lines{"[LIBXL BOOK OBJ INIT_FROM_FILE_ONLY_SHEETNAMES GETSHEETNAME FAILURE MSG]: why"});
    EXPECT_TRUE(book.are_dates_1904());
}

TEST(LibXLBook, NeedsADateFormat) {
    const struct {
        const char* what;
        std::vector<int> formats;
        bool can_add;
        int id;
        std::vector<int> formats_after;
    } cases[] = {
        {"there already", {0, 22, 22}, false, -1, {0, 22, 22}},
        {"added", {0, 14}, true, -1, {0, 14, 22}},
        {"not possible", {0}, false, 9, {0}},
    };
    for (const auto& test : cases) {
        fake::FakeWorkbook script = three_sheets();
        script.formats.clear();
        for (const int number_format : test.formats)
            script.formats.emplace_back(number_format);
        script.can_add_format = test.can_add;
        LibXLBook book(fake::creators(script));
        EXPECT_EQ(thrown_id([&] { book.init_from_file(u"f", kXlsx); }), test.id) << test.what;
        std::vector<int> after;
        for (const fake::FakeFormat& format : script.formats)
            after.push_back(format.num_format());
        EXPECT_EQ(after, test.formats_after) << test.what;
    }
}

TEST(LibXLBook, NeedsADateFormatForASheetThatIsAddedToNames) {
    fake::FakeWorkbook script = three_sheets();
    script.formats.clear();
    LibXLBook book(fake::creators(script));
    book.init_from_file_only_sheetNames(u"f", kXlsx);
    EXPECT_TRUE(script.formats.empty());
    book.add_sheet(0, u"New", u"");
    ASSERT_EQ(script.formats.size(), 1u);
    EXPECT_EQ(script.formats[0].num_format(), 22);
}

} // namespace
} // namespace spreadsheet
