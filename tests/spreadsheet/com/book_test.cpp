// SPDX-License-Identifier: Apache-2.0
//
// Books of a spreadsheet application: opening, making, sheets, saving, closing.
#include "spreadsheet/failure.h"
#include "tests/spreadsheet/com/com_fixture.h"

namespace spreadsheet {
namespace {

using std::chrono_literals::operator""ms;

class ComBook : public ComTest {};

TEST_F(ComBook, SaysWhatItIs) {
    file->date_1904 = true;
    const auto book = open();
    EXPECT_TRUE(book->is_interactive());
    EXPECT_TRUE(book->is_loaded());
    EXPECT_TRUE(book->are_dates_1904());
    EXPECT_FALSE(book->is_sheet_loaded() || book->sheet_names_only_required());
    EXPECT_EQ(book->format(), book::format::XLSX);
    EXPECT_EQ(book->get_sheet_name(0), std::nullopt);
    EXPECT_TRUE(book->get_sheet_names().empty());
    EXPECT_EQ(book->get_file_name(true), u"");
    script.refused["Workbook.Date1904"] = E_FAIL;
    EXPECT_FALSE(book->are_dates_1904());
    EXPECT_EQ(thrown_id([&] { book->init_from_memory("", 0, book::format::XLSX); }), 15);
    std::vector<unsigned char> bytes;
    EXPECT_EQ(thrown_id([&] { book->save_to_memory(bytes); }), 14);
    // Loads of a part do nothing, so no book comes of them.
    EXPECT_EQ(thrown_id([] {
                  load_book_from_file_with_sheet_index(path(), book::format::XLSX,
                                                       book::interactive::application, 0);
              }),
              9);
}

TEST_F(ComBook, FailsToOpenWithTheErrorOfEachStep) {
    const std::pair<const char*, int> kRefused[] = {{"Workbooks.Open", 9},
                                                    {"Workbook.FileFormat", 9},
                                                    {"Workbook.Worksheets", 18},
                                                    {"Worksheets.Count", 18},
                                                    {"Worksheets.Item", 18}};
    for (const auto& [member, id] : kRefused) {
        script.refused = {{member, scripted::kRefused}};
        EXPECT_EQ(thrown_id([] { open(); }), id) << member;
        EXPECT_TRUE(script.applications[0]->alerts) << member;
        EXPECT_TRUE(script.applications[0]->workbooks.empty()) << member << ": left open";
    }
}

TEST_F(ComBook, SaysWhyAFileCannotBeOpened) {
    script.add_file(kRoot + u"plain.txt", {u"plain"});
    const auto failure = [](const std::u16string& name) {
        try {
            open(name);
        } catch (const Exception& e) {
            EXPECT_EQ(e.id(), error_id::book_not_loaded);
            return failure_of(e);
        }
        return Failure{};
    };
    EXPECT_EQ(failure(u"none.xlsx").kind, FailureKind::FileNotFound);
    EXPECT_EQ(failure(u"none.xlsx").file, u"none.xlsx") << "as the caller gave it";
    EXPECT_EQ(failure(kRoot + u"plain.txt").kind, FailureKind::NotAWorkbook);
    EXPECT_EQ(failure(kRoot + u"plain.txt").file, kRoot + u"plain.txt");
    const std::pair<HRESULT, FailureKind> kResults[] = {
        {scripted::kRefused, FailureKind::FileNotFound},
        {E_OUTOFMEMORY, FailureKind::OutOfMemory},
        {RPC_E_DISCONNECTED, FailureKind::NoApplication},
        // The server is unavailable; its call failed.
        {static_cast<HRESULT>(0x800706ba), FailureKind::NoApplication},
        {static_cast<HRESULT>(0x800706be), FailureKind::NoApplication}};
    for (const auto& [result, kind] : kResults) {
        script.refused["Workbooks.Open"] = result;
        EXPECT_EQ(failure(u"none.xlsx").kind, kind) << result;
    }
}

TEST_F(ComBook, GivesTheApplicationPathsFromTheRoot) {
    const auto book = open();
    book->save(u"saved.xlsx");
    EXPECT_TRUE(file->path.ends_with(u"saved.xlsx"));
    EXPECT_GT(file->path.size(), std::u16string(u"saved.xlsx").size());
}

TEST_F(ComBook, WaitsFiveSecondsForAWorkbookThatIsBusy) {
    const struct {
        int busy_reads;
        bool opens;
        std::chrono::milliseconds slept;
    } kCases[] = {{0, true, 0ms}, {60, true, 3000ms}, {100, true, 5000ms}, {101, false, 5000ms}};
    for (const auto& expected : kCases) {
        file->busy_reads = expected.busy_reads;
        clock.slept = 0ms;
        EXPECT_EQ(thrown_id([] { open(); }), expected.opens ? -1 : 9) << expected.busy_reads;
        EXPECT_EQ(clock.slept, expected.slept) << expected.busy_reads;
    }
}

TEST_F(ComBook, IsMadeWithTheSheetsAskedFor) {
    const struct {
        int made;
        std::size_t asked;
        std::vector<std::u16string> names;
    } kCases[] = {{3, 1, {u"Sheet1"}},
                  {1, 1, {u"Sheet1"}},
                  // New sheets come before the active one.
                  {3, 5, {u"Sheet5", u"Sheet4", u"Sheet1", u"Sheet2", u"Sheet3"}}};
    for (const auto& expected : kCases) {
        script.sheets_in_new_workbook = expected.made;
        const auto book = make(expected.asked);
        EXPECT_EQ(names_of(*book), expected.names);
        std::vector<std::u16string> in_application;
        for (const auto& sheet : script.applications[0]->workbooks.back()->sheets)
            in_application.push_back(sheet->name);
        EXPECT_EQ(in_application, expected.names);
    }
}

TEST_F(ComBook, IsMadeInTheFormatOfNewFiles) {
    const std::pair<book::format, LONG> kFormats[] = {
        {book::format::XLS, 50}, {book::format::XLSX, 51}, {book::format::ODS, 51}};
    for (const auto& [format, number] : kFormats) {
        const auto book = make(1, format);
        EXPECT_EQ(script.applications[0]->workbooks.back()->file_format, number);
        EXPECT_EQ(script.applications[0]->default_save_format, 50) << "changed for good";
    }
}

TEST_F(ComBook, FailsToBeMadeWithTheErrorOfEachStep) {
    const struct {
        const char* member;
        std::size_t sheets;
        int id;
        LONG save_format;
    } kCases[] = {{"Application.DefaultSaveFormat", 2, 0, 50},
                  {"Workbooks.Add", 2, 0, 50},
                  {"Workbook.FileFormat", 2, 9, 50},
                  {"Worksheets.Add", 3, 18, 50},
                  {"Worksheets.Item", 2, 18, 50},
                  {"Worksheet.Delete", 1, 16, 50}};
    script.sheets_in_new_workbook = 2;
    for (const auto& expected : kCases) {
        script.refused = {{expected.member, scripted::kRefused}};
        EXPECT_EQ(thrown_id([&] { make(expected.sheets); }), expected.id) << expected.member;
        EXPECT_EQ(script.applications[0]->default_save_format, expected.save_format);
    }
    // Only where a workbook of format XLSX is not made, its default is put back.
    script.refused = {{"Workbooks.Add", scripted::kRefused}};
    EXPECT_EQ(thrown_id([] { make(1, book::format::XLSM); }), 0);
    EXPECT_EQ(script.applications[0]->default_save_format, 51);
    // The put alone.
    script.refused.clear();
    const auto calls = static_cast<int>(script.calls.size());
    EXPECT_EQ(thrown_id([] { make(2); }), -1);
    for (int call = calls; call < static_cast<int>(script.calls.size()); ++call)
        if (script.calls[static_cast<std::size_t>(call)] == "Application.DefaultSaveFormat put") {
            script.fail_at = static_cast<int>(script.calls.size()) + call - calls;
            break;
        }
    EXPECT_EQ(thrown_id([] { make(2); }), 0);
}

// --- Sheets

class ComBookSheets : public ComTest {
  protected:
    ComBookSheets() {
        for (const char16_t* name : {u"Zweite", u"\u00c9t\u00e9"})
            file->add_sheet(name, file->sheets.size())->workbook = file;
    }
    std::vector<std::u16string> names_in_application() const {
        std::vector<std::u16string> names;
        for (const auto& sheet : file->sheets)
            names.push_back(sheet->name);
        return names;
    }
};

TEST_F(ComBookSheets, AreFoundByNameInEitherCaseOfAsciiLetters) {
    const auto book = open();
    EXPECT_EQ(book->num_sheets(), 3u);
    EXPECT_EQ(book->sheet(u"ZWEITE"), book->sheet(1));
    EXPECT_EQ(book->sheet(u"\u00c9T\u00e9"), book->sheet(2));
    EXPECT_EQ(book->sheet(u"\u00e9t\u00e9"), nullptr);
    EXPECT_EQ(book->sheet(3), nullptr);
}

TEST_F(ComBookSheets, AreAddedAtTheirPlaceAndTheActiveOneStays) {
    const auto book = open();
    file->active = file->sheets[1];
    const auto active = file->active;
    EXPECT_EQ(add_sheet(book, 0, u"First", u"")->name(), u"First");
    add_sheet(book, 3, u"Fourth", u"");
    add_sheet(book, 5, u"Last", u"");
    EXPECT_EQ(names_of(*book), (std::vector<std::u16string>{u"First", u"Data", u"Zweite", u"Fourth",
                                                            u"\u00c9t\u00e9", u"Last"}));
    EXPECT_EQ(names_in_application(), names_of(*book));
    EXPECT_EQ(file->active, active);
}

TEST_F(ComBookSheets, AreMovedAndTheActiveOneStays) {
    const auto book = open();
    const auto active = file->active;
    for (std::size_t from = 0; from < 3; ++from)
        for (std::size_t to = 0; to < 3; ++to) {
            auto expected = names_of(*book);
            const std::u16string moved = expected[from];
            expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(from));
            expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(to), moved);
            reorder_sheet(book, from, to);
            EXPECT_EQ(names_of(*book), expected) << from << " to " << to;
            EXPECT_EQ(names_in_application(), expected) << from << " to " << to;
        }
    EXPECT_EQ(file->active, active);
    EXPECT_EQ(thrown_id([&] { reorder_sheet(book, 0, 3); }), 6);
    EXPECT_EQ(thrown_id([&] { reorder_sheet(book, 3, 0); }), 6);
    script.refused["Worksheet.Move"] = scripted::kRefused;
    EXPECT_EQ(thrown_id([&] { reorder_sheet(book, 0, 2); }), 7);
    EXPECT_EQ(names_of(*book), names_in_application());
}

