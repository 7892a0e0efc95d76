// SPDX-License-Identifier: Apache-2.0
//
// Workbook formats, their names and the limits of their sheets.
#pragma once

#include <cstdint>
#include <string>

#include "foundation/export.h"

namespace spreadsheet::book {

/// The format of a workbook. The values are part of the interface.
enum class format : std::uint8_t {
    XLS = 0,
    XLSX = 1,
    XLSM = 2,
    XLSB = 3,
    XLTX = 4,
    XLTM = 5,
    ODS = 6,
    CSV = 7,
    GSHEET = 8
};

/// What serves the workbook: a file, a running spreadsheet application, Google Sheets. Any other
/// value selects nothing.
enum class interactive : std::uint8_t { file = 0, application = 1, google = 2 };

/// The format's name in capitals, such as u"XLSX". Throws `Exception` 29 for a value above 8.
ZX_API std::u16string to_string(format value);

/// The format of that name, compared without regard to case over the whole text: no leading dot, no
/// blanks. Throws `Exception` 29 when no format has the name.
ZX_API format create_format(const std::u16string& name);

/// The largest valid zero-based row index. Any value that is not XLS has the Open XML limit.
ZX_API int get_row_limit(format value);

/// The largest valid zero-based column index: 255 for XLS, 18277 (column ZZZ) for GSHEET, 16383
/// (column XFD) for any other value.
ZX_API int get_col_limit(format value);

/// True for XLSX to CSV (values 1 to 7); GSHEET is not counted.
ZX_API bool larger_than_xls(format value);

} // namespace spreadsheet::book
