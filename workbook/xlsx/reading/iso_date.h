// SPDX-License-Identifier: Apache-2.0
//
// ISO 8601 dates and times as date cells hold them (ECMA-376 part 1, 18.17.4 and 18.18.11).
#pragma once

#include <optional>
#include <string_view>

namespace workbook {

/// What the serial day numbers of ISO dates count from.
enum class DateBase {
    From1900, ///< serial 60 is 29 February 1900, which did not exist; dates before it count one
              ///< less
    From1904, ///< 0 is 1 January 1904
    From1899  ///< 0 is 30 December 1899, in books that are not to be compatible with that error
              ///< (ECMA-376 part 1, 18.2.28 dateCompatibility)
};

/// The serial day number of "2024-03-01", "2024-03-01T13:05:00.5", "13:05:00" (a time alone: a
/// fraction of a day), each with an optional "Z" or "+02:00", which is not applied: cells hold
/// local time. Nullopt for any other text.
std::optional<double> parse_iso_date(std::string_view text, DateBase base);

} // namespace workbook
