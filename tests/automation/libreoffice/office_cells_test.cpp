// SPDX-License-Identifier: Apache-2.0
//
// Cells in LibreOffice: what is read, what is entered, filters, protection.
#include <algorithm>

#include "tests/automation/libreoffice/office_fixture.h"
#include "tests/automation/libreoffice/workbook_files.h"

namespace spreadsheet {
namespace {

using testing::ElementsAre;

constexpr Range kColumnA{0, 0, 3, 0};

/// Rows below a header in A1:B5, filtered in column A.
std::string filtered_book(const std::string& criteria) {
    std::string rows = "<row r='1'><c r='A1' t='str'><v>kind</v></c><c r='B1'><v>0</v></c></row>";
    for (const char* row : {"2x", "3y", "4z", "5x"}) {
        const std::string number(1, row[0]);
        rows += "<row r='" + number + "'><c r='A" + number + "' t='str'><v>" + row[1] +
                "</v></c><c r='B" + number + "'><v>" + number + "</v></c></row>";
    }
    return one_sheet_book(rows, "<autoFilter ref='A1:B5'>" + criteria + "</autoFilter>",
                          "<definedName name='_xlnm._FilterDatabase' localSheetId='0' hidden='1'>"
                          "Data!$A$1:$B$5</definedName>");
}

TEST_F(OfficeTest, ComputesFormulasWithoutResults) {
    const auto book = open(one_sheet_book(
        "<row r='1'><c r='A1'><v>2</v></c><c r='B1'><f>A1*21</f></c><c r='C1'><f>A1&amp;\"x\"</f>"
        "</c><c r='D1'><f>A1=2</f></c><c r='E1'><f>1/0</f></c><c r='F1'><f>\"\"</f></c>"
        "<c r='G1' s='1'><f>45000+A1</f></c></row>"));
    EXPECT_THAT(cells_of(*book->sheet(0), {0, 0, 0, 7}),
                ElementsAre("number 2", "number 42", "text 2x", "boolean true", "error #DIV/0!",
                            "text ", "date 45002", "empty"));
}

TEST_F(OfficeTest, NamesErrors) {
    const std::pair<const char*, const char*> cases[] = {{"1/B1", "#DIV/0!"},
                                                         {"NA()", "#N/A"},
                                                         {"\"a\"+1", "#VALUE!"},
                                                         {"nowhere", "#NAME?"},
                                                         {"#REF!", "#REF!"},
                                                         {"EXP(1000)", "#NUM!"},
                                                         {"1/0", "#DIV/0!"},
                                                         {"#NULL!", "#NULL!"},
                                                         {"2", ""},
                                                         {"VLOOKUP(9,B1:C2,2,0)", "#N/A"}};
    std::string rows;
    CellTexts expected;
    for (const auto& [formula, text] : cases) {
        const std::string number = std::to_string(expected.size() + 1);
        rows += "<row r='" + number + "'><c r='A" + number + "'><f>" + formula + "</f></c></row>";
        expected.push_back(*text == 0 ? "number 2" : std::string("error ") + text);
    }
    const auto book = open(one_sheet_book(rows));
    EXPECT_EQ(cells_of(*book->sheet(0), {0, 0, 9, 0}), expected);
    enter(*book->sheet(0), {0, 1, 0, 1}, {"text a"});
    EXPECT_THAT(cells_of(*book->sheet(0), {0, 0, 0, 0}), ElementsAre("error #VALUE!"));
    book->sheet(0)->clear(Cell{0, 1});
    EXPECT_THAT(cells_of(*book->sheet(0), {0, 0, 0, 0}), ElementsAre("error #DIV/0!"));
}

TEST_F(OfficeTest, TakesFormatsForNoContents) {
    const std::string red = "<row r='1'><c r='A1' s='3'/></row>";
    const auto book = open(one_sheet_book(red + "<row r='3'><c r='C3' s='4'><v>2.5</v></c></row>"
                                                "<row r='5'><c r='B5'><v>1</v></c></row>"
                                                "<row r='9'><c r='F9' s='3'/></row>"));
    EXPECT_EQ(range_string(book->sheet(0)->used_range()), u"B3:C5");
    EXPECT_THAT(cells_of(*book->sheet(0), {2, 2, 2, 2}), ElementsAre("number 2.5"));
    EXPECT_EQ(open(one_sheet_book(red), "red.xlsx")->sheet(0)->used_range().count(), 0);
}

TEST_F(OfficeTest, ReadsWhatTheFileBackEndReads) {
    for (const char* name : {"numbers.xlsx", "number_formats.xlsx", "far_cell.xlsx",
                             "merged_regions.xlsx", "many_rows.xlsx", "empty_sheet.xlsx"}) {
        SCOPED_TRACE(name);
        const std::string path = std::string(ZX_TEST_DATA "/") + name;
        const std::u16string units(path.begin(), path.end());
        const auto expected = load_book_from_file(units, book::interactive::file);
        const auto actual = load_book_from_file(units, kApplication);
        ASSERT_EQ(actual->num_sheets(), expected->num_sheets());
        const Range range{0, 0, 60, 12};
        EXPECT_EQ(cells_of(*actual->sheet(0), range), cells_of(*expected->sheet(0), range));
    }
}

TEST_F(OfficeTest, KeepsTheTypeOfWhatItEnters) {
    const CellTexts entered = {
        "text 007",      "text =1+1",  "text 'quoted", "text TRUE",       "text 1e5",
        "text 2024-3-1", "text #N/A",  "text a\nb",    "text \U0001F600", "number -1.5e-300",
        "number 45000",  "date 45000", "date 45000.5", "boolean true",    "boolean false",
        "number 0.1",    "empty",      "number 1",     "text +1",         "date 60.25"};
    const Range range{2, 1, 11, 2};
    const auto book = make(1);
    const auto sheet = book->sheet(0);
    enter(*sheet, range, entered);
    EXPECT_EQ(cells_of(*sheet, range), entered);
    EXPECT_EQ(range_string(sheet->used_range()), u"B3:C12");
    // A format that is kept gives way where it would make something else of the value.
    enter(*sheet, kColumnA, {"boolean true", "date 45000", "date 45000", "number 1"});
    enter(*sheet, kColumnA, {"number 5", "number 46000", "boolean false", "date 45000.25"}, true);
    EXPECT_THAT(cells_of(*sheet, kColumnA),
                ElementsAre("number 5", "date 46000", "boolean false", "date 45000.25"));
    sheet->clear(Cell{1, 0});
    EXPECT_THAT(cells_of(*sheet, kColumnA),
                ElementsAre("number 5", "empty", "boolean false", "date 45000.25"));
    enter(*sheet, {1, 0, 1, 0}, {"date 45000"}, true);
    EXPECT_THAT(cells_of(*sheet, {1, 0, 1, 0}), ElementsAre("date 45000"));
    // Of columns with formats of their own; a time of day is a number.
    enter(*sheet, {20, 0, 21, 1}, {"date 45000", "date 0.25", "number 2", "number 3"});
    EXPECT_THAT(cells_of(*sheet, {20, 0, 21, 1}),
                ElementsAre("date 45000", "number 0.25", "number 2", "number 3"));
    std::vector<double> raw(1);
    sheet->readDatesAsDoubles({3, 0, 3, 0}, raw.data());
    EXPECT_EQ(raw[0], 45000.25);
}

TEST_F(OfficeTest, ReadsBlocksThatAreLargerThanABand) {
    // Of formats that change with every row, so that the search for dates goes to single cells.
    const Range range{0, 0, 20'999, 9};
    CellTexts entered;
    for (int cell = 0; cell < range.count(); ++cell)
        entered.push_back(cell % 3 == 0   ? "number " + std::to_string(cell % 1000 + 2)
                          : cell % 3 == 1 ? "date " + std::to_string(cell % 1000 + 1)
                                          : "text t" + std::to_string(cell));
    const auto book = make(1);
    enter(*book->sheet(0), range, entered);
    const CellTexts read = cells_of(*book->sheet(0), range);
    ASSERT_EQ(read.size(), entered.size());
    const auto difference = std::mismatch(read.begin(), read.end(), entered.begin());
    EXPECT_TRUE(difference.first == read.end())
        << "cell " << difference.first - read.begin() << ": " << *difference.first;
    // Of a whole column only the used part is asked for.
    EXPECT_EQ(cells_of(*book->sheet(0), {0, 0, 1'048'575, 0}).at(20'999), entered[20'999]);
}

TEST_F(OfficeTest, PutsAFilterBackAfterAWrite) {
    const struct {
        const char* criteria;
        CellTexts shown; ///< in column A once the last row is "y"
    } cases[] = {
        {"<filterColumn colId='0'><filters><filter val='x'/></filters></filterColumn>", {"2"}},
        {"<filterColumn colId='0'><filters><filter val='x'/><filter val='y'/></filters>"
         "</filterColumn>",
         {"2", "3", "5"}},
        {"<filterColumn colId='1'><customFilters and='1'><customFilter "
         "operator='greaterThanOrEqual' val='3'/><customFilter operator='lessThan' val='5'/>"
         "</customFilters></filterColumn>",
         {"3", "4"}},
        {"", {"2", "3", "4", "5"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.criteria);
        const auto book = open(filtered_book(c.criteria));
        enter(*book->sheet(0), {4, 0, 4, 0}, {"text y"});
        save_book(book, folder.file("out.xlsx"));
        // Rows that the filter hides are marked so in the file.
        const std::string part = read_part(folder.path() / "out.xlsx", "xl/worksheets/sheet1.xml");
        EXPECT_NE(part.find("<autoFilter ref=\"A1:B5\""), std::string::npos);
        CellTexts shown;
        for (const std::string number : {"2", "3", "4", "5"}) {
            const std::size_t row = part.find("<row r=\"" + number + "\"");
            const std::string tag = part.substr(row, part.find('>', row) - row);
            if (tag.find("hidden=\"true\"") == std::string::npos) shown.push_back(number);
        }
        EXPECT_EQ(shown, c.shown);
    }
}

TEST_F(OfficeTest, StopsAWriteThroughAFilterThatCannotBePutBack) {
    for (const char* criteria :
         {"<filterColumn colId='1'><top10 val='2'/></filterColumn>",
          "<filterColumn colId='0'><filters><filter val='x'/><filter val='y'/><filter val='z'/>"
          "</filters></filterColumn>"}) {
        SCOPED_TRACE(criteria);
        const auto book = open(filtered_book(criteria));
        const auto sheet = book->sheet(0);
        EXPECT_EQ(thrown_id([&] { enter(*sheet, {4, 0, 4, 0}, {"text y"}, true); }), 37);
        EXPECT_THAT(cells_of(*sheet, {4, 0, 4, 0}), ElementsAre("text x"));
    }
}

TEST_F(OfficeTest, RefusesToChangeProtectedCells) {
    const auto book = open(one_sheet_book(
        "<row r='1'><c r='A1'><v>1</v></c><c r='B1' s='2'><v>2</v></c><c r='C1' s='2'/></row>",
        "<sheetProtection sheet='1'/>"));
    const auto sheet = book->sheet(0);
    const Range locked{0, 0, 0, 0};
    const Range unlocked{0, 1, 0, 2};
    const Range both{0, 0, 0, 1};
    EXPECT_FALSE(sheet->is_range_writeable(locked));
    EXPECT_FALSE(sheet->is_range_writeable(both));
    EXPECT_TRUE(sheet->is_range_writeable(unlocked));
    EXPECT_EQ(thrown_id([&] { enter(*sheet, both, {"number 7", "number 8"}, true); }), 28);
    EXPECT_EQ(thrown_id([&] { sheet->clear(locked); }), 10);
    EXPECT_NE(thrown_id([&] { sheet->unmerge(locked); }), -1);
    enter(*sheet, unlocked, {"number 8", "number 9"}, true);
    EXPECT_THAT(cells_of(*sheet, {0, 0, 0, 2}), ElementsAre("number 1", "number 8", "number 9"));
}

TEST_F(OfficeTest, WritesNothingWhereTheLastRowIsLocked) {
    std::string rows;
    for (const char* number : {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12"})
        rows += std::string("<row r='") + number + "' s='2' customFormat='1'/>";
    const auto book = open(one_sheet_book(rows, "<sheetProtection sheet='1'/>"));
    const auto sheet = book->sheet(0);
    // So wide that it is written in two parts, of which the first is not locked.
    const Range range{0, 0, 12, 16'383};
    EXPECT_TRUE(sheet->is_range_writeable({0, 0, 11, 16'383}));
    const CellTexts ones(static_cast<std::size_t>(range.count()), "number 1");
    EXPECT_EQ(thrown_id([&] { enter(*sheet, range, ones, true); }), 28);
    EXPECT_THAT(cells_of(*sheet, {0, 0, 0, 0}), ElementsAre("empty"));
}

TEST_F(OfficeTest, UnmergesCells) {
    const auto book = open(one_sheet_book("<row r='1'><c r='A1'><v>1</v></c></row>",
                                          "<mergeCells count='1'><mergeCell ref='A1:B2'/>"
                                          "</mergeCells>"));
    book->sheet(0)->unmerge({0, 0, 0, 0});
    book->sheet(0)->auto_fit_column_widths({0, 0, 0, 1});
    save_book(book, folder.file("out.xlsx"));
    EXPECT_EQ(read_part(folder.path() / "out.xlsx", "xl/worksheets/sheet1.xml").find("mergeCell "),
              std::string::npos);
}

} // namespace
} // namespace spreadsheet