TEST_F(ComBookSheets, ThatCannotBeAddedLeaveTheBookAsItWas) {
    const auto book = open();
    script.refused["Worksheets.Add"] = scripted::kRefused;
    EXPECT_EQ(thrown_id([&] { add_sheet(book, 1, u"New", u""); }), 2);
    script.refused.clear();
    EXPECT_EQ(thrown_id([&] { add_sheet(book, 1, u"New", u"Data"); }), 2) << "no copies";
    EXPECT_EQ(thrown_id([&] { add_sheet(book, 4, u"New", u""); }), 2);
    EXPECT_EQ(thrown_id([&] { book->add_sheet(1, u"a/b", u""); }), 26);
    EXPECT_EQ(book->num_sheets(), 3u);
    EXPECT_EQ(file->sheets.size(), 3u);
    EXPECT_EQ(file->active, file->sheets[0]);
}

TEST_F(ComBookSheets, AreRemoved) {
    const auto book = open();
    book->remove_sheet(1);
    EXPECT_EQ(names_of(*book), (std::vector<std::u16string>{u"Data", u"\u00c9t\u00e9"}));
    EXPECT_EQ(file->sheets.size(), 2u);
    EXPECT_EQ(thrown_id([&] { book->remove_sheet(2); }), 16);
    book->remove_sheet(0);
    EXPECT_EQ(thrown_id([&] { book->remove_sheet(0); }), 16) << "the last one";
    EXPECT_EQ(book->num_sheets(), 1u);
}

