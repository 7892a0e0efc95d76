// SPDX-License-Identifier: Apache-2.0
//
// The content of a new book's parts.
#include "workbook/xlsx/writing/blank_package.h"
#include "workbook/xlsx/writing/styles_writer.h"

namespace workbook {

namespace {

// clang-format off
constexpr std::string_view kContentTypes =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
    R"(<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>)"
    R"(<Default Extension="xml" ContentType="application/xml"/>)"
    R"(<Override PartName="/xl/workbook.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml"/>)"
    R"(<Override PartName="/xl/theme/theme1.xml" ContentType="application/vnd.openxmlformats-officedocument.theme+xml"/>)"
    R"(<Override PartName="/xl/styles.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml"/>)"
    R"(<Override PartName="/docProps/core.xml" ContentType="application/vnd.openxmlformats-package.core-properties+xml"/>)"
    R"(<Override PartName="/docProps/app.xml" ContentType="application/vnd.openxmlformats-officedocument.extended-properties+xml"/>)"
    R"(</Types>)";

constexpr std::string_view kPackageRelationships =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
    R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="xl/workbook.xml"/>)"
    R"(<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties" Target="docProps/core.xml"/>)"
    R"(<Relationship Id="rId3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/extended-properties" Target="docProps/app.xml"/>)"
    R"(</Relationships>)";

constexpr std::string_view kWorkbook =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    R"(<workbook xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main" xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships">)"
    R"(<workbookPr/><bookViews>)"
    R"(<workbookView xWindow="0" yWindow="0" windowWidth="24000" windowHeight="12000"/>)"
    R"(</bookViews><sheets/><calcPr/></workbook>)";

constexpr std::string_view kWorkbookRelationships =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
    R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/theme" Target="theme/theme1.xml"/>)"
    R"(<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/>)"
    R"(</Relationships>)";

constexpr std::string_view kTheme =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    R"(<a:theme xmlns:a="http://schemas.openxmlformats.org/drawingml/2006/main" name="zxspreadsheet">)"
    R"(<a:themeElements><a:clrScheme name="zxspreadsheet"><a:dk1>)"
    R"(<a:sysClr val="windowText" lastClr="000000"/></a:dk1><a:lt1>)"
    R"(<a:sysClr val="window" lastClr="FFFFFF"/></a:lt1><a:dk2><a:srgbClr val="1F3044"/>)"
    R"(</a:dk2><a:lt2><a:srgbClr val="EEF1F4"/></a:lt2><a:accent1>)"
    R"(<a:srgbClr val="2F6DB5"/></a:accent1><a:accent2><a:srgbClr val="D9822B"/>)"
    R"(</a:accent2><a:accent3><a:srgbClr val="4C9A5F"/></a:accent3><a:accent4>)"
    R"(<a:srgbClr val="C23B4E"/></a:accent4><a:accent5><a:srgbClr val="7A5AA6"/>)"
    R"(</a:accent5><a:accent6><a:srgbClr val="2A9BA8"/></a:accent6><a:hlink>)"
    R"(<a:srgbClr val="0B5CAD"/></a:hlink><a:folHlink><a:srgbClr val="6B4A8C"/>)"
    R"(</a:folHlink></a:clrScheme><a:fontScheme name="zxspreadsheet"><a:majorFont>)"
    R"(<a:latin typeface="Calibri Light"/><a:ea typeface=""/><a:cs typeface=""/>)"
    R"(</a:majorFont><a:minorFont><a:latin typeface="Calibri"/><a:ea typeface=""/>)"
    R"(<a:cs typeface=""/></a:minorFont></a:fontScheme><a:fmtScheme name="zxspreadsheet">)"
    R"(<a:fillStyleLst><a:solidFill><a:schemeClr val="phClr"/></a:solidFill>)"
    R"(<a:gradFill rotWithShape="1"><a:gsLst><a:gs pos="0"><a:schemeClr val="phClr">)"
    R"(<a:tint val="70000"/></a:schemeClr></a:gs><a:gs pos="100000">)"
    R"(<a:schemeClr val="phClr"><a:tint val="90000"/></a:schemeClr></a:gs></a:gsLst>)"
    R"(<a:lin ang="5400000" scaled="0"/></a:gradFill><a:gradFill rotWithShape="1">)"
    R"(<a:gsLst><a:gs pos="0"><a:schemeClr val="phClr"/></a:gs><a:gs pos="100000">)"
    R"(<a:schemeClr val="phClr"><a:shade val="80000"/></a:schemeClr></a:gs></a:gsLst>)"
    R"(<a:lin ang="5400000" scaled="0"/></a:gradFill></a:fillStyleLst><a:lnStyleLst>)"
    R"(<a:ln w="6350" cap="flat" cmpd="sng" algn="ctr"><a:solidFill>)"
    R"(<a:schemeClr val="phClr"/></a:solidFill><a:prstDash val="solid"/></a:ln>)"
    R"(<a:ln w="12700" cap="flat" cmpd="sng" algn="ctr"><a:solidFill>)"
    R"(<a:schemeClr val="phClr"/></a:solidFill><a:prstDash val="solid"/></a:ln>)"
    R"(<a:ln w="19050" cap="flat" cmpd="sng" algn="ctr"><a:solidFill>)"
    R"(<a:schemeClr val="phClr"/></a:solidFill><a:prstDash val="solid"/></a:ln>)"
    R"(</a:lnStyleLst><a:effectStyleLst><a:effectStyle><a:effectLst/></a:effectStyle>)"
    R"(<a:effectStyle><a:effectLst/></a:effectStyle><a:effectStyle><a:effectLst/>)"
    R"(</a:effectStyle></a:effectStyleLst><a:bgFillStyleLst><a:solidFill>)"
    R"(<a:schemeClr val="phClr"/></a:solidFill><a:solidFill><a:schemeClr val="phClr">)"
    R"(<a:tint val="95000"/></a:schemeClr></a:solidFill><a:gradFill rotWithShape="1">)"
    R"(<a:gsLst><a:gs pos="0"><a:schemeClr val="phClr"><a:tint val="95000"/>)"
    R"(</a:schemeClr></a:gs><a:gs pos="100000"><a:schemeClr val="phClr">)"
    R"(<a:shade val="95000"/></a:schemeClr></a:gs></a:gsLst>)"
    R"(<a:lin ang="5400000" scaled="0"/></a:gradFill></a:bgFillStyleLst></a:fmtScheme>)"
    R"(</a:themeElements></a:theme>)";

