// SPDX-License-Identifier: Apache-2.0
//
// Making, changing and saving a book: what is asked of the library, what is logged and thrown when
// it refuses, and which sheet objects survive.
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

/// A worksheet, a chart sheet and another worksheet.
fake::FakeWorkbook three_sheets() {
    fake::FakeWorkbook workbook;
    workbook.entries = {{u"Data"}, {u"Chart", SheetKind::Chart}, {u"Notes"}};
    workbook.message = "why";
    return workbook;
}

/// The calls that change the book, in their order.
Lines changes(const fake::FakeWorkbook& script) {
    Lines found;
    for (const std::string& call : script.calls)
        for (const char* verb : {"insert_sheet", "delete_sheet", "move_sheet", "save"})
            if (call.starts_with(verb)) found.push_back(call);
    return found;
}

TEST(NewBook, HasNumberedSheetsAndTheSystemOf1900) {
    const struct {
        std::size_t count;
        const char16_t* base_name;
        std::vector<std::u16string> names;
    } cases[] = {
        {3, u"", {u"Sheet1", u"Sheet2", u"Sheet3"}},
        {2, u"Run ", {u"Run 1", u"Run 2"}},
        {1, u"a name of thirty-one characters", {u"a name of thirty-one character1"}},
        {1, u"a pair is cut as a whole ....\U0001F600", {u"a pair is cut as a whole ....1"}},
        {0, u"", {}},
    };
    for (const auto& test : cases) {
        fake::FakeWorkbook script;
        script.dates_1904 = true;
        script.formats.clear();
        LibXLBook book(fake::creators(script));
        book.init_new(test.count, kXlsx, test.base_name);
        EXPECT_TRUE(book.is_loaded());
        EXPECT_FALSE(book.are_dates_1904());
        ASSERT_EQ(book.num_sheets(), test.names.size());
        for (std::size_t i = 0; i < test.names.size(); ++i)
            EXPECT_EQ(book.sheet(i)->name(), test.names[i]);
        ASSERT_EQ(script.formats.size(), 1u);
        EXPECT_EQ(script.formats[0].num_format(), 22);
    }
}

TEST(BookChanges, AskTheLibraryAndKeepSheetObjects) {
    fake::FakeWorkbook script = three_sheets();
    LibXLBook book(fake::creators(script));
    book.init_from_file(u"f", kXlsx);
    const std::shared_ptr<ISheet> data = book.sheet(0), notes = book.sheet(2);

    const std::shared_ptr<ISheet> added = book.add_sheet(1, u"New", u"");
    EXPECT_EQ(added->name(), u"New");
    EXPECT_EQ(book.sheet(1), added);
    const std::shared_ptr<ISheet> copy = book.add_sheet(4, u"Copy", u"nOTES");
    EXPECT_EQ(book.sheet(4), copy);
    EXPECT_EQ(book.sheet(0), data) << "the object a caller holds stays the sheet's";
    EXPECT_EQ(book.sheet(3), notes);

    book.remove_sheet(0);
    EXPECT_EQ(thrown_id([&] { data->name(); }), 6) << "a removed sheet";
    EXPECT_EQ(book.sheet(2), notes);
    book.reorder_sheet(2, 0);
    book.save(u"out.xlsx");
    EXPECT_EQ(changes(script), (Lines{"insert_sheet 1 New", "insert_sheet 4 Copy of Notes",
                                      "delete_sheet 0", "move_sheet 2 0", "save out.xlsx"}));
}

TEST(BookChanges, WorkOnABookOfWhichOneSheetWasLoaded) {
    fake::FakeWorkbook script = three_sheets();
    script.entries[0].readable = false;
    LibXLBook book(fake::creators(script));
    book.init_from_file_with_sheet(u"f", kXlsx, 2);
    const std::shared_ptr<ISheet> added = book.add_sheet(0, u"New", u"");
    EXPECT_EQ(added->name(), u"New") << "the cache has fewer sheets than the book";
}

TEST(BookChanges, AreNotMadeBesideASheetOfUnknownKind) {
    const std::function<void(LibXLBook&)> changes_of_sheets[] = {
        [](auto& b) { b.add_sheet(0, u"n", u""); }, [](auto& b) { b.remove_sheet(0); },
        [](auto& b) { b.reorder_sheet(0, 1); }, [](auto& b) { b.move_sheet(b.sheet(0), 1); }};
    for (const auto& change : changes_of_sheets) {
        fake::FakeWorkbook script = three_sheets();
        script.entries[1].kind = SheetKind::Unknown;
        LibXLBook book(fake::creators(script));
        book.init_from_file_with_sheet(u"f", kXlsx, 0);
        EXPECT_EQ(thrown_id([&] { change(book); }), 30);
        EXPECT_EQ(changes(script), Lines{});
    }
}

