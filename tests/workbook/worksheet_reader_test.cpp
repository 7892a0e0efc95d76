// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "workbook/cells/cell_name.h"
#include "workbook/error.h"
#include "workbook/xlsx/cell_reference.h"
#include "workbook/xlsx/reading/worksheet_reader.h"
#include "workbook/xlsx/xlsx_limits.h"

namespace workbook::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string sheet_xml(const std::string& rows, const std::string& behind = "") {
    return "<worksheet "
           "xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><sheetData>" +
           rows + "</sheetData>" + behind + "</worksheet>";
}

std::string describe(const SheetCells& cells) {
    std::string out;
    cells.cells.for_each([&](int row, const StoredCell& cell) {
        out += cell_name(row, static_cast<int>(cell.column));
        if (cell.format != 0) out += "/" + std::to_string(cell.format);
        switch (cell.stored_kind()) {
        case StoredKind::Number:
            out += "=" + std::to_string(cell.value.number);
            break;
        case StoredKind::String:
        case StoredKind::AddedString:
            out += "=#" + std::to_string(cell.value.text);
            break;
        case StoredKind::OwnString:
            out += "='" + std::string(cells.own_strings[cell.value.text]) + "'";
            break;
        case StoredKind::Boolean:
            out += cell.value.number != 0 ? "=true" : "=false";
            break;
        case StoredKind::Blank:
            out += "=blank";
            break;
        case StoredKind::Formula:
            out += "=formula";
            break;
        case StoredKind::Error:
            out += "=!" + std::string(cells.own_strings[cell.value.text]);
            break;
        case StoredKind::StrictDate:
            out += "=@" + std::to_string(cell.value.number);
            break;
        }
        out += ' ';
    });
    if (!out.empty()) out.pop_back();
    return out;
}

struct Sheet {
    SheetCells cells{kMaxColumns};
    SheetTail tail;
    bool whole = false;
};

Sheet read(const std::string& xml, RowSpan rows = {}, std::size_t piece = 1u << 20) {
    Sheet sheet;
    MemorySource source(xml, piece);
    sheet.whole = read_worksheet(source, rows, DateBase::From1900, sheet.cells, sheet.tail);
    return sheet;
}

struct CellCase {
    const char* property;
    const char* rows;
    const char* expected;
};

