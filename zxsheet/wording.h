// SPDX-License-Identifier: Apache-2.0
//
// Counts and places as the program's sentences have them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "spreadsheet/range.h"

namespace zxsheet {

/// "1,200".
std::string grouped(std::uint64_t count);

/// "1 cell", "1,200 cells".
std::string counted(std::uint64_t count, const std::string& thing);

/// The text with blanks in place of line ends and other control characters, which a file may have
/// in its names: one line, and nothing that a terminal obeys.
std::string one_line(std::string text);

/// "'Data'", "'Bob''s'".
std::string quoted_sheet(std::u16string_view name);

/// "'Data'!A1:D300".
std::string place_text(std::u16string_view sheet, const spreadsheet::Range& range);

} // namespace zxsheet
