// SPDX-License-Identifier: Apache-2.0
//
// How cells look as text.
#pragma once

#include <string>
#include <string_view>

#include "zxsheet/cell_grid.h"

namespace zxsheet {

/// How cells become text.
struct TextStyle {
    enum class Dates { Iso, Serial, Pattern };
    Dates dates = Dates::Iso;
    std::string pattern;        ///< see `formatted_date`
    bool decimal_comma = false; ///< in numbers, in place of the point
};

/// The shortest decimal text that reads back as the same number; without an exponent between 1e-5
/// and 1e15. "nan" and "inf" are not avoided.
std::string number_text(double value);
void append_number(std::string& out, double value, bool decimal_comma = false);

/// ISO 8601 text of a serial number of the 1900 system: a day, with a time when it is not midnight,
/// with milliseconds when there are any. Serial number 60 is the 29th of February 1900, which the
/// system has by mistake. A number outside the years 1 to 9999 comes back as `number_text`.
std::string date_text(double serial);

/// "13:05:00" for a part of a day, "30:05:00" for more, "-01:00:00" below zero; milliseconds when
/// there are any. What is longer than ten million hours comes back as `number_text`.
std::string time_text(double days);

/// The day and time of a serial number by a pattern of strftime in the C locale: %Y %m %d %H %M %S
/// %y %j %a %A %b %B %p %I %e %F %T %D %R %u and %%. Numbers without a date as `date_text`.
std::string formatted_date(double serial, std::string_view pattern);
/// The first conversion of the pattern that `formatted_date` does not know, such as "%Q"; empty if
/// it knows all.
std::string unknown_conversion(std::string_view pattern);

/// The name of a cell type: "empty", "number", "text", "date", "boolean", "other", "error".
std::string_view type_name(spreadsheet::cell_type type);

/// Whether the number or date is shown as a time of day or as an elapsed time.
bool is_time(const CellValue& cell);

/// Appends the cell as plain text; nothing for a cell without a value.
void append_text(std::string& out, const CellValue& cell, const TextStyle& style);
std::string plain_text(const CellValue& cell, const TextStyle& style = {});

} // namespace zxsheet
