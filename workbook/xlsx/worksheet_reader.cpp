// SPDX-License-Identifier: Apache-2.0
#include "workbook/xlsx/worksheet_reader.h"

#include <algorithm>
#include <iterator>

#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/sheet_data_reader.h"
#include "workbook/xml/cell_reference.h"
#include "workbook/xml/simple_types.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

namespace {

using Token = XmlScanner::Token;

// Moves to the root element. What a sheet's part holds is told by it alone: a relationship may lead
// anywhere.
void read_root(XmlScanner& scanner) {
    while (scanner.next() != Token::Start) {
    }
    constexpr std::string_view kRoots[] = {"worksheet", "dialogsheet", "macrosheet", "chartsheet"};
    if (std::find(std::begin(kRoots), std::end(kRoots), scanner.name()) == std::end(kRoots))
        scanner.fail("its root element \"" + std::string(scanner.name().substr(0, 40)) +
                     "\" is not a sheet's");
}

// ECMA-376 part 1, 18.3.1.55. The claimed count is not looked at.
void read_merged_regions(XmlScanner& scanner, std::vector<MergedRegion>& regions) {
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
            throw Error::limit(scanner.window().part_name(), "it has too many merged regions");
        regions.push_back({area->first_row, area->last_row, area->first_column, area->last_column});
    }
}

// What stands beside the cells, at the scanner's last Start.
void read_other_element(XmlScanner& scanner, WorksheetTail& tail) {
    if (scanner.name() == "mergeCells") {
        read_merged_regions(scanner, tail.merged_regions);
        return;
    }
    if (scanner.name() == "sheetProtection" && is_true(scanner.attribute("sheet")))
        tail.is_protected = true;
    scanner.skip_element();
}

} // namespace

bool read_worksheet(ByteSource& part, RowSpan rows, bool date_1904, WorksheetCells& cells,
                    WorksheetTail& tail) {
    XmlScanner scanner(part);
    WorksheetTail found;
    read_root(scanner);
    for (Token token = scanner.next(); token != Token::Done; token = scanner.next()) {
        if (token != Token::Start || scanner.depth() != 2) continue;
        if (scanner.name() != "sheetData") {
            read_other_element(scanner, found);
            continue;
        }
        if (!SheetDataReader(scanner, rows, date_1904, cells).read()) {
            cells.cells.finish();
            return false;
        }
    }
    cells.cells.finish();
    tail = std::move(found);
    return true;
}

WorksheetTail read_worksheet_tail(ByteSource& part) {
    XmlScanner scanner(part);
    WorksheetTail tail;
    for (Token token = scanner.next(); token != Token::Done; token = scanner.next()) {
        if (token != Token::Start || scanner.depth() != 2) continue;
        if (scanner.name() == "sheetData")
            scanner.skip_flat_element(); // nearly all of the part's text
        else
            read_other_element(scanner, tail);
    }
    return tail;
}

} // namespace workbook
