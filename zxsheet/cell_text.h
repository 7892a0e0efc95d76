// SPDX-License-Identifier: Apache-2.0
//
// How cells look as text.
#pragma once

#include <string>
#include <string_view>

#include "zxsheet/cell_grid.h"

namespace zxsheet {

enum class DateStyle { Iso, Serial };

/// The shortest decimal text that reads back as the same number; without an exponent between 1e-5
/// and 1e15. "nan" and "inf" are not avoided.
std::string number_text(double value);

/// ISO 8601 text of a serial number of the 1900 system: a day, with a time when it is not midnight,
/// with milliseconds when there are any. Serial number 60 is the 29th of February 1900, which the
/// system has by mistake. A number outside the years 1 to 9999 comes back as `number_text`.
std::string date_text(double serial);

/// As above, but a time of day alone (12:30:00) for a serial number before the first day: sheets
/// online have times there.
std::string date_or_time_text(double serial);

/// The name of a cell type: "empty", "number", "text", "date", "boolean", "other", "error".
std::string_view type_name(spreadsheet::cell_type type);

/// The cell as plain text; empty for a cell without a value.
std::string plain_text(const CellValue& cell, DateStyle dates);

} // namespace zxsheet