TEST_F(ComBookSheets, HaveAType) {
    const auto book = open();
    model().type = -4109;
    EXPECT_EQ(book->sheet_type(0), sheet::type::chart);
    EXPECT_EQ(book->sheet_type(1), sheet::type::worksheet);
    model().type = 3;
    EXPECT_EQ(thrown_id([&] { book->sheet_type(0); }), 17);
    script.refused["Worksheet.Type"] = scripted::kRefused;
    EXPECT_EQ(thrown_id([&] { book->sheet_type(1); }), 17);
}

// --- Saving and closing

TEST_F(ComBook, IsSavedInItsFormat) {
    const std::pair<book::format, LONG> kFormats[] = {
        {book::format::XLS, -4143}, {book::format::XLSX, 51}, {book::format::XLSM, 52},
        {book::format::XLSB, 50},   {book::format::XLTX, 54}, {book::format::XLTM, 53},
        {book::format::ODS, 60},    {book::format::CSV, 6}};
    for (const auto& [format, number] : kFormats) {
        const auto book = make(1, format);
        const std::u16string name = kRoot + u"out." + book::to_string(format);
        save_book(book, name);
        EXPECT_EQ(script.applications[0]->workbooks.back()->file_format, number);
        EXPECT_EQ(script.applications[0]->workbooks.back()->path, name);
    }
    const auto book = open();
    script.refused["Workbook.SaveAs"] = scripted::kRefused;
    EXPECT_EQ(thrown_id([&] { save_book(book, kRoot + u"out.xlsx"); }), 4);
}

