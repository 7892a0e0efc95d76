// SPDX-License-Identifier: Apache-2.0
//
// Workbooks that tests open in LibreOffice, as bytes.
#pragma once

#include <string>

namespace spreadsheet {

/// An XLSX book with one sheet, "Data". `cells` is the content of its sheetData, `after` follows
/// that, `names` is the content of definedNames. Cell style 1 shows dates, 2 is not locked, 3 is
/// red, 4 shows hours that have passed.
std::string one_sheet_book(const std::string& cells, const std::string& after = {},
                           const std::string& names = {});

} // namespace spreadsheet
