// SPDX-License-Identifier: Apache-2.0
//
// The parts of a workbook file, written from a drawing.
#include "tests/spreadsheet/drawn_book.h"

#include <fstream>
#include <sstream>
#include <string_view>

#include "tests/workbook/zip_builder.h"

namespace spreadsheet::test {
namespace {

constexpr const char* kFile = "drawn.xlsx";
constexpr const char* kNamespace =
    R"(xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main")";
constexpr const char* kOffice =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

enum Style { kDefault, kDate, kPercent, kUnlocked };

/// Takes "~d" and the like off the end of a cell.
Style take_style(std::string& cell) {
    const std::size_t mark = cell.rfind('~');
    if (mark == std::string::npos) return cell[0] == 'd' ? kDate : kDefault;
    const char letter = cell.at(mark + 1);
    cell.resize(mark);
    return letter == 'd' ? kDate : letter == 'p' ? kPercent : kUnlocked;
}

std::string cell_xml(std::string cell, const std::string& name) {
    const Style style = take_style(cell);
    const auto element = [&](const std::string& type, const std::string& content) {
        return "<c r=\"" + name + "\" s=\"" + std::to_string(style) + "\"" + type + ">" + content +
               "</c>";
    };
    const auto value = [](const std::string& text) { return "<v>" + text + "</v>"; };
    const bool is_iso_date = cell.size() == 10 && cell[4] == '-';
    if (cell == ".") return {};
    if (cell == "b") return element("", "");
    if (cell == "TRUE" || cell == "FALSE")
        return element(" t=\"b\"", value(cell == "TRUE" ? "1" : "0"));
    if (cell[0] == '\'')
        return element(" t=\"inlineStr\"", "<is><t>" + cell.substr(1) + "</t></is>");
    if (cell[0] == '#') return element(" t=\"e\"", value(cell));
    if (is_iso_date) return element(" t=\"d\"", value(cell));
    return element("", value(cell[0] == 'd' ? cell.substr(1) : cell));
}

std::string sheet_xml(const Drawing& drawing) {
    std::string xml = std::string("<worksheet ") + kNamespace + "><sheetData>";
    for (std::size_t row = 0; row < drawing.rows.size(); ++row) {
        const std::string number = std::to_string(row + 1);
        xml += "<row r=\"" + number + "\">";
        std::istringstream cells(drawing.rows[row]);
        char column = 'A';
        for (std::string cell; cells >> cell; ++column)
            xml += cell_xml(cell, column + number);
        xml += "</row>";
    }
    xml += "</sheetData>";
    if (drawing.is_damaged_after_cells) return xml + "<mergeCells";
    if (drawing.is_protected) xml += R"(<sheetProtection sheet="1"/>)";
    if (!drawing.merges.empty()) {
        xml += "<mergeCells>";
        for (const std::string& region : drawing.merges)
            xml += "<mergeCell ref=\"" + region + "\"/>";
        xml += "</mergeCells>";
    }
    return xml + "</worksheet>";
}

std::string workbook_xml(const Drawing& drawing) {
    std::string xml = std::string("<workbook ") + kNamespace + " xmlns:r=\"" + kOffice + "\">";
    if (drawing.dates_1904) xml += R"(<workbookPr date1904="1"/>)";
    xml += R"(<sheets><sheet name="Data" sheetId="1" r:id="rId1"/></sheets>)";
    if (!drawing.defined_names.empty())
        xml += "<definedNames>" + drawing.defined_names + "</definedNames>";
    return xml + "</workbook>";
}

std::string styles_xml(const Drawing& drawing) {
    const std::string unlocked = R"( applyProtection="1"><protection locked="0"/></xf>)";
    std::string xml = std::string("<styleSheet ") + kNamespace + R"(><fonts><font/></fonts>
<fills><fill/></fills><borders><border/></borders><cellStyleXfs><xf/></cellStyleXfs><cellXfs>)";
    xml += "<xf numFmtId=\"0\"" + (drawing.is_default_unlocked ? unlocked : "/>");
    xml += R"(<xf numFmtId="22"/><xf numFmtId="9"/><xf numFmtId="0")" + unlocked;
    return xml + "</cellXfs></styleSheet>";
}

std::string relationships_xml(const std::vector<std::string>& types_and_targets) {
    std::string xml =
        R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)";
    for (std::size_t i = 0; i < types_and_targets.size(); i += 2)
        xml += "<Relationship Id=\"rId" + std::to_string(i / 2 + 1) + "\" Type=\"" + kOffice + "/" +
               types_and_targets[i] + "\" Target=\"" + types_and_targets[i + 1] + "\"/>";
    return xml + "</Relationships>";
}

constexpr const char* kContentTypes =
    R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>
<Default Extension="xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml"/>
<Override PartName="/xl/workbook.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml"/>
<Override PartName="/xl/styles.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml"/>
</Types>)";

void write_file(const Drawing& drawing, const std::u16string& path) {
    const std::string bytes = workbook::test::build_zip(
        {{"[Content_Types].xml", kContentTypes},
         {"_rels/.rels", relationships_xml({"officeDocument", "xl/workbook.xml"})},
         {"xl/workbook.xml", workbook_xml(drawing)},
         {"xl/_rels/workbook.xml.rels",
          relationships_xml({"worksheet", "sheet1.xml", "styles", "styles.xml"})},
         {"xl/styles.xml", styles_xml(drawing)},
         {"xl/sheet1.xml", sheet_xml(drawing)}});
    std::ofstream(std::filesystem::path(path), std::ios::binary) << bytes;
}

} // namespace

DrawnBook::DrawnBook(const Drawing& drawing) {
    write_file(drawing, folder_.file(kFile));
    book_.init_from_file(folder_.file(kFile), book::format::XLSX);
}

DrawnBook::DrawnBook(const Drawing& drawing, std::size_t first_row, std::size_t last_row) {
    write_file(drawing, folder_.file(kFile));
    book_.init_from_file_with_range(folder_.file(kFile), book::format::XLSX, 0, first_row,
                                    last_row);
}

std::shared_ptr<ISheet> DrawnBook::saved() {
    const std::u16string path = folder_.file("saved.xlsx");
    book_.save(path);
    again_.init_from_file(path, book::format::XLSX);
    return again_.sheet(std::size_t{0});
}

} // namespace spreadsheet::test
