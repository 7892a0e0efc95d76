// SPDX-License-Identifier: Apache-2.0
//
// ISO 8601 dates and times as date cells hold them (ECMA-376 part 1, 18.17.4 and 18.18.11).
#pragma once

#include <optional>
#include <string_view>

namespace workbook {

/// The serial day number of "2024-03-01", "2024-03-01T13:05:00.5", "13:05:00" (a time alone: a
/// fraction of a day), each with an optional "Z" or "+02:00", which is not applied: cells hold
/// local time. In the 1900 system serial 60 is 29 February 1900, which did not exist; dates before
/// 1 March 1900 count one less than the days since 30 December 1899. Empty for any other text.
std::optional<double> parse_iso_date(std::string_view text, bool date_1904);

} // namespace workbook
