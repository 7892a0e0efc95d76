// SPDX-License-Identifier: Apache-2.0
//
// Workbooks in LibreOffice: formats, sheets, names, what is refused.
#include <sstream>

#include "tests/automation/libreoffice/office_fixture.h"
#include "tests/automation/libreoffice/workbook_files.h"

namespace spreadsheet {
namespace {

using testing::ElementsAre;

std::vector<std::u16string> names_of(const IBook& book) {
    std::vector<std::u16string> names;
    for (std::size_t index = 0; index < book.num_sheets(); ++index)
        names.push_back(book.sheet(index)->name());
    return names;
}

TEST_F(OfficeTest, SavesEveryFormatThatItCan) {
    const Range range{0, 0, 3, 1};
    const CellTexts cells = {"text name",  "text 007",     "number 1.5",    "boolean true",
                             "date 45000", "date 45000.5", "boolean false", "empty"};
    const struct {
        book::format format;
        const char* name;
        bool is_read_by_files;
    } cases[] = {
        {book::format::XLS, "b.xls", true},   {book::format::XLSX, "b.xlsx", true},
        {book::format::XLSM, "b.xlsm", true}, {book::format::XLTX, "b.xltx", true},
        {book::format::ODS, "b.ods", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::u16string path = folder.file(c.name);
        {
            const auto book = make(2, c.format);
            enter(*book->sheet(0), range, cells);
            save_book(book, path);
            save_book(book, path); // over what is there
        }
        if (c.is_read_by_files) {
            EXPECT_EQ(cells_in_file(path, range), cells);
        }
        const auto again = load_book_from_file(path, kApplication);
        EXPECT_EQ(cells_of(*again->sheet(0), range), cells);
        EXPECT_EQ(again->num_sheets(), 2u);
    }
    const auto book = make(1, book::format::CSV);
    enter(*book->sheet(0), range, cells);
    save_book(book, folder.file("b.csv"));
    std::stringstream text;
    text << std::ifstream(folder.path() / "b.csv").rdbuf();
    EXPECT_EQ(text.str(), "name,2023-03-15\n007,2023-03-15 12:00:00\n1.5,FALSE\nTRUE,\n");
    EXPECT_THAT(
        cells_of(*load_book_from_file(folder.file("b.csv"), kApplication)->sheet(0), {0, 0, 1, 1}),
        ElementsAre("text name", "number 7", "date 45000", "date 45000.5"));
    EXPECT_EQ(folder.file_count(), 6u) << "there is a file beside the books";
}

TEST_F(OfficeTest, RefusesWhatItCannotSave) {
    const struct {
        book::format format;
        const char* name;
        const char* mentioned;
    } cases[] = {{book::format::XLSB, "b.xlsb", "cannot do that"},
                 {book::format::XLTM, "b.xltm", "cannot do that"},
                 {book::format::XLSX, "no such folder/b.xlsx", "refused"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto book = make(1, c.format);
        const auto save = [&] { save_book(book, folder.file(c.name)); };
        EXPECT_EQ(thrown_id(save), 4);
        EXPECT_THAT(failure_of_thrown(save).cause, testing::HasSubstr(c.mentioned));
    }
    EXPECT_EQ(folder.file_count(), 0u);
}

TEST_F(OfficeTest, RefusesWhatIsNotAWorkbook) {
    const auto failure = [&](const std::string& bytes, const std::string& name) {
        return failure_of_thrown([&] { open(bytes, name); });
    };
    EXPECT_EQ(failure("some,text\n1,2\n", "text.xlsx").kind, FailureKind::NotAWorkbook);
    EXPECT_EQ(failure(one_sheet_book("").substr(0, 300), "cut.xlsx").kind,
              FailureKind::NotAWorkbook);
    EXPECT_EQ(thrown_id([&] { open("a text", "b.xls"); }), 9);
    const auto missing = [&] { load_book_from_file(folder.file("none.ods"), kApplication); };
    EXPECT_EQ(thrown_id(missing), 9);
    EXPECT_EQ(failure_of_thrown(missing).kind, FailureKind::FileNotFound);
}

TEST_F(OfficeTest, ChangesSheets) {
    const auto book = make(2);
    // The application adds a sheet before the active one.
    EXPECT_THAT(names_of(*book), ElementsAre(u"Sheet2", u"Sheet1"));
    enter(*book->sheet(0), {0, 0, 0, 0}, {"number 1"});
    add_sheet(book, 0, u"First", u"");
    add_sheet(book, 3, u"Last", u"");
    EXPECT_THAT(names_of(*book), ElementsAre(u"First", u"Sheet2", u"Sheet1", u"Last"));
    save_book(book, folder.file("out.xlsx"));
    EXPECT_EQ(names_of(*load_book_from_file(folder.file("out.xlsx"), book::interactive::file)),
              names_of(*book));
    for (const char16_t* name : {u"last", u"a:b", u"", u"'a"})
        EXPECT_EQ(thrown_id([&] { book->sheet(1)->name(name); }), 26);
    EXPECT_EQ(thrown_id([&] { book->sheet(1)->name(std::u16string(32, u'n')); }), 26);
    EXPECT_EQ(thrown_id([&] { add_sheet(book, 1, u"Sheet1", u""); }), 26);
    book->sheet(1)->name(std::u16string(31, u'ä'));
    book->sheet(3)->hidden(sheet::hidden::very_hidden);
    EXPECT_EQ(book->sheet(3)->hidden(), sheet::hidden::very_hidden);
    book->sheet(2)->hidden(sheet::hidden::hidden);
    book->remove_sheet(0);
    EXPECT_EQ(thrown_id([&] { book->sheet(0)->hidden(sheet::hidden::hidden); }), 19)
        << "no sheet would be visible";
    EXPECT_EQ(book->sheet_type(0), sheet::type::worksheet);
    save_book(book, folder.file("out.xlsx"));
    const auto saved = load_book_from_file(folder.file("out.xlsx"), book::interactive::file);
    EXPECT_THAT(names_of(*saved), ElementsAre(std::u16string(31, u'ä'), u"Sheet1", u"Last"));
    EXPECT_EQ(saved->sheet(0)->hidden(), sheet::hidden::visible);
    EXPECT_NE(saved->sheet(1)->hidden(), sheet::hidden::visible);
    EXPECT_THAT(cells_of(*saved->sheet(0), {0, 0, 0, 0}), ElementsAre("number 1"));
    // The sheet that the user had before him is before him again.
    EXPECT_THAT(read_part(folder.path() / "out.xlsx", "xl/workbook.xml"),
                testing::HasSubstr("activeTab=\"0\""));
}

TEST_F(OfficeTest, FindsNames) {
    const auto book = open(one_sheet_book("<row r='1'><c r='A1'><v>1</v></c></row>", "",
                                          "<definedName name='Total'>Data!$B$2:$C$5</definedName>"
                                          "<definedName name='Own' localSheetId='0'>Data!$A:$A"
                                          "</definedName><definedName name='Rate'>0.5"
                                          "</definedName>"));
    const auto sheet = book->sheet(0);
    EXPECT_EQ(range_string(sheet->named_range(u"total")), u"B2:C5");
    EXPECT_EQ(sheet->named_range(u"Own").first_column, 0);
    for (const char16_t* name : {u"Rate", u"Absent"})
        EXPECT_EQ(thrown_id([&] { sheet->named_range(name); }), 23);
}

TEST_F(OfficeTest, ShiftsDatesOfThe1904System) {
    const std::string path = ZX_TEST_DATA "/dates_1904.xlsx";
    const auto book = load_book_from_file(std::u16string(path.begin(), path.end()), kApplication);
    ASSERT_TRUE(book->are_dates_1904());
    enter(*book->sheet(0), {30, 0, 30, 0}, {"date 45000.5"});
    save_book(book, folder.file("out.xlsx"));
    EXPECT_THAT(cells_in_file(folder.file("out.xlsx"), {30, 0, 30, 0}),
                ElementsAre("date 45000.5"));
    EXPECT_THAT(cells_of(*book->sheet(0), {30, 0, 30, 0}), ElementsAre("date 45000.5"));
    double raw = 0.0;
    book->sheet(0)->readDatesAsDoubles({30, 0, 30, 0}, &raw);
    EXPECT_EQ(raw, 45000.5 - 1462);
}

} // namespace
} // namespace spreadsheet
