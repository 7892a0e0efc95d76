// SPDX-License-Identifier: Apache-2.0
//
// The elements around the cells.
#include "workbook/xlsx/reading/worksheet_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "workbook/cells/column_width.h"
#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/cell_reference.h"
#include "workbook/xlsx/reading/column_widths.h"
#include "workbook/xlsx/reading/sheet_data_reader.h"
#include "workbook/xml/simple_types.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

namespace {

using Token = XmlScanner::Token;

// ECMA-376 part 1, 18.3.1.55. The claimed count is not looked at.
void read_merged_regions(XmlScanner& scanner, std::vector<Rectangle>& regions) {
    const int depth = scanner.depth();
    for (;;) {
        const Token token = scanner.next();
        if (token == Token::End && scanner.depth() < depth) return;
        if (token != Token::Start || scanner.name() != "mergeCell") continue;
        const std::string_view reference = scanner.attribute("ref");
        const auto area = parse_area_reference(reference);
        if (!area)
            scanner.fail("merged region \"" + std::string(reference.substr(0, 40)) +
                         "\" is not a range of a sheet");
        if (regions.size() == kMaxMergedRegions)
            throw Error::limit(scanner.window().part_name(), "more than " +
                                                                 std::to_string(kMaxMergedRegions) +
                                                                 " merged regions");
        regions.push_back(*area);
    }
}

double read_number(std::string_view text, double absent) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && std::isfinite(value) && value >= 0.0 ? value : absent;
}

// ECMA-376 part 1, 18.3.1.81. Applications make a column of so many characters of 7 pixels wider by
// 5 pixels, up to a multiple of 8.
void read_default_width(XmlScanner& scanner, SheetColumns& columns) {
    constexpr double kPixels = 7.0, kPadding = 5.0, kStep = 8.0;
    const double base =
        std::min(read_number(scanner.attribute("baseColWidth"), 8.0), kMaxColumnWidth);
    const double usual = std::ceil((base * kPixels + kPadding) / kStep) * kStep / kPixels;
    columns.default_width =
        std::trunc(read_number(scanner.attribute("defaultColWidth"), usual) * 256.0) / 256.0;
}

// ECMA-376 part 1, 18.3.1.17.
void read_columns(XmlScanner& scanner, SheetColumns& columns) {
    const int depth = scanner.depth();
    std::string markup(scanner.raw());
    while (scanner.depth() >= depth) {
        scanner.next();
        if (markup.size() + scanner.raw().size() > kMaxTokenBytes)
            throw Error::limit(scanner.window().part_name(),
                               "more than " + std::to_string(kMaxTokenBytes >> 20) +
                                   " MiB of column elements");
        markup += scanner.raw();
    }
    const std::vector<ColumnSpan> spans = read_column_spans(markup);
    columns.spans.insert(columns.spans.end(), spans.begin(), spans.end());
}

// The cell reader adds formats in the part's order; the last one of a row counts.
void order_row_formats(std::vector<RowFormat>& formats) {
    const auto before = [](const RowFormat& a, const RowFormat& b) { return a.row < b.row; };
    std::stable_sort(formats.begin(), formats.end(), before);
    const auto last =
        std::unique(formats.rbegin(), formats.rend(),
                    [](const RowFormat& a, const RowFormat& b) { return a.row == b.row; });
    formats.erase(formats.begin(), last.base());
}

// What is beside the cells, at the scanner's last Start.
void read_other_element(XmlScanner& scanner, SheetTail& tail, SheetColumns& columns) {
    if (scanner.name() == "cols") {
        read_columns(scanner, columns);
        return;
    }
    if (scanner.name() == "sheetFormatPr") read_default_width(scanner, columns);
    if (scanner.name() == "mergeCells") {
        read_merged_regions(scanner, tail.merged_regions);
        return;
    }
    if (scanner.name() == "sheetProtection" && is_true(scanner.attribute("sheet")))
        tail.is_protected = true;
    scanner.skip_element();
}

} // namespace

// Only its root says what a sheet's part holds: a relationship may lead anywhere.
void require_sheet_root(const XmlScanner& scanner) {
    constexpr std::string_view kRoots[] = {"worksheet", "dialogsheet", "macrosheet", "chartsheet"};
    if (std::find(std::begin(kRoots), std::end(kRoots), scanner.name()) == std::end(kRoots))
        scanner.fail("its root element \"" + std::string(scanner.name().substr(0, 40)) +
                     "\" is not a sheet's");
}

bool read_worksheet(ByteSource& part, RowSpan rows, DateBase dates, SheetCells& cells,
                    SheetTail& tail) {
    XmlScanner scanner(part);
    SheetTail found;
    while (scanner.next() != Token::Start) {
    }
    require_sheet_root(scanner);
    for (Token token = scanner.next(); token != Token::Done; token = scanner.next()) {
        if (token != Token::Start || scanner.depth() != 2) continue;
        if (scanner.name() != "sheetData") {
            read_other_element(scanner, found, cells.columns);
            continue;
        }
        if (!SheetDataReader(scanner, rows, dates, cells).read()) {
            cells.cells.finish();
            order_row_formats(cells.row_formats);
            return false;
        }
    }
    cells.cells.finish();
    order_row_formats(cells.row_formats);
    tail = std::move(found);
    return true;
}

SheetTail read_worksheet_tail(ByteSource& part) {
    XmlScanner scanner(part);
    SheetTail tail;
    SheetColumns columns;
    for (Token token = scanner.next(); token != Token::Done; token = scanner.next()) {
        if (token != Token::Start || scanner.depth() != 2) continue;
        if (scanner.name() == "sheetData")
            scanner.skip_flat_element(); // nearly all of the part's text
        else
            read_other_element(scanner, tail, columns);
    }
    return tail;
}

} // namespace workbook