TEST(MoveSheet, InsertsACopyAndDeletesTwoBehindTheOriginal) {
    fake::FakeWorkbook script;
    script.entries = {{u"A"}, {u"B"}, {u"C"}, {u"D"}};
    LibXLBook book(fake::creators(script));
    book.init_from_file(u"f", kXlsx);
    const std::shared_ptr<ISheet> moved = book.move_sheet(book.sheet(1), 0);
    EXPECT_EQ(changes(script), (Lines{"insert_sheet 0 B of B", "delete_sheet 3"}));
    EXPECT_EQ(moved, book.sheet(0));
}

TEST(BookChanges, FailWithTheirIdentifierAndTheLibrarysReason) {
    using Script = fake::FakeWorkbook;
    const auto none = [](Script&) {};
    const auto no_insert = [](Script& s) { s.can_insert = false; };
    const auto no_delete = [](Script& s) { s.can_delete = false; };
    const auto no_save = [](Script& s) { s.can_save = false; };
    const auto no_memory = [](Script& s) { s.has_memory = false; };
    std::vector<unsigned char> bytes;
    const struct {
        const char* what;
        std::function<void(Script&)> prepare;
        std::function<void(LibXLBook&)> action;
        int id;
        Lines log;
    } cases[] = {
        {"add",
         no_insert,
         [](auto& b) { b.add_sheet(0, u"n", u""); },
         2,
         {"[LIBXL BOOK OBJ ADD_SHEET, SHEET TO COPY IS EMPTY, MSG]: why"}},
        {"add a copy",
         no_insert,
         [](auto& b) { b.add_sheet(0, u"n", u"data"); },
         2,
         {"[LIBXL BOOK OBJ ADD_SHEET, SHEET TO COPY IS NOT EMPTY, MSG]: why"}},
        {"copy a chart sheet",
         none,
         [](auto& b) { b.add_sheet(0, u"n", u"chart"); },
         31,
         {"[LIBXL BOOK SHEET METHOD MSG]: why"}},
        {"copy no sheet",
         none,
         [](auto& b) { b.add_sheet(0, u"n", u"none"); },
         6,
         {"[LIBXL BOOK SHEET METHOD MSG]: why"}},
        {"remove",
         no_delete,
         [](auto& b) { b.remove_sheet(0); },
         16,
         {"[LIBXL BOOK OBJ REMOVE_SHEET MSG]: why"}},
        {"move, no copy",
         no_insert,
         [](auto& b) { b.move_sheet(b.sheet(0), 2); },
         7,
         {"[LIBXL BOOK OBJ MOVE_SHEET INSERTSHEET FAILURE MSG]: why"}},
        {"move, nothing deleted",
         no_delete,
         [](auto& b) { b.move_sheet(b.sheet(0), 2); },
         8,
         {"[LIBXL BOOK OBJ MOVE_SHEET DELSHEET FAILURE MSG]: why"}},
        {"move no sheet", none, [](auto& b) { b.move_sheet(nullptr, 2); }, 6, {}},
        {"reorder beyond the end", none, [](auto& b) { b.reorder_sheet(0, 3); }, 6, {}},
        {"save", no_save, [](auto& b) { b.save(u"f.xlsx"); }, 4, {"[LIBXL BOOK SAVE METHOD]: why"}},
        {"save without memory",
         no_memory,
         [](auto& b) { b.save(u"f.xlsx"); },
         4,
         {"[LIBXL BOOK SAVE METHOD]: there is not enough memory for the workbook"}},
        {"new, no sheets",
         no_insert,
         [](auto& b) { b.init_new(1, kXlsx, u""); },
         2,
         {"[LIBXL BOOK OBJ ADD_SHEET, SHEET TO COPY IS EMPTY, MSG]: why"}},
        {"new, no such format",
         none,
         [](auto& b) { b.init_new(1, book::format::CSV, u""); },
         30,
         {}},
        {"init_from_memory", none, [](auto& b) { b.init_from_memory("", 0, kXlsx); }, 15, {}},
        {"save_to_memory", none, [&](auto& b) { b.save_to_memory(bytes); }, 14, {}},
    };
    for (const auto& test : cases) {
        fake::FakeWorkbook script = three_sheets();
        LibXLBook book(fake::creators(script));
        book.init_from_file(u"f", kXlsx);
        test.prepare(script);
        LogLines log;
        EXPECT_EQ(thrown_id([&] { test.action(book); }), test.id) << test.what;
        EXPECT_EQ(log.take(), test.log) << test.what;
    }
}

} // namespace
} // namespace spreadsheet