TEST_F(ComBook, IsClosedWithoutAQuestion) {
    file->on_open = [&] { script.applications[0]->alerts = true; };
    {
        const auto book = open();
        EXPECT_FALSE(script.applications[0]->alerts);
    }
    EXPECT_TRUE(file->saved && file->closed);
    EXPECT_TRUE(script.applications[0]->alerts);
    file->on_open = nullptr;
    script.applications[0]->alerts = false;
    open();
    EXPECT_FALSE(script.applications[0]->alerts) << "the user had switched them off";
}

TEST_F(ComBook, AsksNothingAfterAnotherBookOfTheApplicationIsClosed) {
    auto first = make(1);
    const auto second = make(2);
    ASSERT_EQ(script.applications.size(), 1u);
    first.reset();
    second->remove_sheet(0); // the scripted application notes a question as a violation
    script.applications[0]->alerts = true;
    second->save(kRoot + u"saved.xlsx");
}

/// What a host may do with a book, each step of it.
void use_book() {
    const auto book = load_book_from_file(kRoot + u"book.xlsx", book::format::XLSX,
                                          book::interactive::application);
    const auto sheet = book->sheet(0);
    const Range range = sheet->used_range();
    const auto types = sheet->cell_types(range);
    std::vector<double> numbers(types.size());
    sheet->read(range, numbers.data());
    CellProvider numbers_from{
        &numbers,
        [](void*) { return std::u16string(u"x"); },
        [](void*) { return 2.0; },
        [](void*) { return SerialDatenum{3.0}; },
        [](void*) { return true; },
        [](void*) {},
    };
    sheet->write(range, types.data(), numbers_from, false);
    sheet->is_range_writeable(range);
    sheet->named_range(u"Total");
    add_sheet(book, 1, u"Added", u"");
    book->remove_sheet(0);
    save_book(book, kRoot + u"saved.xlsx");
    create_new_book(2, book::format::XLSX, book::interactive::application, u"");
}

/// Runs `use_book` in a world of its own and returns the number of calls.
int run_with(int number, bool dies, HRESULT result) {
    Script script;
    const scripted::Registration registration(script);
    const auto file = script.add_file(kRoot + u"book.xlsx", {u"Data", u"More"});
    for (int row = 0; row < 4; ++row) {
        file->sheets[0]->at(row, 0).value = Variant::number(row + 0.5);
        file->sheets[0]->at(row, 0).format = row % 2 == 0 ? u"0.0" : u"yyyy";
    }
    file->sheets[0]->filter = scripted::FilterModel{{0, 0, 3, 0}, {}};
    file->sheets[0]->filter->columns[1].first = Variant::text(u">1");
    file->names[u"Total"] = {u"Data", u"A1:A4"};
    (dies ? script.die_at : script.fail_at) = number;
    script.fail_with = result;
    initialize();
    try {
        use_book();
    } catch (const Exception&) {
    } catch (const std::bad_alloc&) {
        EXPECT_EQ(result, E_OUTOFMEMORY);
    }
    release();
    EXPECT_EQ(script.held(), 0) << number << " " << result;
    for (const std::string& violation : script.violations)
        EXPECT_EQ(violation.find("release"), std::string::npos) << number << ": " << violation;
    for (const auto& application : script.applications)
        EXPECT_TRUE(application->dead || application->visible ||
                    script.count("Application.Quit call") >=
                        static_cast<int>(script.applications.size()))
            << number << ": " << script.calls[static_cast<std::size_t>(number)];
    return static_cast<int>(script.calls.size());
}

TEST(ComBookFaults, LeaveNothingBehindWhicheverCallFails) {
    VirtualClock clock;
    foundation::replace_clock(&clock);
    const int calls = run_with(-1, false, S_OK);
    EXPECT_GT(calls, 80);
    for (int number = 0; number < calls; ++number) {
        run_with(number, false, RPC_E_CALL_REJECTED);
        run_with(number, false, E_OUTOFMEMORY);
        run_with(number, true, S_OK);
    }
    foundation::replace_clock(nullptr);
}

} // namespace
} // namespace spreadsheet
