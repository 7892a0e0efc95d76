// SPDX-License-Identifier: Apache-2.0
//
// Reads a worksheet part (ECMA-376 part 1, 18.3.1.99) in one streaming pass: cells, merged regions,
// protection. Reads chart-less dialog and macro sheets too.
#pragma once

#include "workbook/cells/sheet_data.h"
#include "workbook/io/byte_source.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

/// Reads the cells of `rows`. Returns true when the part was read to its end; stops after the last
/// wanted row otherwise, leaves `tail` alone and returns false. `date_1904` is the book's
/// date system, for ISO dates. Throws `Error`.
bool read_worksheet(ByteSource& part, RowSpan rows, bool date_1904, SheetCells& cells,
                    SheetTail& tail);

/// Throws an `Error` unless the scanner's last Start, a root element, is that of a sheet.
void require_sheet_root(const XmlScanner& scanner);

/// Reads what follows the cells only.
SheetTail read_worksheet_tail(ByteSource& part);

} // namespace workbook
