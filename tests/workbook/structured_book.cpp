// SPDX-License-Identifier: Apache-2.0
#include "tests/workbook/structured_book.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include "foundation/unicode.h"
#include "tests/workbook/memory_source.h"
#include "workbook/opc/part_name.h"

namespace workbook::test {

namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr std::string_view kMain =
    "xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
    "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\" "
    "xmlns:x14=\"http://schemas.microsoft.com/office/spreadsheetml/2009/9/main\" "
    "xmlns:xm=\"http://schemas.microsoft.com/office/excel/2006/main\"";

std::string part(std::string_view text) {
    return std::string(kDeclaration).append(text);
}

std::string worksheet(std::string_view content) {
    return part("<worksheet " + std::string(kMain) + ">" + std::string(content) + "</worksheet>");
}

std::string content_types() {
    struct Type {
        const char *part, *type;
    } const types[] = {
        {"xl/workbook.xml", "spreadsheetml.sheet.main"},
        {"xl/worksheets/sheet1.xml", "spreadsheetml.worksheet"},
        {"xl/worksheets/sheet2.xml", "spreadsheetml.worksheet"},
        {"xl/worksheets/sheet3.xml", "spreadsheetml.worksheet"},
        {"xl/chartsheets/sheet1.xml", "spreadsheetml.chartsheet"},
        {"xl/tables/table1.xml", "spreadsheetml.table"},
        {"xl/comments1.xml", "spreadsheetml.comments"},
        {"xl/drawings/drawing1.xml", "drawing"},
        {"xl/drawings/drawing2.xml", "drawing"},
        {"xl/charts/chart1.xml", "drawingml.chart"},
        {"xl/charts/chart2.xml", "drawingml.chart"},
        {"xl/pivotTables/pivotTable1.xml", "spreadsheetml.pivotTable"},
        {"xl/pivotCache/pivotCacheDefinition1.xml", "spreadsheetml.pivotCacheDefinition"},
        {"xl/calcChain.xml", "spreadsheetml.calcChain"},
    };
    std::string text =
        "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/"
        "content-types\"><Default Extension=\"xml\" ContentType=\"application/xml\"/>"
        "<Default Extension=\"rels\" ContentType=\"application/"
        "vnd.openxmlformats-package.relationships+xml\"/><Default "
        "Extension=\"png\" ContentType=\"image/png\"/><Default Extension=\"vml\" "
        "ContentType=\"application/vnd.openxmlformats-officedocument.vmlDrawing\"/>";
    for (const Type& type : types)
        text += std::string("<Override PartName=\"/") + type.part +
                "\" ContentType=\"application/vnd.openxmlformats-officedocument." + type.type +
                "+xml\"/>";
    return part(text + "</Types>");
}

std::string workbook_part() {
    return part(
        "<workbook " + std::string(kMain) +
        "><workbookPr codeName=\"ThisWorkbook\"/><bookViews><workbookView activeTab=\"1\"/>"
        "</bookViews><sheets><sheet name=\"Data\" sheetId=\"1\" r:id=\"rId1\"/>"
        "<sheet name=\"Report\" sheetId=\"4\" r:id=\"rId2\"/>"
        "<sheet name=\"It's here\" sheetId=\"5\" state=\"hidden\" r:id=\"rId3\"/>"
        "<sheet name=\"Graph\" sheetId=\"9\" r:id=\"rId4\"/></sheets><definedNames>"
        "<definedName name=\"All\">SUM(Data:Graph!$A$1)</definedName>"
        "<definedName name=\"Missing\">Nowhere!$A$1</definedName>"
        "<definedName name=\"_xlnm.Print_Area\" localSheetId=\"0\">Data!$A$1:$B$9</definedName>"
        "<definedName name=\"_xlnm.Print_Area\" localSheetId=\"1\" "
        "comment=\"c\">Report!$A$1</definedName>"
        "<definedName name=\"Total\">Data!$B$9+'It''s here'!$A$1</definedName></definedNames>"
        "<calcPr calcId=\"1\"/><customWorkbookViews><customWorkbookView name=\"v\" "
        "activeSheetId=\"4\"/></customWorkbookViews><pivotCaches><pivotCache cacheId=\"7\" "
        "r:id=\"rId5\"/></pivotCaches></workbook>");
}

std::string data_sheet() {
    return worksheet(
        "<sheetPr codeName=\"Sheet1\"/><sheetViews><sheetView tabSelected=\"1\" "
        "workbookViewId=\"0\"/></sheetViews><sheetData><row r=\"1\"><c r=\"A1\"><f>Report!A1&amp;"
        "&quot;Report!A1&quot;</f><v>1</v></c><c r=\"B1\"><f>SUM(Sales[Amount])+Data!A1</f></c>"
        "<c r=\"C1\"><v>3</v></c></row></sheetData><conditionalFormatting sqref=\"A1\"><cfRule>"
        "<formula>Report!$A$1&gt;1</formula></cfRule></conditionalFormatting><dataValidations>"
        "<dataValidation sqref=\"B2\"><formula1>Report!$A$1:$A$3</formula1></dataValidation>"
        "</dataValidations><hyperlinks><hyperlink ref=\"A2\" location=\"'Report'!A1\"/>"
        "<hyperlink ref=\"A3\" r:id=\"rId5\"/></hyperlinks><legacyDrawing r:id=\"rId2\"/>"
        "<tableParts count=\"1\"><tablePart r:id=\"rId1\"/></tableParts><extLst><ext "
        "uri=\"{05C60535-1F16-4fd2-B633-F4F36F0B64E0}\"><x14:sparklineGroups><x14:sparkline>"
        "<xm:f>Report!A1:A9</xm:f><xm:sqref>D1</xm:sqref></x14:sparkline></x14:sparklineGroups>"
        "</ext></extLst>");
}

std::string report_sheet() {
    return worksheet(
        "<sheetData><row r=\"1\"><c r=\"A1\"><f>Data!A1+Report!A2+'It''s here'!A1</f></c>"
        "</row></sheetData><drawing r:id=\"rId1\"/><extLst><ext uri=\"{A8765BA9-456A-4dab-B4F3-"
        "ACF838C121DE}\"><x14:slicerList><x14:slicer r:id=\"rId3\"/><ext/></x14:slicerList></ext>"
        "<ext uri=\"{other}\"/></extLst>");
}

std::string drawing(std::string_view anchors) {
    return part("<xdr:wsDr xmlns:xdr=\"http://schemas.openxmlformats.org/drawingml/2006/"
                "spreadsheetDrawing\" xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/"
                "2006/relationships\" xmlns:sle=\"urn:sle\">" +
                std::string(anchors) + "</xdr:wsDr>");
}

std::string chart(std::string_view formula) {
    return part("<c:chartSpace xmlns:c=\"http://schemas.openxmlformats.org/drawingml/2006/"
                "chart\"><c:pivotSource><c:name>[book.xlsx]Report!PivotTable1</c:name>"
                "</c:pivotSource><c:val><c:numRef><c:f>" +
                std::string(formula) +
                "</c:f></c:numRef></c:val><c:name>Report!x</c:name>"
                "</c:chartSpace>");
}

class StringSink final : public ByteSink {
  public:
    void append(const char* bytes, std::size_t count) override { text.append(bytes, count); }
    std::string text;
};

} // namespace