const CellCase kCellCases[] = {
    {"every kind of value",
     R"(<row r="1"><c r="A1"><v>1.5</v></c><c r="B1" t="s"><v>7</v></c><c r="C1" t="b"><v>1</v></c>)"
     R"(<c r="D1" t="e"><v>#DIV/0!</v></c><c r="E1" t="str"><f>A1</f><v>x</v></c>)"
     R"(<c r="F1" t="inlineStr"><is><t>in</t></is></c><c r="G1" s="3"/><c r="H1" t="n"><v>-2</v></c></row>)",
     "A1=1.500000 B1=#7 C1=true D1=!#DIV/0! E1='x' F1='in' G1/3=blank H1=-2.000000"},
    {"formulas in every dress",
     R"(<row r="1"><c r="A1"><f>B1&gt;2</f><v>1</v></c><c r="B1"><f t="shared" si="0"/><v>2</v></c>)"
     R"(<c r="C1"><f>X1</f></c><c r="D1"><f>X1</f><v></v></c><c r="E1" t="str"><f>X1</f><v/></c>)"
     R"(<c r="F1" t="b"><f>X1</f><v>0</v></c></row>)",
     "A1=1.000000 B1=2.000000 C1=formula D1=formula E1='' F1=false"},
    {"cells and rows without references",
     R"(<row><c><v>1</v></c><c r="D1"><v>2</v></c><c><v>3</v></c></row><row><c><v>4</v></c></row>)"
     R"(<row r="9"><c><v>5</v></c></row><row><c><v>6</v></c></row>)",
     "A1=1.000000 D1=2.000000 E1=3.000000 A2=4.000000 A9=5.000000 A10=6.000000"},
    {"rows and columns out of order, the last one wins",
     R"(<row r="3"><c r="C3"><v>1</v></c><c r="A3"><v>2</v></c></row><row r="1"><c r="A1"><v>3</v></c></row>)"
     R"(<row r="3"><c r="C3"><v>4</v></c></row><row r="4"><c r="B4"><v>5</v></c><c r="B4"><v>6</v></c></row>)",
     "A1=3.000000 A3=2.000000 C3=4.000000 B4=6.000000"},
    {"a cell that names another row",
     R"(<row r="2"><c r="A2"><v>1</v></c><c r="B5"><v>2</v></c></row>)", "A2=1.000000 B5=2.000000"},
    {"texts with references, escapes and spaces",
     R"(<row r="1"><c r="A1" t="str"><v>a &amp; b &lt;&#233;&#x6F22;</v></c>)"
     R"(<c r="B1" t="inlineStr"><is><t xml:space="preserve"> x_x000D_y_ </t></is></c>)"
     R"(<c r="C1" t="str"><v>_x005F_x0041_</v></c><c r="D1" t="str"><v>snake_case</v></c></row>)",
     "A1='a & b <\xC3\xA9\xE6\xBC\xA2' B1=' x\ry_ ' C1='_x0041_' D1='snake_case'"},
    {"rich inline text without its phonetic runs",
     R"(<row r="1"><c r="A1" t="inlineStr"><is><r><t>one </t></r><r><rPr><b/></rPr><t>two</t></r>)"
     R"(<rPh sb="0" eb="1"><t>NO</t></rPh></is></c></row>)",
     "A1='one two'"},
    {"dates in ISO 8601, and what only claims to be one",
     R"(<row r="1"><c r="A1" t="d"><v>2021-01-01T12:00:00</v></c><c r="B1" t="d"><v>soon</v></c></row>)",
     "A1=@44197.500000 B1='soon'"},
    {"what is no number stays text",
     R"(<row r="1"><c r="A1"><v>NaN</v></c><c r="B1"><v> 12 </v></c><c r="C1"><v>1E400</v></c>)"
     R"(<c r="D1"><v>+1e2</v></c><c r="E1"><v>1e-400</v></c><c r="F1"><v>12abc</v></c></row>)",
     "A1='NaN' B1=12.000000 C1='1E400' D1=100.000000 E1=0.000000 F1='12abc'"},
    {"booleans in words",
     R"(<row r="1"><c r="A1" t="b"><v>true</v></c><c r="B1" t="b"><v>FALSE</v></c></row>)",
     "A1=true B1=false"},
    {"the corners of a sheet",
     R"(<row r="1"><c r="XFD1"><v>1</v></c></row><row r="1048576"><c r="A1048576"><v>2</v></c></row>)",
     "XFD1=1.000000 A1048576=2.000000"},
    {"comments, CDATA and line breaks between everything",
     "\n<!-- <row r=\"7\"> -->\n<row r=\"1\">\n <c r=\"A1\" "
     "t=\"str\">\n<v><![CDATA[<b>&]]></v>\n</c>"
     "<!-- <c r=\"B1\"><v>9</v></c> -->\n</row>\n<row r=\"2\" spans=\"1:1\"/>",
     "A1='<b>&'"},
};

TEST(ReadWorksheet, ReadsCellsWhateverTheBlockBoundaries) {
    for (const CellCase& c : kCellCases)
        for (std::size_t piece : {1u << 20, 1u, 7u, 61u}) {
            SCOPED_TRACE(std::string(c.property) + ", pieces of " + std::to_string(piece));
            const Sheet sheet = read(sheet_xml(c.rows), {}, piece);
            EXPECT_TRUE(sheet.whole);
            EXPECT_EQ(describe(sheet.cells), c.expected);
        }
}

