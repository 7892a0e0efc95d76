// SPDX-License-Identifier: Apache-2.0
//
// Reads a worksheet part (ECMA-376 part 1, 18.3.1.99) in one streaming pass: cells, merged regions,
// protection. Reads chart-less dialog and macro sheets too.
#pragma once

#include "workbook/cells/sheet_data.h"
#include "workbook/io/byte_source.h"
#include "workbook/xlsx/reading/iso_date.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

/// Reads the cells of `rows`. Returns true when the part was read to its end; stops after the last
/// wanted row otherwise, leaves `tail` alone and returns false. `dates` is what
/// the book's ISO dates count from. Throws `Error`.
bool read_worksheet(ByteSource& part, RowSpan rows, DateBase dates, SheetCells& cells,
                    SheetTail& tail);

/// Throws an `Error` unless the scanner's last Start, a root element, is that of a sheet.
void require_sheet_root(const XmlScanner& scanner);

/// Reads what follows the cells only.
SheetTail read_worksheet_tail(ByteSource& part);

} // namespace workbook