constexpr std::string_view kStyles =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    R"(<styleSheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">)"
    R"(<fonts count="1"><font><sz val="11"/><color theme="1"/><name val="Calibri"/>)"
    R"(<family val="2"/><scheme val="minor"/></font></fonts><fills count="2"><fill>)"
    R"(<patternFill patternType="none"/></fill><fill><patternFill patternType="gray125"/>)"
    R"(</fill></fills><borders count="1"><border><left/><right/><top/><bottom/>)"
    R"(<diagonal/></border></borders><cellStyleXfs count="1">)"
    R"(<xf numFmtId="0" fontId="0" fillId="0" borderId="0"/></cellStyleXfs>)"
    R"(<cellXfs count="1"><xf numFmtId="0" fontId="0" fillId="0" borderId="0" xfId="0"/>)"
    R"(</cellXfs><cellStyles count="1"><cellStyle name="Normal" xfId="0" builtinId="0"/>)"
    R"(</cellStyles><dxfs count="0"/>)"
    R"(<tableStyles count="0" defaultTableStyle="TableStyleMedium2" defaultPivotStyle="PivotStyleLight16"/>)"
    R"(</styleSheet>)";

constexpr std::string_view kApplicationProperties =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    R"(<Properties xmlns="http://schemas.openxmlformats.org/officeDocument/2006/extended-properties">)"
    R"(<Application>zxspreadsheet</Application></Properties>)";

constexpr std::string_view kWorksheet =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    R"(<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main" xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships">)"
    R"(<sheetViews><sheetView workbookViewId="0"/></sheetViews>)"
    R"(<sheetFormatPr defaultRowHeight="15"/><sheetData/>)"
    R"(<pageMargins left="0.7" right="0.7" top="0.75" bottom="0.75" header="0.3" footer="0.3"/>)"
    R"(</worksheet>)";
// clang-format on

constexpr BlankPart kParts[] = {
    {"[Content_Types].xml", kContentTypes},
    {"_rels/.rels", kPackageRelationships},
    {"xl/workbook.xml", kWorkbook},
    {"xl/_rels/workbook.xml.rels", kWorkbookRelationships},
    {"xl/theme/theme1.xml", kTheme},
    {"xl/styles.xml", kStyles},
    {"docProps/app.xml", kApplicationProperties},
};

} // namespace

std::span<const BlankPart> blank_parts() {
    return kParts;
}

std::string_view blank_worksheet_part() {
    return kWorksheet;
}

std::string_view default_styles_part() {
    return kStyles;
}

} // namespace workbook
