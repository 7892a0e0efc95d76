// SPDX-License-Identifier: Apache-2.0
//
// Books whose sheets come, go, move and are named otherwise, looked at as they would be saved.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/unicode.h"
#include "tests/workbook/memory_source.h"
#include "tests/workbook/structured_book.h"
#include "workbook/error.h"

namespace workbook {
namespace {

using test::EditedBook;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::string open_text(EditedBook& book, std::size_t index) {
    return test::read_all(*book.editor().open_sheet(book.sheet(index)));
}

/// The sentence of the error that `operation` throws; the book must then be as it was.
template <class Operation>
std::string refusal(EditedBook& book, const Operation& operation) {
    const std::string before = book.sheet_names();
    try {
        operation(book.editor());
    } catch (const Error& error) {
        EXPECT_EQ(book.sheet_names(), before);
        EXPECT_THAT(book.changed_parts(), IsEmpty());
        return error.what();
    }
    return "done";
}

std::string formula_of(const WorkbookPart& book, std::u16string_view name,
                       std::optional<int> sheet) {
    for (const DefinedName& defined : book.defined_names)
        if (defined.name == name && defined.sheet_index == sheet) return defined.formula;
    return "absent";
}

TEST(WorkbookEditor, ChangesNothingByItself) {
    EditedBook book;
    EXPECT_TRUE(book.editor().changes().empty());
    book.editor().set_document_type(DocumentType::Workbook);
    book.editor().set_state(book.sheet(0), SheetState::Hidden);
    book.editor().set_state(book.sheet(0), SheetState::Visible);
    book.editor().rename_sheet(book.sheet(0), u"Other");
    book.editor().rename_sheet(book.sheet(0), u"Data");
    book.editor().move_sheet(0, 2);
    book.editor().move_sheet(2, 0);
    book.editor().set_date_1904(true);
    book.editor().set_date_1904(false);
    book.editor().insert_sheet(1, u"New");
    book.editor().remove_sheet(1);
    EXPECT_THAT(book.changed_parts(), IsEmpty());
    EXPECT_TRUE(book.editor().changes().dropped.empty());
}

TEST(WorkbookEditor, RefusesNamesAndPlaces) {
    struct Case {
        std::u16string name;
        const char* reason;
    } const cases[] = {
        {u"", "empty"},
        {std::u16string(32, u'x'), "31"},
        {u"a:b", "none of"},
        {u"a\\b", "none of"},
        {u"a/b", "none of"},
        {u"a?b", "none of"},
        {u"a*b", "none of"},
        {u"[a", "none of"},
        {u"a]", "none of"},
        {u"'a", "apostrophe"},
        {u"a'", "apostrophe"},
        {u"a\nb", "no file"},
        {u"a\xD800", "no file"},
        {u"dATA", "another sheet"},
        {u"IT'S HERE", "another sheet"},
    };
    EditedBook book;
    for (const Case& c : cases) {
        const auto insert = [&](WorkbookEditor& editor) { editor.insert_sheet(0, c.name); };
        const auto copy = [&](WorkbookEditor& editor) {
            editor.copy_sheet(0, c.name, book.sheet(1));
        };
        const auto rename = [&](WorkbookEditor& editor) {
            editor.rename_sheet(book.sheet(1), c.name);
        };
        EXPECT_THAT(refusal(book, insert), HasSubstr(c.reason));
        EXPECT_THAT(refusal(book, copy), HasSubstr(c.reason));
        EXPECT_THAT(refusal(book, rename), HasSubstr(c.reason));
    }
    const auto far = [](WorkbookEditor& editor) { editor.insert_sheet(5, u"x"); };
    const auto move = [](WorkbookEditor& editor) { editor.move_sheet(0, 4); };
    const auto remove = [](WorkbookEditor& editor) { editor.remove_sheet(4); };
    EXPECT_THAT(refusal(book, far), HasSubstr("index 5"));
    EXPECT_THAT(refusal(book, move), HasSubstr("index 4"));
    EXPECT_THAT(refusal(book, remove), HasSubstr("index 4"));
    book.editor().rename_sheet(book.sheet(0), u"DATA");
    EXPECT_EQ(book.sheet_names(), "DATA|Report|It's here|Graph") << "its own name in another case";
    book.editor().rename_sheet(book.sheet(0), std::u16string(31, u'x'));
}

TEST(WorkbookEditor, KeepsTheLastVisibleSheet) {
    EditedBook book;
    book.editor().remove_sheet(3);
    book.editor().set_state(book.sheet(1), SheetState::VeryHidden);
    const auto reason = [&](const auto& operation) {
        try {
            operation();
        } catch (const Error& error) {
            return std::string(error.what());
        }
        return std::string("done");
    };
    EXPECT_THAT(reason([&] { book.editor().remove_sheet(0); }), HasSubstr("only visible"));
    EXPECT_THAT(reason([&] { book.editor().set_state(book.sheet(0), SheetState::Hidden); }),
                HasSubstr("only visible"));
    book.editor().remove_sheet(1);
    book.editor().remove_sheet(1);
    EXPECT_THAT(reason([&] { book.editor().remove_sheet(0); }), HasSubstr("at least one"));
}

TEST(WorkbookEditor, InsertsAnEmptySheet) {
    EditedBook book;
    SheetEntry& sheet = book.editor().insert_sheet(1, u"<N&w>");
    EXPECT_EQ(sheet.part, "xl/worksheets/sheet4.xml");
    EXPECT_THAT(open_text(book, 1), HasSubstr("<sheetData"));
    const WorkbookPart read = book.reloaded();
    ASSERT_EQ(read.sheets.size(), 5u);
    EXPECT_EQ(read.sheets[1]->name, u"<N&w>");
    EXPECT_EQ(read.sheets[1]->part, sheet.part);
    EXPECT_EQ(read.sheets[1]->kind, SheetKind::Worksheet);
    EXPECT_EQ(formula_of(read, u"_xlnm.Print_Area", 2), "Report!$A$1");
    EXPECT_EQ(formula_of(book.model(), u"_xlnm.Print_Area", 2), "Report!$A$1");
    EXPECT_EQ(formula_of(book.model(), u"_xlnm.Print_Area", 0), "Data!$A$1:$B$9");
    const std::string workbook = book.saved("xl/workbook.xml");
    EXPECT_THAT(workbook, HasSubstr("activeTab=\"2\""));
    EXPECT_THAT(workbook, HasSubstr("<sheet name=\"&lt;N&amp;w>\" sheetId=\"10\" r:id=\"rId7\"/>"));
    EXPECT_THAT(book.saved("xl/_rels/workbook.xml.rels"),
                HasSubstr("relationships/worksheet\" Target=\"worksheets/sheet4.xml\""));
    EXPECT_THAT(book.saved("[Content_Types].xml"),
                HasSubstr("PartName=\"/xl/worksheets/sheet4.xml\" ContentType=\"application/"
                          "vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\""));
    EXPECT_THAT(book.saved("docProps/app.xml"), Not(HasSubstr("Titles")));
    EXPECT_THAT(book.saved("docProps/app.xml"), Not(HasSubstr("HeadingPairs")));
    EXPECT_EQ(book.changed_parts().size(), 5u) << "nothing else changes";
}

TEST(WorkbookEditor, MovesASheetAndWhatCountsSheets) {
    EditedBook book;
    book.editor().move_sheet(1, 3);
    EXPECT_EQ(book.sheet_names(), "Data|It's here|Graph|Report");
    const WorkbookPart read = book.reloaded();
    EXPECT_EQ(read.sheets[3]->part, "xl/worksheets/sheet2.xml");
    EXPECT_EQ(formula_of(read, u"_xlnm.Print_Area", 3), "Report!$A$1");
    EXPECT_EQ(formula_of(read, u"_xlnm.Print_Area", 0), "Data!$A$1:$B$9");
    EXPECT_THAT(book.saved("xl/workbook.xml"), HasSubstr("activeTab=\"3\""));
    EXPECT_EQ(book.changed_parts().size(), 2u) << "the workbook and the titles of parts";
    book.editor().move_sheet(3, 0);
    EXPECT_EQ(book.sheet_names(), "Report|Data|It's here|Graph");
    EXPECT_EQ(formula_of(book.model(), u"_xlnm.Print_Area", 1), "Data!$A$1:$B$9");
}

TEST(WorkbookEditor, RenamesASheetWhereverItIsNamed) {
    EditedBook book;
    book.editor().rename_sheet(book.sheet(1), u"R & D's");
    book.editor().rename_sheet(book.sheet(0), u"A1");
    EXPECT_EQ(formula_of(book.model(), u"Total", {}), "'A1'!$B$9+'It''s here'!$A$1");
    EXPECT_EQ(formula_of(book.reloaded(), u"_xlnm.Print_Area", 1), "'R & D''s'!$A$1");
    EXPECT_EQ(formula_of(book.reloaded(), u"All", {}), "SUM('A1:Graph'!$A$1)");
    EXPECT_THAT(book.saved("xl/workbook.xml"), HasSubstr("comment=\"c\""));
    const std::string data = book.saved("xl/worksheets/sheet1.xml");
    EXPECT_THAT(data, HasSubstr("<f>'R &amp; D''s'!A1&amp;\"Report!A1\"</f>"));
    EXPECT_THAT(data, HasSubstr("<f>SUM(Sales[Amount])+'A1'!A1</f>"));
    EXPECT_THAT(data, HasSubstr("<formula>'R &amp; D''s'!$A$1&gt;1</formula>"));
    EXPECT_THAT(data, HasSubstr("<formula1>'R &amp; D''s'!$A$1:$A$3</formula1>"));
    EXPECT_THAT(data, HasSubstr("location=\"'R &amp; D''s'!A1\""));
    EXPECT_THAT(data, HasSubstr("<xm:f>'R &amp; D''s'!A1:A9</xm:f>"));
    EXPECT_EQ(open_text(book, 0), data);
    EXPECT_THAT(book.saved("xl/tables/table1.xml"), HasSubstr("+'R &amp; D''s'!A1<"));
    EXPECT_THAT(book.saved("xl/drawings/drawing1.xml"), HasSubstr("textlink=\"'A1'!$A$1\""));
    EXPECT_THAT(book.saved("xl/drawings/vmlDrawing1.vml"), HasSubstr("'R &amp; D''s'!$A$1<"));
    EXPECT_THAT(book.saved("xl/charts/chart1.xml"),
                AllOf(HasSubstr("<c:f>'R &amp; D''s'!$A$1:$A$3</c:f>"),
                      HasSubstr("[book.xlsx]R &amp; D's!PivotTable1"),
                      HasSubstr("<c:name>Report!x</c:name>")));
    EXPECT_THAT(book.saved("xl/charts/chart2.xml"), HasSubstr("<c:f>'A1'!$A$1:$A$3</c:f>"));
    EXPECT_THAT(book.saved("xl/pivotCache/pivotCacheDefinition1.xml"), HasSubstr("sheet=\"A1\""));
    const auto changed = book.changed_parts();
    EXPECT_FALSE(changed.contains("xl/worksheets/sheet3.xml"));
    EXPECT_FALSE(changed.contains("xl/drawings/_rels/drawing1.xml.rels"));
    EXPECT_FALSE(changed.contains("[content_types].xml"));
    book.editor().rename_sheet(book.sheet(2), u"There");
    EXPECT_THAT(book.saved("xl/drawings/_rels/drawing1.xml.rels"), HasSubstr("\"#There!A1\""));
}

TEST(WorkbookEditor, RemovesASheetWithWhatBelongsToItAlone) {
    EditedBook book;
    book.editor().remove_sheet(1);
    EXPECT_EQ(book.sheet_names(), "Data|It's here|Graph");
    for (const char* part :
         {"xl/worksheets/sheet2.xml", "xl/worksheets/_rels/sheet2.xml.rels",
          "xl/drawings/drawing1.xml", "xl/drawings/_rels/drawing1.xml.rels", "xl/charts/chart1.xml",
          "xl/charts/style1.xml", "xl/pivotTables/pivotTable1.xml", "xl/slicers/slicer1.xml",
          "xl/calcChain.xml"})
        EXPECT_TRUE(book.drops(part)) << part;
    for (const char* part : {"xl/media/image1.png", "xl/pivotCache/pivotCacheDefinition1.xml",
                             "xl/charts/chart2.xml", "xl/lonely.xml", "xl/worksheets/sheet1.xml"})
        EXPECT_FALSE(book.drops(part)) << part;
    const WorkbookPart read = book.reloaded();
    ASSERT_EQ(read.sheets.size(), 3u);
    EXPECT_EQ(read.sheets[2]->kind, SheetKind::Chart);
    EXPECT_EQ(read.defined_names.size(), 4u);
    EXPECT_EQ(formula_of(read, u"_xlnm.Print_Area", 0), "Data!$A$1:$B$9");
    EXPECT_THAT(
        book.saved("xl/worksheets/sheet1.xml"),
        AllOf(HasSubstr("<f>#REF!&amp;\"Report!A1\"</f>"), HasSubstr("location=\"#REF!\"")));
    EXPECT_THAT(book.saved("[Content_Types].xml"),
                AllOf(Not(HasSubstr("sheet2")), Not(HasSubstr("calcChain"))));
    EXPECT_THAT(book.saved("xl/_rels/workbook.xml.rels"),
                AllOf(Not(HasSubstr("sheet2")), Not(HasSubstr("calcChain"))));
    EXPECT_THAT(book.saved("xl/slicerCaches/slicerCache1.xml"),
                AllOf(HasSubstr("<data"), Not(HasSubstr("pivotTable"))));
    const std::string workbook = book.saved("xl/workbook.xml");
    EXPECT_THAT(workbook, HasSubstr("activeTab=\"2\"")) << "the sheet behind it is hidden";
    EXPECT_THAT(workbook, HasSubstr("activeSheetId=\"9\""));
}

TEST(WorkbookEditor, TurnsReferencesToARemovedSheetIntoErrors) {
    EditedBook book;
    book.editor().remove_sheet(0);
    EXPECT_EQ(formula_of(book.model(), u"Total", {}), "#REF!+'It''s here'!$A$1");
    EXPECT_EQ(formula_of(book.model(), u"All", {}), "SUM(Report:Graph!$A$1)");
    EXPECT_EQ(formula_of(book.model(), u"Missing", {}), "Nowhere!$A$1");
    book.editor().insert_sheet(0, u"Data");
    EXPECT_EQ(formula_of(book.reloaded(), u"Total", {}), "#REF!+'It''s here'!$A$1");
    EXPECT_THAT(open_text(book, 1), HasSubstr("<f>#REF!+Report!A2+'It''s here'!A1</f>"));
    EXPECT_THAT(book.saved("xl/charts/chart2.xml"), HasSubstr("<c:f>#REF!</c:f>"));
    EXPECT_THAT(book.saved("xl/drawings/drawing1.xml"), HasSubstr("textlink=\"#REF!\""));
    EXPECT_THAT(book.saved("xl/pivotCache/pivotCacheDefinition1.xml"),
                HasSubstr("sheet=\"#REF!\""));
    EXPECT_EQ(book.sheet(0).part, "xl/worksheets/sheet4.xml")
        << "no part takes a dropped one's name";
}

TEST(WorkbookEditor, ShortensSpansWhenTheirEndsGo) {
    struct Case {
        std::vector<std::size_t> removed;
        const char *name, *cell;
    } const cases[] = {
        {{0}, "SUM(B:D!$A$1)", "B:D!A1"},      {{3}, "SUM(A:C!$A$1)", "A:C!A1"},
        {{0, 0}, "SUM(C:D!$A$1)", "C:D!A1"},   {{0, 2}, "SUM(B:C!$A$1)", "B:C!A1"},
        {{0, 0, 0}, "SUM(D!$A$1)", "D!A1"},    {{3, 2, 1}, "SUM(A!$A$1)", "A!A1"},
        {{3, 0, 1, 0}, "SUM(#REF!)", "#REF!"}, {{1, 1}, "SUM(A:D!$A$1)", "A:D!A1"},
    };
    using test::relationship;
    std::string sheets, links;
    std::vector<test::ZipItem> items;
    for (int i = 0; i < 5; ++i) {
        const std::string number = std::to_string(i);
        sheets += "<sheet name=\"" + std::string(1, static_cast<char>('A' + i)) + "\" sheetId=\"" +
                  std::to_string(i + 1) + "\" r:id=\"r" + number + "\"/>";
        links += relationship("r" + number, "worksheet", "s" + number + ".xml");
        items.push_back({"s" + number + ".xml", "<worksheet><f>A:D!A1</f></worksheet>"});
    }
    items.push_back({"w.xml", "<workbook xmlns:r=\"urn:r\"><sheets>" + sheets +
                                  "</sheets><definedNames><definedName name=\"N\">SUM(A:D!$A$1)"
                                  "</definedName></definedNames></workbook>"});
    items.push_back({"_rels/w.xml.rels", test::relationships(links)});
    items.push_back(
        {"_rels/.rels", test::relationships(relationship("r", "officeDocument", "w.xml"))});
    const auto plain = [](std::string text) {
        std::erase(text, '\'');
        return text;
    };
    for (const Case& c : cases) {
        EditedBook book(items);
        for (const std::size_t index : c.removed)
            book.editor().remove_sheet(index);
        EXPECT_EQ(plain(formula_of(book.model(), u"N", {})), c.name);
        const std::string last = open_text(book, book.model().sheets.size() - 1);
        EXPECT_EQ(plain(last), "<worksheet><f>" + std::string(c.cell) + "</f></worksheet>");
        book.save();
        EXPECT_EQ(plain(formula_of(book.model(), u"N", {})), c.name);
    }
}

TEST(WorkbookEditor, CopiesASheetWithItsTable) {
    EditedBook book;
    SheetEntry& copy = book.editor().copy_sheet(1, u"Data (2)", book.sheet(0));
    EXPECT_EQ(copy.kind, SheetKind::Worksheet);
    EXPECT_EQ(copy.part, "xl/worksheets/sheet4.xml");
    const std::string sheet = book.saved(copy.part);
    EXPECT_THAT(sheet, HasSubstr("<f>SUM(Sales_2[Amount])+'Data (2)'!A1</f>"));
    EXPECT_THAT(sheet, HasSubstr("<f>Report!A1&amp;&quot;Report!A1&quot;</f>"));
    EXPECT_THAT(sheet, Not(HasSubstr("tabSelected")));
    EXPECT_THAT(sheet, Not(HasSubstr("codeName")));
    EXPECT_EQ(open_text(book, 1), sheet);
    const std::string links = book.saved("xl/worksheets/_rels/sheet4.xml.rels");
    EXPECT_THAT(links,
                AllOf(HasSubstr("Id=\"rId1\""), HasSubstr("Target=\"/xl/tables/table2.xml\""),
                      HasSubstr("Target=\"/xl/drawings/vmldrawing2.vml\""),
                      HasSubstr("Target=\"/xl/comments2.xml\""),
                      HasSubstr("Target=\"/xl/worksheets/sheet4.xml\""),
                      HasSubstr("Target=\"http://example.com/\"")));
    EXPECT_THAT(book.saved("xl/tables/table2.xml"),
                AllOf(HasSubstr("id=\"4\" name=\"Sales_2\" displayName=\"Sales_2\""),
                      HasSubstr("Sales_2[[#This Row],[Amount]]+Report!A1")));
    EXPECT_EQ(book.saved("xl/drawings/vmldrawing2.vml"), book.saved("xl/drawings/vmlDrawing1.vml"));
    EXPECT_THAT(book.saved("[Content_Types].xml"),
                AllOf(HasSubstr("/xl/tables/table2.xml"), HasSubstr("/xl/comments2.xml")));
    const WorkbookPart read = book.reloaded();
    EXPECT_EQ(formula_of(read, u"_xlnm.Print_Area", 1), "'Data (2)'!$A$1:$B$9");
    EXPECT_EQ(formula_of(read, u"_xlnm.Print_Area", 0), "Data!$A$1:$B$9");
    EXPECT_EQ(formula_of(read, u"_xlnm.Print_Area", 2), "Report!$A$1");
    EXPECT_TRUE(book.drops("xl/calcChain.xml")) << "it lacks the copy's formulas";
    const auto changed = book.changed_parts();
    EXPECT_FALSE(changed.contains("xl/worksheets/sheet1.xml"));
    EXPECT_FALSE(changed.contains("xl/tables/table1.xml"));
}

TEST(WorkbookEditor, CopiesDrawingsChartsAndPivotTables) {
    EditedBook book;
    book.editor().copy_sheet(4, u"Again", book.sheet(1));
    EXPECT_THAT(book.saved("xl/charts/chart3.xml"), HasSubstr("<c:f>Again!$A$1:$A$3</c:f>"));
    EXPECT_EQ(book.saved("xl/charts/style2.xml"), book.saved("xl/charts/style1.xml"));
    EXPECT_THAT(book.saved("xl/drawings/drawing3.xml"),
                AllOf(HasSubstr("textlink=\"Data!$A$1\""), Not(HasSubstr("slicer"))));
    EXPECT_THAT(book.saved("xl/drawings/_rels/drawing3.xml.rels"),
                AllOf(HasSubstr("/xl/charts/chart3.xml"), HasSubstr("../media/image1.png"),
                      HasSubstr("../charts/absent.xml"), HasSubstr("#'It''s%20here'!A1")));
    EXPECT_THAT(book.saved("xl/worksheets/_rels/sheet4.xml.rels"),
                AllOf(Not(HasSubstr("slicer")), HasSubstr("/xl/pivottables/pivottable2.xml")));
    EXPECT_THAT(book.saved("xl/pivottables/_rels/pivottable2.xml.rels"),
                HasSubstr("../pivotCache/pivotCacheDefinition1.xml"));
    EXPECT_THAT(book.saved("xl/worksheets/sheet4.xml"),
                AllOf(Not(HasSubstr("slicer")), HasSubstr("uri=\"{other}\""),
                      HasSubstr("<f>Data!A1+Again!A2+'It''s here'!A1</f>")));
    book.editor().remove_sheet(1);
    book.editor().remove_sheet(2);
    EXPECT_FALSE(book.drops("xl/media/image1.png")) << "the copy shows it still";
    EXPECT_TRUE(book.drops("xl/charts/chart2.xml"));
    EXPECT_TRUE(book.drops("xl/charts/chart1.xml"));
    EXPECT_EQ(book.reloaded().sheets[2]->part, "xl/worksheets/sheet4.xml");
}

TEST(WorkbookEditor, CopiesCopiesAndNewSheetsUnderAnyName) {
    EditedBook book;
    SheetEntry& first = book.editor().copy_sheet(4, u"First", book.sheet(0));
    SheetEntry& second = book.editor().copy_sheet(5, u"Second", first);
    book.editor().rename_sheet(first, u"Uno");
    book.editor().rename_sheet(second, u"Due");
    book.editor().rename_sheet(book.sheet(0), u"Zero");
    book.editor().remove_sheet(0);
    EXPECT_THAT(open_text(book, 3), HasSubstr("SUM(Sales_2[Amount])+Uno!A1"));
    EXPECT_THAT(open_text(book, 4), HasSubstr("SUM(Sales_3[Amount])+Due!A1"));
    EXPECT_THAT(book.saved("xl/tables/table3.xml"), HasSubstr("id=\"5\" name=\"Sales_3\""));
    EXPECT_EQ(formula_of(book.model(), u"_xlnm.Print_Area", 4), "Due!$A$1:$B$9");
    SheetEntry& empty = book.editor().insert_sheet(0, u"Empty");
    book.editor().set_state(empty, SheetState::VeryHidden);
    SheetEntry& copy = book.editor().copy_sheet(0, u"Empty 2", empty);
    EXPECT_EQ(copy.state, SheetState::VeryHidden);
    EXPECT_EQ(open_text(book, 0), open_text(book, 1));
    const WorkbookPart read = book.reloaded();
    ASSERT_EQ(read.sheets.size(), 7u);
    for (std::size_t i = 0; i < read.sheets.size(); ++i) {
        EXPECT_EQ(read.sheets[i]->part, book.sheet(i).part);
        EXPECT_EQ(read.sheets[i]->name, book.sheet(i).name);
        EXPECT_EQ(read.sheets[i]->state, book.sheet(i).state);
        EXPECT_EQ(read.sheets[i]->kind, book.sheet(i).kind);
    }
    book.editor().copy_sheet(0, u"Graph 2", book.sheet(4));
    EXPECT_EQ(book.reloaded().sheets[0]->kind, SheetKind::Chart);
}

TEST(WorkbookEditor, WritesWhatTheWorkbookSaysOfItself) {
    EditedBook book;
    book.editor().set_date_1904(true);
    book.editor().recalculate_on_load();
    book.editor().drop_calculation_chain();
    book.editor().set_document_type(DocumentType::MacroTemplate);
    EXPECT_EQ(book.editor().need_styles_part(), "xl/styles.xml");
    EXPECT_EQ(book.editor().need_shared_strings_part(), "xl/sharedstrings.xml");
    EXPECT_EQ(book.editor().need_styles_part(), "xl/styles.xml");
    EXPECT_TRUE(book.reloaded().date_1904);
    EXPECT_THAT(book.saved("xl/workbook.xml"),
                AllOf(HasSubstr("<workbookPr codeName=\"ThisWorkbook\" date1904=\"1\"/>"),
                      HasSubstr("<calcPr calcId=\"1\" fullCalcOnLoad=\"1\"/>")));
    EXPECT_TRUE(book.drops("xl/calcChain.xml"));
    EXPECT_THAT(book.saved("[Content_Types].xml"),
                AllOf(HasSubstr("template.macroEnabled.main+xml"), HasSubstr("/xl/styles.xml"),
                      HasSubstr("sharedStrings+xml"), Not(HasSubstr("calcChain"))));
    EXPECT_THAT(book.saved("xl/_rels/workbook.xml.rels"),
                AllOf(HasSubstr("relationships/styles\" Target=\"styles.xml\""),
                      Not(HasSubstr("calcChain"))));
}

TEST(WorkbookEditor, PutsNewElementsAtTheirPlace) {
    const std::string begin =
        "<x:workbook xmlns:x=\"http://purl.oclc.org/ooxml/spreadsheetml/main\">";
    std::vector<test::ZipItem> items = {
        {"_rels/.rels",
         test::relationships(test::relationship("r", "officeDocument", "xl/workbook.xml"))},
        {"xl/workbook.xml",
         begin +
             "<x:fileVersion/><!-- c --><x:bookViews/><x:definedNames/><x:extLst/></x:workbook>"}};
    EditedBook book(items);
    EXPECT_THAT(book.changed_parts(), IsEmpty());
    book.editor().insert_sheet(0, u"S");
    book.editor().set_date_1904(true);
    book.editor().recalculate_on_load();
    const std::string workbook = book.saved("xl/workbook.xml");
    EXPECT_EQ(workbook.substr(workbook.find("<x:")),
              begin + "<x:fileVersion/><x:workbookPr date1904=\"1\"/><!-- c --><x:bookViews/>"
                      "<x:sheets><x:sheet name=\"S\" sheetId=\"1\" "
                      "xmlns:r=\"http://purl.oclc.org/ooxml/officeDocument/relationships\" "
                      "r:id=\"rId1\"/></x:sheets><x:definedNames/><x:calcPr "
                      "fullCalcOnLoad=\"1\"/><x:extLst/></x:workbook>");
    EXPECT_THAT(book.saved("xl/_rels/workbook.xml.rels"),
                HasSubstr("http://purl.oclc.org/ooxml/officeDocument/relationships/worksheet"));
    EXPECT_THAT(open_text(book, 0), HasSubstr("http://purl.oclc.org/ooxml/spreadsheetml/main"));
    EXPECT_EQ(book.reloaded().sheets.at(0)->part, "xl/worksheets/sheet1.xml");
}

TEST(WorkbookEditor, UnselectsASheetThatIsHidden) {
    EditedBook book;
    book.editor().set_state(book.sheet(0), SheetState::Hidden);
    EXPECT_THAT(book.saved("xl/worksheets/sheet1.xml"), Not(HasSubstr("tabSelected")));
    book.editor().set_state(book.sheet(1), SheetState::VeryHidden);
    EXPECT_THAT(book.saved("xl/workbook.xml"),
                AllOf(HasSubstr("activeTab=\"3\""), HasSubstr("state=\"veryHidden\"")));
    EXPECT_EQ(book.reloaded().sheets[1]->state, SheetState::VeryHidden);
}

TEST(WorkbookEditor, GoesOnAfterASave) {
    EditedBook book;
    book.editor().copy_sheet(1, u"Copy", book.sheet(0));
    book.editor().remove_sheet(0);
    book.editor().rename_sheet(book.sheet(1), u"Data");
    book.editor().need_styles_part();
    book.save();
    EXPECT_THAT(book.changed_parts(), IsEmpty());
    EXPECT_EQ(book.sheet_names(), "Copy|Data|It's here|Graph");
    book.editor().rename_sheet(book.sheet(0), u"Again");
    book.editor().move_sheet(0, 3);
    EXPECT_THAT(open_text(book, 3), HasSubstr("SUM(Sales_2[Amount])+Again!A1"));
    EXPECT_THAT(open_text(book, 0), HasSubstr("<f>#REF!+Data!A2+'It''s here'!A1</f>"));
    EXPECT_EQ(formula_of(book.reloaded(), u"_xlnm.Print_Area", 3), "Again!$A$1:$B$9");
    book.save();
    book.editor().copy_sheet(0, u"Third", book.sheet(3));
    EXPECT_THAT(book.saved(book.sheet(0).part), HasSubstr("SUM(Sales_2_2[Amount])+Third!A1"));
}

TEST(WorkbookEditor, HoldsManySheets) {
    EditedBook book;
    for (int i = 0; i < 2000; ++i)
        book.editor().insert_sheet(0, u"S" + foundation::unicode::to_utf16(std::to_string(i)));
    for (int i = 0; i < 1000; ++i)
        book.editor().remove_sheet(0);
    EXPECT_EQ(book.reloaded().sheets.size(), 1004u);
}

TEST(WorkbookEditor, SurvivesReferencesThatLeadNowhere) {
    using test::relationship;
    std::vector<test::ZipItem> items = {
        {"_rels/.rels", test::relationships(relationship("r", "officeDocument", "w.xml"))},
        {"_rels/w.xml.rels", test::relationships(relationship("a", "worksheet", "s.xml") +
                                                 relationship("b", "worksheet", "w.xml") +
                                                 relationship("a", "worksheet", "absent.xml"))},
        {"s.xml", "<worksheet><drawing/></worksheet>"},
        {"_rels/s.xml.rels", test::relationships(relationship("a", "drawing", "s.xml") +
                                                 relationship("b", "table", "t.xml") +
                                                 relationship("c", "drawing", "t.xml") +
                                                 relationship("d", "chart", "w.xml"))},
        {"t.xml", "<notable/>"},
        {"_rels/t.xml.rels", test::relationships(relationship("a", "drawing", "t.xml"))},
        {"w.xml", "<workbook xmlns:r=\"urn:r\"><bookViews><workbookView activeTab=\"77\"/>"
                  "</bookViews><sheets><sheet name=\"S\" r:id=\"a\"/><sheet name=\"S\" "
                  "sheetId=\"4294967295\" r:id=\"zz\"/></sheets><definedNames><definedName "
                  "name=\"n\" localSheetId=\"2\">S!A1</definedName></definedNames></workbook>"}};
    EditedBook book(items);
    book.editor().copy_sheet(0, u"C", book.sheet(0));
    EXPECT_EQ(book.reloaded().defined_names.size(), 0u) << "it would become the third sheet's";
    EXPECT_THROW(book.editor().copy_sheet(0, u"D", book.sheet(2)), Error);
    book.editor().remove_sheet(1);
    EXPECT_EQ(book.reloaded().sheets.at(0)->part, "s1.xml");
    EXPECT_THAT(book.saved("xl/workbook.xml"), HasSubstr("absent"));
    EXPECT_THAT(book.saved("w.xml"), HasSubstr("activeTab=\"77\""));
    book.save();
}

} // namespace
} // namespace workbook
