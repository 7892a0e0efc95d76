// SPDX-License-Identifier: Apache-2.0
//
// References in the mark-up of every kind of part, and mark-up that has to pass as it stands.
#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "workbook/xlsx/formula/formula_text.h"
#include "workbook/xlsx/structure/reference_rewriter.h"

namespace workbook {
namespace {

/// "A" is now called "B c", "Gone" is gone.
std::shared_ptr<PartEdits> edits() {
    const auto map = [](std::string_view name) -> std::optional<std::string> {
        if (name == "A") return "B c";
        if (name == "Gone") return {};
        return std::string{name};
    };
    auto edits = std::make_shared<PartEdits>();
    edits->formula = [map](std::string_view formula) { return rename_sheets(formula, map); };
    edits->sheet_name = [map](std::string_view name) -> std::optional<std::string> {
        const std::optional<std::string> now = map(name);
        if (!now) return "#REF!";
        return *now == name ? std::nullopt : now;
    };
    return edits;
}

std::string rewritten(const std::string& text, std::size_t step = std::string::npos,
                      const std::shared_ptr<const PartEdits>& with = edits()) {
    ReferenceRewriter rewriter(std::make_unique<test::MemorySource>(text, step), with);
    const std::string out = test::read_all(rewriter, 7);
    EXPECT_EQ(rewriter.has_changed(), out != text) << text;
    EXPECT_EQ(would_change(std::make_unique<test::MemorySource>(text), with), out != text) << text;
    return out;
}

TEST(ReferenceRewriter, FindsThePlacesThatNameSheets) {
    struct Case {
        const char *part, *rewritten;
    } const cases[] = {
        {"<x:f>A!A1&lt;1</x:f>", "<x:f>'B c'!A1&lt;1</x:f>"},
        {"<f t=\"shared\" ref=\"A1\">Gone!A1</f>", "<f t=\"shared\" ref=\"A1\">#REF!</f>"},
        {"<f><![CDATA[A!A1<]]>1<!-- A!A2 --></f>", "<f>'B c'!A1&lt;1</f>"},
        {"<formula1><xm:f>A!A1</xm:f></formula1>", "<formula1><xm:f>'B c'!A1</xm:f></formula1>"},
        {"<formula>=A!A1</formula>", "<formula>='B c'!A1</formula>"},
        {"<totalsRowFormula>A!A1</totalsRowFormula>",
         "<totalsRowFormula>'B c'!A1</totalsRowFormula>"},
        {"<hyperlink ref='A1' location='A!A1'/>", "<hyperlink ref='A1' location=\"'B c'!A1\"/>"},
        {"<worksheetSource ref=\"A1\" sheet=\"A\"/>",
         "<worksheetSource ref=\"A1\" sheet=\"B c\"/>"},
        {"<worksheetSource sheet=\"Gone\"/>", "<worksheetSource sheet=\"#REF!\"/>"},
        {"<rangeSet sheet=\"A\"/><dataRef sheet=\"A\"/>",
         "<rangeSet sheet=\"B c\"/><dataRef sheet=\"B c\"/>"},
        {"<xdr:sp textlink=\"A!$A$1\">", "<xdr:sp textlink=\"'B c'!$A$1\">"},
        {"<formControlPr fmlaLink=\"A!$A$1\" fmlaRange=\"$A$1\"/>",
         "<formControlPr fmlaLink=\"'B c'!$A$1\" fmlaRange=\"$A$1\"/>"},
        {"<controlPr linkedCell=\"A!A1\" listFillRange=\"A!A2\"/>",
         "<controlPr linkedCell=\"'B c'!A1\" listFillRange=\"'B c'!A2\"/>"},
        {"<cfvo type=\"formula\" val=\"A!$A$1\"/>", "<cfvo type=\"formula\" val=\"'B c'!$A$1\"/>"},
        {"<c15:sqref>A!A1</c15:sqref>", "<c15:sqref>'B c'!A1</c15:sqref>"},
        {"<x:FmlaRange>A!A1</x:FmlaRange><br>", "<x:FmlaRange>'B c'!A1</x:FmlaRange><br>"},
        {"<c:pivotSource><c:name>[b.xlsx]A!P</c:name>",
         "<c:pivotSource><c:name>[b.xlsx]B c!P</c:name>"},
        {"<Relationship Target=\"#A!A1\"/>", "<Relationship Target=\"#'B%20c'!A1\"/>"},
        {"<Relationship Target='#%47one!A1'/>", "<Relationship Target=\"#%23REF!\"/>"},
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?><f>A!A1</f>",
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?><f>'B c'!A1</f>"},
    };
    for (const Case& c : cases)
        for (const std::size_t step : {std::size_t{1}, std::string::npos})
            EXPECT_EQ(rewritten(c.part, step), c.rewritten);
}

TEST(ReferenceRewriter, PassesEverythingElseAsItStands) {
    const char* const parts[] = {
        "<v>A!A1</v><t>Gone!A1</t>",
        "<!-- <f>A!A1</f> --><![CDATA[<f>A!A1</f>]]><?x <f>A!A1</f>?>",
        "<f/>A!A1<f></f><f>Other!A1 &#x41;</f>",
        "<f>A!A1&unknown;</f>",
        "<f>A!A1<b/></f>",
        "<f>A!A1",
        "<worksheetSource r:id=\"rId1\" sheet=\"A\"/><rangeSet sheet=\"A\" r:id=\"rId2\"/>",
        "<c:name>[b.xlsx]A!P</c:name>",
        "<Relationship Target=\"A!A1\"/><Relationship Target=\"x#A!A1\"/>",
        "<a b = 'x>y' c\n=\"<\"  d/><cut off=\"",
        "<sheetPr codeName=\"A\"/><sheetView tabSelected=\"1\"/>",
        "\r\n<x  />\r\n&amp;&#13;",
        "<",
    };
    for (const char* part : parts)
        for (const std::size_t step : {std::size_t{1}, std::string::npos})
            EXPECT_EQ(rewritten(part, step), part);
}

TEST(ReferenceRewriter, LeavesOutWhatACopyCannotHave) {
    auto copy = std::make_shared<PartEdits>();
    copy->is_sheet_copy = copy->clears_tab_selected = true;
    EXPECT_EQ(rewritten("<sheetPr codeName=\"S\" filterMode=\"1\"/><sheetView a=\"1\" "
                        "tabSelected=\"1\" b=\"2\"/><ext uri=\"{a8765ba9-456a-4dab-b4f3-"
                        "acf838c121de}\"><x><ext></ext><ext/></x></ext><ext uri=\"{o}\"><y/></ext>",
                        1, copy),
              "<sheetPr filterMode=\"1\"/><sheetView a=\"1\" b=\"2\"/><ext uri=\"{o}\"><y/></ext>");
}

TEST(ReferenceRewriter, TurnsUtf16IntoUtf8) {
    std::u16string text = u"\xFEFF<?xml version='1.0' encoding='UTF-16'?><f>A!A1&\"\u0416\"</f>";
    text.replace(text.find(u'&'), 1, u"&amp;");
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    ReferenceRewriter rewriter(std::make_unique<test::MemorySource>(bytes), edits());
    EXPECT_EQ(test::read_all(rewriter),
              "<?xml version='1.0' encoding='UTF-8'?><f>'B c'!A1&amp;\"\xD0\x96\"</f>");
}

TEST(ReferenceRewriter, CrossesBlocksOfAnyLength) {
    std::string text = "<worksheet>", wanted = "<worksheet>";
    for (int i = 0; i < 20'000; ++i) {
        text += "<c r=\"A1\"><f>A!A1+\"" + std::string(static_cast<std::size_t>(i % 50), 'x') +
                "\"</f></c>";
        wanted += "<c r=\"A1\"><f>'B c'!A1+\"" +
                  std::string(static_cast<std::size_t>(i % 50), 'x') + "\"</f></c>";
    }
    ReferenceRewriter rewriter(std::make_unique<test::MemorySource>(text), edits());
    EXPECT_EQ(test::read_all(rewriter), wanted);
}

} // namespace
} // namespace workbook