std::string relationship(std::string_view id, std::string_view type, std::string_view target) {
    return "<Relationship Id=\"" + std::string(id) +
           "\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/" +
           std::string(type) + "\" Target=\"" + std::string(target) + "\"/>";
}

std::string relationships(std::string_view elements) {
    return part("<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/"
                "relationships\">" +
                std::string(elements) + "</Relationships>");
}

std::vector<ZipItem> structured_book() {
    const std::string table =
        "<table xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" id=\"3\" "
        "name=\"Sales\" displayName=\"Sales\" ref=\"A1:B2\"><tableColumns count=\"1\"><tableColumn "
        "id=\"1\" name=\"Amount\"><calculatedColumnFormula>Sales[[#This Row],[Amount]]+Report!A1"
        "</calculatedColumnFormula></tableColumn></tableColumns></table>";
    const std::string cache =
        "<pivotCacheDefinition xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/"
        "main\"><cacheSource type=\"worksheet\"><worksheetSource ref=\"A1:B2\" sheet=\"Data\"/>"
        "</cacheSource></pivotCacheDefinition>";
    return {
        {"[Content_Types].xml", content_types()},
        {"_rels/.rels",
         relationships(relationship("rId1", "officeDocument", "xl/workbook.xml") +
                       relationship("rId2", "extended-properties", "docProps/app.xml"))},
        {"docProps/app.xml", part("<Properties><Application>x</Application><HeadingPairs/>"
                                  "<TitlesOfParts/></Properties>")},
        {"xl/workbook.xml", workbook_part()},
        {"xl/_rels/workbook.xml.rels",
         relationships(
             relationship("rId1", "worksheet", "worksheets/sheet1.xml") +
             relationship("rId2", "worksheet", "worksheets/sheet2.xml") +
             relationship("rId3", "worksheet", "worksheets/sheet3.xml") +
             relationship("rId4", "chartsheet", "chartsheets/sheet1.xml") +
             relationship("rId5", "pivotCacheDefinition", "pivotCache/pivotCacheDefinition1.xml") +
             relationship("rId6", "calcChain", "calcChain.xml") +
             relationship("rId8", "slicerCache", "slicerCaches/slicerCache1.xml"))},
        {"xl/slicerCaches/slicerCache1.xml",
         part("<slicerCacheDefinition><pivotTables><pivotTable tabId=\"4\" name=\"P\"/>"
              "</pivotTables><data/></slicerCacheDefinition>")},
        {"xl/worksheets/sheet1.xml", data_sheet()},
        {"xl/worksheets/_rels/sheet1.xml.rels",
         relationships(relationship("rId1", "table", "../tables/table1.xml") +
                       relationship("rId2", "vmlDrawing", "../drawings/vmlDrawing1.vml") +
                       relationship("rId3", "comments", "../comments1.xml") +
                       relationship("rId4", "worksheet", "sheet1.xml") +
                       "<Relationship Id=\"rId5\" Type=\"x/hyperlink\" "
                       "Target=\"http://example.com/\" TargetMode=\"External\"/>")},
        {"xl/tables/table1.xml", part(table)},
        {"xl/comments1.xml", part("<comments/>")},
        {"xl/drawings/vmlDrawing1.vml",
         "<xml xmlns:x=\"urn:x\"><br><x:FmlaLink>Report!$A$1</x:FmlaLink></br></xml>"},
        {"xl/worksheets/sheet2.xml", report_sheet()},
        {"xl/worksheets/_rels/sheet2.xml.rels",
         relationships(relationship("rId1", "drawing", "../drawings/drawing1.xml") +
                       relationship("rId2", "pivotTable", "../pivotTables/pivotTable1.xml") +
                       relationship("rId3", "slicer", "../slicers/slicer1.xml"))},
        {"xl/slicers/slicer1.xml", part("<slicers/>")},
        {"xl/drawings/drawing1.xml",
         drawing(
             "<xdr:a><xdr:sp macro=\"\" textlink=\"Data!$A$1\"/></xdr:a><xdr:b><xdr:graphicFrame>"
             "<sle:slicer/></xdr:graphicFrame></xdr:b>")},
        {"xl/drawings/_rels/drawing1.xml.rels",
         relationships(relationship("rId1", "chart", "../charts/chart1.xml") +
                       relationship("rId2", "image", "../media/image1.png") +
                       relationship("rId3", "hyperlink", "#'It''s%20here'!A1") +
                       relationship("rId4", "chart", "../charts/absent.xml"))},
        {"xl/charts/chart1.xml", chart("Report!$A$1:$A$3")},
        {"xl/charts/_rels/chart1.xml.rels",
         relationships(relationship("rId1", "chartStyle", "style1.xml"))},
        {"xl/charts/style1.xml", part("<style/>")},
        {"xl/media/image1.png", "not really a picture"},
        {"xl/pivotTables/pivotTable1.xml", part("<pivotTableDefinition/>")},
        {"xl/pivotTables/_rels/pivotTable1.xml.rels",
         relationships(relationship("rId1", "pivotCacheDefinition",
                                    "../pivotCache/pivotCacheDefinition1.xml"))},
        {"xl/pivotCache/pivotCacheDefinition1.xml", part(cache)},
        {"xl/worksheets/sheet3.xml", worksheet("<sheetData/>")},
        {"xl/chartsheets/sheet1.xml",
         part("<chartsheet " + std::string(kMain) + "><drawing r:id=\"rId1\"/></chartsheet>")},
        {"xl/chartsheets/_rels/sheet1.xml.rels",
         relationships(relationship("rId1", "drawing", "../drawings/drawing2.xml"))},
        {"xl/drawings/drawing2.xml", drawing("")},
        {"xl/drawings/_rels/drawing2.xml.rels",
         relationships(relationship("rId1", "chart", "../charts/chart2.xml") +
                       relationship("rId2", "image", "../media/image1.png"))},
        {"xl/charts/chart2.xml", chart("Data!$A$1:$A$3")},
        {"xl/calcChain.xml", part("<calcChain/>")},
        {"xl/lonely.xml", part("<lonely/>")},
    };
}