std::string replace_all(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

std::string with_prefix(std::string xml, const std::string& prefix, const std::string& end_of_tag) {
    for (const char* name : {"row", "c", "v", "f", "is", "t", "sheetData", "worksheet"}) {
        for (const char* behind : {" ", ">", "/>"})
            xml = replace_all(xml, "<" + std::string(name) + behind, "<" + prefix + name + behind);
        xml = replace_all(xml, "</" + std::string(name) + ">", "</" + prefix + name + end_of_tag);
    }
    return xml;
}

// Mark-up that means the same but is not in the plain form.
std::string in_disguise(const std::string& xml) {
    return replace_all(with_prefix(xml, "x:", " >"), " r=\"", "  r = \"");
}

TEST(ReadWorksheet, GivesTheSameCellsForPlainAndOtherMarkUp) {
    std::string rows;
    unsigned seed = 1;
    const auto next = [&] { return (seed = seed * 1103515245u + 12345u) >> 8; };
    for (int row = 1; row <= 400; ++row) {
        rows += "<row r=\"" + std::to_string(row) + "\">";
        for (int column = 0; column < 12; ++column) {
            const std::string head = "<c r=\"" + cell_name(row - 1, column) + "\"";
            switch (next() % 7) {
            case 0:
                rows += head + "><v>" + std::to_string(next() / 1000.0) + "</v></c>";
                break;
            case 1:
                rows += head + " s=\"2\"><v>" + std::to_string(next()) + "e-3</v></c>";
                break;
            case 2:
                rows += head + " t=\"s\"><v>" + std::to_string(next() % 999) + "</v></c>";
                break;
            case 3:
                rows +=
                    head + " t=\"str\"><f>A1</f><v>a&amp;b" + std::to_string(next()) + "</v></c>";
                break;
            case 4:
                rows += head + " t=\"e\"><v>#N/A</v></c>";
                break;
            case 5:
                rows += head + " s=\"1\"/>";
                break;
            default:
                break;
            }
        }
        rows += "</row>";
    }
    const std::string plain = sheet_xml(rows);
    const std::string expected = describe(read(plain).cells);
    EXPECT_GT(expected.size(), 10'000u);
    EXPECT_EQ(describe(read(in_disguise(plain)).cells), expected);
    for (const char* prefix : {"x:", "seven12:", "an_endless_prefix:"})
        EXPECT_EQ(describe(read(with_prefix(plain, prefix, ">")).cells), expected) << prefix;
    EXPECT_EQ(describe(read(plain, {}, 1000).cells), expected);
}

// Each cell in the plain form, and in forms that only the scanner knows.
TEST(ReadWorksheet, GivesTheSameCellForUnusualContent) {
    const struct {
        const char* content; ///< what follows "<c r='A1'"
        const char* expected;
    } cases[] = {
        {" t=\"inlineStr\"><v></v></c>", "A1=''"},
        {" t=\"inlineStr\"></c>", "A1=blank"},
        {" t=\"str\"><v/></c>", "A1=''"},
        {" t=\"e\"><v> #N/A\n</v></c>", "A1=!#N/A"},
        {" t=\"e\"><v> </v></c>", "A1=blank"},
        {" t=\"e\"><v>word</v></c>", "A1=!word"},
        {" s=\"16777217\"/>", "A1/16777215=blank"},
        {" s=\"99999999999\"/>", "A1/16777215=blank"},
        {" s=\"-1\"/>", "A1=blank"},
        {"><v>5.</v></c>", "A1=5.000000"},
        {"><v>.5</v></c>", "A1=0.500000"},
        {"><v>-0.0</v></c>", "A1=-0.000000"},
        {"><v>1e</v></c>", "A1='1e'"},
        {"><v>12345678901234567890123</v></c>", "A1=12345678901234567741440.000000"},
        {" t=\"s\"><v>000000000007</v></c>", "A1=#7"},
        {" t=\"s\"><v> 7 </v></c>", "A1=#7"},
        {"><f x=\"/>\">1</f><v>3</v></c>", "A1=3.000000"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        const std::string plain =
            sheet_xml("<row r=\"1\"><c r=\"A1\"" + std::string(c.content) + "</row>");
        for (const std::string& text :
             {plain, in_disguise(plain), replace_all(plain, "<c r", "<!-- --><c\tr")}) {
            const Sheet sheet = read(text);
            EXPECT_EQ(describe(sheet.cells), c.expected);
            EXPECT_EQ(sheet.cells.shared_strings_end, std::string(c.expected) == "A1=#7" ? 8u : 0u);
        }
    }
}

TEST(ReadWorksheet, FindsTheEndOfARowTagBehindItsAttributes) {
    const std::string cells = "<c r=\"A2\"><v>1</v></c></row>";
    for (const char* tag : {"<row r=\"2\" x=\"/>\">", "<row r=\"2\" x=\"a/>b\" y='\"/>'>",
                            "<row r=\"2\" x='/>' >", "<row r=\"2\" x=\">\" spans=\"1:1\">"})
        EXPECT_EQ(describe(read(sheet_xml(tag + cells + "<row/>")).cells), "A2=1.000000") << tag;
    EXPECT_EQ(describe(read(sheet_xml("<row r=\"2e0\">" + cells)).cells), "A2=1.000000");
    EXPECT_THROW(read(sheet_xml("<row r=\"2x\">" + cells)), Error);
}

TEST(ReadWorksheet, ReadsRootsOfSheetsOnly) {
    for (const char* root : {"worksheet", "dialogsheet", "xm:macrosheet", "chartsheet"})
        EXPECT_TRUE(read("<?xml version=\"1.0\"?>\n<" + std::string(root) + "/>").whole) << root;
    for (const char* root : {"html", "Types", "sheetData"})
        EXPECT_THROW(read("<" + std::string(root) + "/>"), Error) << root;
}

TEST(ReadWorksheet, LooksAtEveryByteOfALongTagOnce) {
    const std::string xml = sheet_xml("<row r=\"1\" note=\"" + std::string(4u << 20, '>') +
                                      "\"><c r=\"A1\"><v>1</v></c></row>");
    EXPECT_EQ(describe(read(xml).cells), "A1=1.000000");
}

TEST(ReadWorksheet, StopsBehindTheLastWantedRow) {
    std::string rows;
    for (int row = 1; row <= 5000; ++row)
        rows += "<row r=\"" + std::to_string(row) + "\"><c r=\"A" + std::to_string(row) + "\"><v>" +
                std::to_string(row) + "</v></c></row>";
    const std::string xml = sheet_xml(rows, "<mergeCells><mergeCell ref=\"A1:B2\"/></mergeCells>");
    for (const std::string& text : {xml, in_disguise(xml), with_prefix(xml, "x:", ">")}) {
        MemorySource source(text, 4096);
        SheetCells cells{kMaxColumns};
        SheetTail tail;
        EXPECT_FALSE(read_worksheet(source, {2, 4}, DateBase::From1900, cells, tail));
        EXPECT_EQ(describe(cells), "A3=3.000000 A4=4.000000 A5=5.000000");
        EXPECT_LT(source.position(), 10'000u);
        EXPECT_THAT(tail.merged_regions, IsEmpty());
        MemorySource again(text, 4096);
        const SheetTail read_later = read_worksheet_tail(again);
        ASSERT_EQ(read_later.merged_regions.size(), 1u);
        EXPECT_EQ(read_later.merged_regions[0].last_column, 1);
    }
}

TEST(ReadWorksheet, SkipsRowsThatHoldMarkUpInDisguise) {
    const std::string xml =
        sheet_xml("<row r=\"1\"><c r=\"A1\" t=\"str\"><v><![CDATA[</row>]]></v></c><!-- </row> "
                  "--><?a </row>?>"
                  "</row>"
                  "<row r=\"2\"><c r=\"A2\"><v>2</v></c></row>");
    for (std::size_t piece : {1u, 1u << 20})
        EXPECT_EQ(describe(read(xml, {1, 1}, piece).cells), "A2=2.000000");
}

TEST(ReadWorksheet, ReadsWhatFollowsTheCells) {
    const Sheet sheet = read(sheet_xml(
        "", "<sheetProtection sheet=\"TRUE\"/><mergeCells count=\"9\"><mergeCell ref=\"B2:A1\"/>"
            "<mergeCell ref=\"C3\"/></mergeCells><extLst><ext><mergeCells><mergeCell ref=\"?\"/>"
            "</mergeCells></ext></extLst>"));
    EXPECT_TRUE(sheet.tail.is_protected);
    ASSERT_EQ(sheet.tail.merged_regions.size(), 2u);
    EXPECT_EQ(sheet.tail.merged_regions[0].first_row, 0);
    EXPECT_EQ(sheet.tail.merged_regions[0].last_column, 1);
    EXPECT_EQ(sheet.tail.merged_regions[1].first_column, 2);
    EXPECT_FALSE(read(sheet_xml("", "<sheetProtection sheet=\"0\"/>")).tail.is_protected);
}

TEST(ReadWorksheet, ReadsOtherEncodings) {
    const std::string body = "<row r=\"1\"><c r=\"A1\" t=\"str\"><v>\xC3\xA9</v></c></row>";
    const std::string utf8 = sheet_xml(body);
    std::string little("\xFF\xFE"), big("\xFE\xFF");
    for (char c : sheet_xml(replace_all(body, "\xC3\xA9", "\xE9"))) {
        little += {c, '\0'};
        big += {'\0', c};
    }
    const std::string latin = "<?xml version=\"1.0\" encoding='ISO-8859-1'?>" +
                              sheet_xml(replace_all(body, "\xC3\xA9", "\xE9"));
    for (const std::string& text :
         {utf8, "\xEF\xBB\xBF" + utf8, little, big, little.substr(2), big.substr(2), latin})
        for (std::size_t piece : {1u << 20, 3u})
            EXPECT_EQ(describe(read(text, {}, piece).cells), "A1='\xC3\xA9'");
}

struct BadCase {
    const char* property;
    std::string xml;
    const char* expected;
};

TEST(ReadWorksheet, SaysWhatIsWrong) {
    const auto one_cell = [](const std::string& cell) {
        return sheet_xml("<row r=\"1\">" + cell + "</row>");
    };
    std::string deep = "<worksheet><sheetData>", wide, attributes, pieces;
    for (int i = 0; i < 1000; ++i)
        deep += "<a>";
    for (int i = 0; i < 16385; ++i)
        wide += "<c><v>1</v></c>";
    for (int i = 0; i < 10'001; ++i)
        attributes += " a=''";
    for (int i = 0; i < 17; ++i)
        pieces += "<![CDATA[" + std::string(1u << 20, 'x') + "]]>";
    const BadCase cases[] = {
        {"cut off", "<worksheet><sheetData><row r=\"1\"><c r=\"A1\"><v>1", "ends within"},
        {"cut off in a tag", "<worksheet><sheetData><row r=\"1", "not closed"},
        {"no element", "plain text", "no element"},
        {"entity declarations", "<!DOCTYPE x [<!ENTITY a \"b\">]><worksheet/>", "entities"},
        {"unknown entity", one_cell("<c r=\"A1\" t=\"str\"><v>&a;</v></c>"), "reference"},
        {"deep nesting", deep, "nested deeper"},
        {"a column too far", one_cell("<c r=\"XFE1\"><v>1</v></c>"), "XFE1"},
        {"a row too far", sheet_xml("<row r=\"1048577\"/>"), "1048577"},
        {"row zero", sheet_xml("<row r=\"0\"/>"), "row number"},
        {"more cells than columns", one_cell(wide), "more cells"},
        {"too many attributes", one_cell("<c" + attributes + "/>"), "attributes"},
        {"too long a text", one_cell("<c t=\"str\"><v>" + pieces + "</v></c>"), "longer than"},
        {"unknown type", one_cell("<c r=\"A1\" t=\"zz\"><v>1</v></c>"), "\"zz\""},
        {"bad shared index", one_cell("<c r=\"A1\" t=\"s\"><v>-1</v></c>"), "cell A1"},
        {"bad merge", sheet_xml("", "<mergeCells><mergeCell ref=\"A1:ZZZZ9\"/></mergeCells>"),
         "A1:ZZZZ9"},
        {"unknown encoding", "<?xml version=\"1.0\" encoding=\"EBCDIC\"?><a/>", "ebcdic"},
    };
    for (const BadCase& c : cases) {
        SCOPED_TRACE(c.property);
        try {
            read(c.xml, {}, 100);
            ADD_FAILURE() << "no error";
        } catch (const Error& e) {
            EXPECT_THAT(e.what(), HasSubstr(c.expected));
            EXPECT_THAT(e.what(), HasSubstr("sheet1.xml"));
        }
    }
}

TEST(ReadWorksheet, CountsTheSharedStringsThatItNeeds) {
    const std::string rows =
        R"(<row r="1"><c r="A1" t="s"><v>41</v></c><c r='B1' t='s'><v>7</v></c></row>)";
    EXPECT_EQ(read(sheet_xml(rows)).cells.shared_strings_end, 42u);
    EXPECT_EQ(read(in_disguise(sheet_xml(rows))).cells.shared_strings_end, 42u);
}

} // namespace
} // namespace workbook::test
