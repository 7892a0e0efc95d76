// SPDX-License-Identifier: Apache-2.0
//
// What a person means by the text of a field: a number, a date, a boolean or just text. Whatever
// would lose something as a number (leading zeros, long identifiers, separators) stays text.
#pragma once

#include <optional>
#include <string_view>

#include "zxsheet/cell_grid.h"

namespace zxsheet {

/// Sets type and number of `cell` to what its text means: nothing, a number such as -2.5, .5 or
/// 1e3, an ISO 8601 date from 1900-03-01 on, true or false in any case, else text.
void guess_cell(CellValue& cell);

/// The serial number of the 1900 system for ISO 8601 text, a day or a day with a time, without a
/// time zone; the inverse of `date_text`. No value for anything else.
std::optional<double> date_serial(std::string_view text);

} // namespace zxsheet
