// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>

#include "tests/workbook/rewrite.h"
#include "workbook/error.h"

namespace workbook::test {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string sheet_with(const std::string& rows) {
    return "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
           "<sheetData>" +
           rows + "</sheetData><pageMargins left=\"1\"/></worksheet>";
}

void expect_well_formed(const std::string& text) {
    pugi::xml_document tree;
    const pugi::xml_parse_result result = tree.load_buffer(text.data(), text.size());
    EXPECT_TRUE(result) << result.description() << " in " << text;
}

struct RowCase {
    const char* property;
    const char* rows;
    const char* changes;
    const char* expected;
};

const RowCase kRowCases[] = {
    {"cells beside a changed one keep their mark-up",
     R"(<row r="2" spans="1:3" ht="20"><c r="A2" s="4"><f>B2*2</f><v>8</v></c><c r="C2" t="inlineStr"><is><r><t>x</t></r></is></c></row>)",
     "B2=4",
     R"(<row r="2" ht="20"><c r="A2" s="4"><f>B2*2</f><v>8</v></c><c r="B2"><v>4</v></c><c r="C2" t="inlineStr"><is><r><t>x</t></r></is></c></row>)"},
    {"every kind of value", R"(<row r="1"><c r="A1"><v>1</v></c></row>)",
     "A1=#2; B1=true; C1=false; D1/3=blank; E1/2=-0; F1=0.1; G1=1e300; H1=123456789012; I1=-12.5",
     R"(<row r="1"><c r="A1" t="s"><v>1002</v></c><c r="B1" t="b"><v>1</v></c><c r="C1" t="b"><v>0</v></c><c r="D1" s="3"/><c r="E1" s="2"><v>-0</v></c><c r="F1"><v>0.1</v></c><c r="G1"><v>1e+300</v></c><c r="H1"><v>123456789012</v></c><c r="I1"><v>-12.5</v></c></row>)"},
    {"attributes of an overwritten cell go",
     R"(<row r="1"><c r="A1" s="7" cm="1" vm="2" ph="1" t="str"><f>X</f><v>y</v></c></row>)",
     "A1=5", R"(<row r="1"><c r="A1"><v>5</v></c></row>)"},
    {"new rows stand in order", R"(<row r="3"><c r="A3"><v>3</v></c></row> <row r="6"/>)",
     "A1=1; A4=4; A9=9",
     R"(<row r="1"><c r="A1"><v>1</v></c></row><row r="3"><c r="A3"><v>3</v></c></row> <row r="4"><c r="A4"><v>4</v></c></row><row r="6"/><row r="9"><c r="A9"><v>9</v></c></row>)"},
    {"an empty row is opened", R"(<row r="2" ht="9" customHeight="1"/>)", "B2=1",
     R"(<row r="2" ht="9" customHeight="1"><c r="B2"><v>1</v></c></row>)"},
    {"no row at all", "", "B2=1", R"(<row r="2"><c r="B2"><v>1</v></c></row>)"},
    {"rows and cells without references get them where they need one",
     R"(<row><c><v>1</v></c><c><v>2</v></c><c><v>3</v></c></row><row><c><v>4</v></c></row><row><c><v>5</v></c></row>)",
     "B1=9; clear A2:A2",
     R"(<row><c><v>1</v></c><c r="B1"><v>9</v></c><c><v>3</v></c></row><row></row><row><c><v>5</v></c></row>)"},
    {"a cell without a reference behind one that is gone",
     R"(<row r="1"><c><v>1</v></c><c t="str"><v>2</v></c></row>)", "clear A1:A1",
     R"(<row r="1"><c t="str" r="B1"><v>2</v></c></row>)"},
    {"rows without a number behind a new one",
     R"(<row r="2"><c><v>1</v></c></row><row r="5"/><row><c><v>2</v></c></row>)", "A3=3; D6=4",
     R"(<row r="2"><c><v>1</v></c></row><row r="3"><c r="A3"><v>3</v></c></row><row r="5"/><row><c><v>2</v></c><c r="D6"><v>4</v></c></row>)"},
    {"rows and cells out of order, and twice",
     R"(<row r="5"><c r="C5"><v>1</v></c><c r="A5"><v>2</v></c></row><row r="2"><c r="A2"><v>3</v></c></row><row r="5"><c r="C5"><v>7</v></c><c r="D5"><v>8</v></c></row>)",
     "A5=9; C5=10",
     R"(<row r="5"><c r="A5"><v>9</v></c><c r="C5"><v>10</v></c></row><row r="2"><c r="A2"><v>3</v></c></row><row r="5"><c r="D5"><v>8</v></c></row>)"},
    {"comments, CDATA and unknown elements stay",
     "<!-- <row r=\"1\"> --><row r=\"1\"><!--a--><c r=\"A1\" t=\"str\"><v><![CDATA[<row "
     "r=\"9\">]]></v></c><extLst><ext/></extLst></row><?pi?><row r=\"2\"/>",
     "B1=1; A2=2",
     "<!-- <row r=\"1\"> --><row r=\"1\"><!--a--><c r=\"A1\" t=\"str\"><v><![CDATA[<row "
     "r=\"9\">]]></v></c><c r=\"B1\"><v>1</v></c><extLst><ext/></extLst></row><?pi?><row "
     "r=\"2\"><c r=\"A2\"><v>2</v></c></row>"},
    {"a cleared rectangle",
     R"(<row r="1"><c r="A1"/><c r="B1"/><c r="C1"/></row><row r="2"><c r="B2"/></row><row r="3"><c r="B3"/></row>)",
     "clear B1:C2; C2=1",
     R"(<row r="1"><c r="A1"/></row><row r="2"><c r="C2"><v>1</v></c></row><row r="3"><c r="B3"/></row>)"},
    {"what was written and cleared again is not written", R"(<row r="1"/>)",
     "A4=1; clear A1:XFD1048576", R"(<row r="1"/>)"},
    {"a lost first cell of a shared formula is spelled out in the others",
     R"(<row r="1"><c r="A1"><f t="shared" si="3" ref="A1:A4">B1&amp;"&lt;"</f><v>1</v></c><c r="C1"><f>A1</f></c></row><row r="2"><c r="A2"><f t="shared" si="3" ca="1"/><v>2</v></c></row><row r="3"><c r="A3"><f t="shared" si="3"></f><v>3</v></c></row><row r="4"><c r="A4"><f t="shared" si="4"/></c></row>)",
     "A1=5",
     R"(<row r="1"><c r="A1"><v>5</v></c><c r="C1"><f>A1</f></c></row><row r="2"><c r="A2"><f ca="1">B2&amp;"&lt;"</f><v>2</v></c></row><row r="3"><c r="A3"><f>B3&amp;"&lt;"</f><v>3</v></c></row><row r="4"><c r="A4"><f t="shared" si="4"/></c></row>)"},
    {"members before the first cell, and a number used again",
     R"(<row r="1"><c r="A1"><f t="shared" si="0"/></c></row><row r="2"><c r="A2"><f t="shared" si="0" ref="A1:A3">C2</f></c></row><row r="3"><c r="A3"><f t="shared" si="0"/></c></row><row r="4"><c r="A4"><f t="shared" si="0" ref="A4:A5">D4</f></c></row><row r="5"><c r="A5"><f t="shared" si="0"/></c></row>)",
     "clear A2:A2",
     R"(<row r="1"><c r="A1"><f>C1</f></c></row><row r="2"></row><row r="3"><c r="A3"><f>C3</f></c></row><row r="4"><c r="A4"><f t="shared" si="0" ref="A4:A5">D4</f></c></row><row r="5"><c r="A5"><f t="shared" si="0"/></c></row>)"},
    {"a member of a shared formula just goes",
     R"(<row r="1"><c r="A1"><f t="shared" si="0" ref="A1:A2">B1</f></c></row><row r="2"><c r="A2"><f t="shared" si="0"/></c></row>)",
     "A2=1",
     R"(<row r="1"><c r="A1"><f t="shared" si="0" ref="A1:A2">B1</f></c></row><row r="2"><c r="A2"><v>1</v></c></row>)"},
    {"an array formula falls apart",
     R"(<row r="1"><c r="A1"><f t="array" ref="A1:B2" aca="1">X1:Y2*2</f><v>1</v></c><c r="B1"><v>2</v></c></row><row r="2"><c r="A2" t="str"><v>3</v></c><c r="B2"><v>4</v></c><c r="C2"><v>5</v></c></row>)", "A2=9", R"(<row r="1"><c r="A1"><f t="array" ref="A1" aca="1">INDEX(X1:Y2*2,IF(ROWS(X1:Y2*2)=1,1,1),IF(COLUMNS(X1:Y2*2)=1,1,1))</f><v>1</v></c><c r="B1"><f t="array" ref="B1">INDEX(X1:Y2*2,IF(ROWS(X1:Y2*2)=1,1,1),IF(COLUMNS(X1:Y2*2)=1,1,2))</f><v>2</v></c></row><row r="2"><c r="A2"><v>9</v></c><c r="B2"><f t="array" ref="B2">INDEX(X1:Y2*2,IF(ROWS(X1:Y2*2)=1,1,2),IF(COLUMNS(X1:Y2*2)=1,1,2))</f><v>4</v></c><c r="C2"><v>5</v></c></row>)"},
    {"an array formula that loses its first cell",
     R"(<row r="1"><c r="A1"><f t="array" ref="A1:B1">Q</f><v>1</v></c><c r="B1"/></row>)",
     "clear A1:A1",
     R"(<row r="1"><c r="B1"><f t="array" ref="B1">INDEX(Q,IF(ROWS(Q)=1,1,1),IF(COLUMNS(Q)=1,1,2))</f></c></row>)"},
    {"the anchor of a dynamic array keeps its formula",
     R"(<row r="1"><c r="A1" cm="1"><f t="array" ref="A1:A3">SEQ(3)</f><v>1</v></c></row><row r="2"><c r="A2"><v>2</v></c></row><row r="3"><c r="A3"><v>3</v></c></row>)",
     "A2=7",
     R"(<row r="1"><c r="A1" cm="1"><f t="array" ref="A1">SEQ(3)</f><v>1</v></c></row><row r="2"><c r="A2"><v>7</v></c></row><row r="3"><c r="A3"><v>3</v></c></row>)"},
    {"a data table that is broken into keeps values",
     R"(<row r="1"><c r="A1"><f t="dataTable" ref="A1:B1" dt2D="1" r1="X1" r2="X2"/><v>1</v></c><c r="B1"><v>2</v></c></row>)",
     "B1=7", R"(<row r="1"><c r="A1"><v>1</v></c><c r="B1"><v>7</v></c></row>)"},
    {"groups that keep all their cells stay as they are",
     R"(<row r="1"><c r="A1"><f t="array" ref="A1:B1">Q</f><v>1</v></c><c r="B1"><v>2</v></c><c r="C1"><f t="array" ref="C1">Q</f></c></row>)",
     "C1=1; D1=2",
     R"(<row r="1"><c r="A1"><f t="array" ref="A1:B1">Q</f><v>1</v></c><c r="B1"><v>2</v></c><c r="C1"><v>1</v></c><c r="D1"><v>2</v></c></row>)"},
};

TEST(RewriteWorksheet, ChangesCellsWhateverTheBlockBoundaries) {
    for (const RowCase& c : kRowCases)
        for (std::size_t step : {1u << 20, 1u, 61u}) {
            SCOPED_TRACE(std::string(c.property) + ", pieces of " + std::to_string(step));
            RewrittenSheet sheet(sheet_with(c.rows), {}, step);
            sheet.apply(c.changes);
            const std::string text = sheet.write();
            EXPECT_EQ(text, sheet_with(c.expected));
            expect_well_formed(text);
            EXPECT_EQ(sheet.write_over(text), text) << "applied twice";
            EXPECT_EQ(describe_part(text), describe_cells(sheet.cells));
        }
}

struct ElementCase {
    const char* property;
    const char* source;
    void (*change)(RewrittenSheet&);
    const char* expected;
};

void write_a1(RewrittenSheet& sheet) {
    sheet.apply("A1=1");
}
void protect(RewrittenSheet& sheet) {
    sheet.changes.is_protected = true;
}
void unprotect(RewrittenSheet& sheet) {
    sheet.changes.is_protected = false;
}
void keep_first_merge(RewrittenSheet& sheet) {
    sheet.tail.merged_regions.resize(1);
    sheet.changes.merged_regions = sheet.tail.merged_regions;
}
void keep_no_merge(RewrittenSheet& sheet) {
    sheet.changes.merged_regions.emplace();
}
void widen(RewrittenSheet& sheet) {
    sheet.changes.column_widths[1] = 20;
}

const ElementCase kElementCases[] = {
    {"a part without cells gets sheetData at its place",
     "<worksheet><sheetViews/><pageMargins/></worksheet>", write_a1,
     R"(<worksheet><sheetViews/><sheetData><row r="1"><c r="A1"><v>1</v></c></row></sheetData><pageMargins/></worksheet>)"},
    {"an empty root", "<x:worksheet a='/>'/>", write_a1,
     R"(<x:worksheet a='/>'><x:sheetData><x:row r="1"><x:c r="A1"><x:v>1</x:v></x:c></x:row></x:sheetData></x:worksheet>)"},
    {"an empty sheetData", "<worksheet><sheetData /><drawing/></worksheet>", write_a1,
     R"(<worksheet><sheetData ><row r="1"><c r="A1"><v>1</v></c></row></sheetData><drawing/></worksheet>)"},
    {"the part's own prefix",
     R"(<q:worksheet xmlns:q="u"><q:sheetData><q:row r="1"><q:c r="B1"/></q:row></q:sheetData><q:mergeCells/></q:worksheet>)",
     [](RewrittenSheet& sheet) {
         sheet.apply("A1=1; A2=true");
         protect(sheet);
     },
     R"(<q:worksheet xmlns:q="u"><q:sheetData><q:row r="1"><q:c r="A1"><q:v>1</q:v></q:c><q:c r="B1"/></q:row><q:row r="2"><q:c r="A2" t="b"><q:v>1</q:v></q:c></q:row></q:sheetData><q:sheetProtection sheet="1" objects="1" scenarios="1"/><q:mergeCells/></q:worksheet>)"},
    {"the dimension follows the cells",
     R"(<worksheet><dimension ref="B2:C3"/><sheetData><row r="5"><c r="D5"/></row></sheetData></worksheet>)",
     write_a1,
     R"(<worksheet><dimension ref="A1:D5"/><sheetData><row r="1"><c r="A1"><v>1</v></c></row><row r="5"><c r="D5"/></row></sheetData></worksheet>)"},
    {"protection stands behind sheetCalcPr",
     "<worksheet><sheetData/><sheetCalcPr/><autoFilter/></worksheet>", protect,
     R"(<worksheet><sheetData/><sheetCalcPr/><sheetProtection sheet="1" objects="1" scenarios="1"/><autoFilter/></worksheet>)"},
    {"protection is replaced",
     R"(<worksheet><sheetData/><sheetProtection password="AB" sheet="1"></sheetProtection><autoFilter/></worksheet>)",
     protect,
     R"(<worksheet><sheetData/><sheetProtection sheet="1" objects="1" scenarios="1"/><autoFilter/></worksheet>)"},
    {"protection goes",
     R"(<worksheet><sheetData/><sheetProtection sheet="1"/> <autoFilter/></worksheet>)", unprotect,
     "<worksheet><sheetData/> <autoFilter/></worksheet>"},
    {"before alternatives that stand further down, behind unknown elements",
     "<worksheet><sheetData/><odd/><mc:AlternateContent><mc:Choice><controls/></mc:Choice>"
     "</mc:AlternateContent><extLst/></worksheet>",
     protect,
     R"(<worksheet><sheetData/><odd/><sheetProtection sheet="1" objects="1" scenarios="1"/><mc:AlternateContent><mc:Choice><controls/></mc:Choice></mc:AlternateContent><extLst/></worksheet>)"},
    {"merged regions that are left",
     R"(<worksheet><sheetData/><mergeCells count="2"><mergeCell ref="A1:B2"/><mergeCell ref="C3:D4"/></mergeCells></worksheet>)",
     keep_first_merge,
     R"(<worksheet><sheetData/><mergeCells count="1"><mergeCell ref="A1:B2"/></mergeCells></worksheet>)"},
    {"merged regions that are all gone",
     R"(<worksheet><sheetData/><mergeCells count="1"><mergeCell ref="A1:B2"/></mergeCells><hyperlinks/></worksheet>)",
     keep_no_merge, "<worksheet><sheetData/><hyperlinks/></worksheet>"},
    {"the declaration tells the encoding that is written",
     "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><!--\xE9--><worksheet/>", write_a1,
     "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!--\xC3\xA9--><worksheet><sheetData><row "
     "r=\"1\"><c r=\"A1\"><v>1</v></c></row></sheetData></worksheet>"},
};

TEST(RewriteWorksheet, PutsElementsWhereTheSchemaHasThem) {
    for (const ElementCase& c : kElementCases) {
        SCOPED_TRACE(c.property);
        RewrittenSheet sheet(c.source, {}, 3);
        c.change(sheet);
        const std::string text = sheet.write();
        EXPECT_EQ(text, c.expected);
        EXPECT_EQ(sheet.write_over(text), text) << "applied twice";
    }
}

TEST(RewriteWorksheet, SetsColumnWidthsBeforeTheCells) {
    RewrittenSheet sheet("<worksheet><sheetPr/><sheetData/></worksheet>");
    widen(sheet);
    const std::string text = sheet.write();
    EXPECT_THAT(text, HasSubstr("<sheetPr/><cols>"));
    EXPECT_THAT(text, HasSubstr("</cols><sheetData/></worksheet>"));
    EXPECT_EQ(sheet.write_over(text), text);
}

TEST(RewriteWorksheet, TurnsUtf16IntoUtf8) {
    const std::u16string text =
        u"\uFEFF<?xml version='1.0' encoding='UTF-16'?><worksheet><sheetData><row r=\"1\"><c "
        u"r=\"A1\" t=\"str\"><v>\u6F22</v></c></row></sheetData></worksheet>";
    RewrittenSheet sheet(std::string(reinterpret_cast<const char*>(text.data()), 2 * text.size()));
    sheet.apply("B1=2");
    EXPECT_EQ(sheet.write(),
              "<?xml version='1.0' encoding='UTF-8'?><worksheet><sheetData><row r=\"1\"><c "
              "r=\"A1\" t=\"str\"><v>\xE6\xBC\xA2</v></c><c r=\"B1\"><v>2</v></c></row></sheetData>"
              "</worksheet>");
}

TEST(RewriteWorksheet, LosesNothingOfRowsThatWereNotLoaded) {
    const std::string source =
        R"(<worksheet><dimension ref="B2:C4"/><sheetData><row r="2"><c r="B2"><v>2</v></c></row>)"
        R"(<row r="3"><c r="B3"><v>3</v></c></row><row r="4"><c r="C4"><f>B2</f><v>4</v></c></row>)"
        R"(</sheetData></worksheet>)";
    RewrittenSheet sheet(source, {2, 2});
    sheet.apply("D3=1; B4=5; A7=6; clear B2:B2");
    EXPECT_EQ(sheet.write(),
              R"(<worksheet><dimension ref="A2:D7"/><sheetData><row r="2"></row>)"
              R"(<row r="3"><c r="B3"><v>3</v></c><c r="D3"><v>1</v></c></row>)"
              R"(<row r="4"><c r="B4"><v>5</v></c><c r="C4"><f>B2</f><v>4</v></c></row>)"
              R"(<row r="7"><c r="A7"><v>6</v></c></row></sheetData></worksheet>)");
}

TEST(RewriteWorksheet, RefusesWhatTheReaderRefuses) {
    for (const char* source :
         {"<worksheet><sheetData>", "<html/>", "",
          "<worksheet><sheetData><row r='0'/></sheetData></worksheet>",
          "<worksheet><sheetData><row r='1'><c r='?'/></row></sheetData></worksheet>"}) {
        RewrittenSheet sheet("<worksheet/>");
        sheet.apply("A1=1");
        EXPECT_THROW(sheet.write_over(source), Error) << source;
    }
}

} // namespace
} // namespace workbook::test
