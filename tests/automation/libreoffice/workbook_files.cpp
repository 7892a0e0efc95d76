// SPDX-License-Identifier: Apache-2.0
#include "tests/automation/libreoffice/workbook_files.h"

#include "tests/workbook/zip_builder.h"

namespace spreadsheet {

std::string one_sheet_book(const std::string& cells, const std::string& after,
                           const std::string& names) {
    const std::string main = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
    const std::string office =
        "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
    const std::string package = "http://schemas.openxmlformats.org/package/2006/";
    const std::string type = "application/vnd.openxmlformats-officedocument.spreadsheetml.";
    return workbook::test::build_zip({
        {"[Content_Types].xml",
         "<Types xmlns='" + package +
             "content-types'><Default Extension='rels' ContentType='application/"
             "vnd.openxmlformats-package.relationships+xml'/><Override PartName='/xl/workbook.xml' "
             "ContentType='" +
             type + "sheet.main+xml'/><Override PartName='/xl/s1.xml' ContentType='" + type +
             "worksheet+xml'/><Override PartName='/xl/styles.xml' ContentType='" + type +
             "styles+xml'/></Types>"},
        {"_rels/.rels", "<Relationships xmlns='" + package +
                            "relationships'><Relationship Id='r' Type='" + office +
                            "/officeDocument' Target='xl/workbook.xml'/></Relationships>"},
        {"xl/workbook.xml",
         "<workbook xmlns='" + main + "' xmlns:r='" + office +
             "'><sheets><sheet name='Data' sheetId='1' r:id='r1'/></sheets>" +
             (names.empty() ? "" : "<definedNames>" + names + "</definedNames>") + "</workbook>"},
        {"xl/_rels/workbook.xml.rels",
         "<Relationships xmlns='" + package + "relationships'><Relationship Id='r1' Type='" +
             office + "/worksheet' Target='s1.xml'/><Relationship Id='rs' Type='" + office +
             "/styles' Target='styles.xml'/></Relationships>"},
        {"xl/styles.xml",
         "<styleSheet xmlns='" + main +
             "'><numFmts><numFmt numFmtId='200' formatCode='[h]'/></numFmts><fonts><font/></fonts>"
             "<fills><fill/><fill/><fill><patternFill patternType='solid'>"
             "<fgColor rgb='FFFF0000'/></patternFill></fill></fills><borders><border/></borders>"
             "<cellStyleXfs><xf/></cellStyleXfs><cellXfs><xf/>"
             "<xf numFmtId='14' applyNumberFormat='1'/>"
             "<xf applyProtection='1'><protection locked='0'/></xf>"
             "<xf fillId='2' applyFill='1'/><xf numFmtId='200' "
             "applyNumberFormat='1'/></cellXfs></styleSheet>"},
        {"xl/s1.xml", "<worksheet xmlns='" + main + "'><sheetData>" + cells + "</sheetData>" +
                          after + "</worksheet>"},
    });
}

} // namespace spreadsheet