EditedBook::EditedBook(const std::vector<ZipItem>& items)
    : items_(items),
      package_(std::make_unique<OpcPackage>(foundation::files::memory_file(build_zip(items)))),
      workbook_(read_workbook_part(*package_)),
      editor_(std::make_unique<WorkbookEditor>(*package_, workbook_)) {}

std::string EditedBook::sheet_names() const {
    std::string names;
    for (const auto& sheet : workbook_.sheets)
        names += (names.empty() ? "" : "|") + foundation::unicode::to_utf8(sheet->name);
    return names;
}

std::map<std::string, std::string> EditedBook::changed_parts() {
    std::map<std::string, std::string> texts;
    const PackageChanges changes = editor_->changes();
    for (const PartChange& change : changes.written) {
        StringSink sink;
        change.write(sink);
        EXPECT_FALSE(changes.dropped.contains(change.part)) << change.part;
        EXPECT_TRUE(texts.emplace(change.part, sink.text).second) << change.part << " comes twice";
        pugi::xml_document tree;
        const bool is_xml = change.part.ends_with("xml") || change.part.ends_with(".rels");
        EXPECT_TRUE(!is_xml || tree.load_buffer(sink.text.data(), sink.text.size())) << change.part;
    }
    return texts;
}

std::vector<ZipItem> EditedBook::saved_items() {
    std::map<std::string, std::string> texts = changed_parts();
    const PackageChanges changes = editor_->changes();
    std::vector<ZipItem> saved;
    for (ZipItem item : items_) {
        const std::string name = canonical_part_name(item.name);
        if (changes.dropped.contains(name)) continue;
        if (const auto changed = texts.find(name); changed != texts.end()) {
            item.content = changed->second;
            texts.erase(changed);
        }
        saved.push_back(std::move(item));
    }
    for (auto& [name, text] : texts)
        saved.push_back({name, std::move(text)});
    return saved;
}

std::string EditedBook::saved(const std::string& part_name) {
    for (const ZipItem& item : saved_items())
        if (canonical_part_name(item.name) == canonical_part_name(part_name)) return item.content;
    return "absent";
}

bool EditedBook::drops(const std::string& part_name) {
    return editor_->changes().dropped.contains(canonical_part_name(part_name));
}

void EditedBook::save() {
    items_ = saved_items();
    auto package = std::make_unique<OpcPackage>(foundation::files::memory_file(build_zip(items_)));
    editor_->rebase(*package);
    package_ = std::move(package);
}

WorkbookPart EditedBook::reloaded() {
    OpcPackage package(foundation::files::memory_file(build_zip(saved_items())));
    return read_workbook_part(package);
}

} // namespace workbook::test
