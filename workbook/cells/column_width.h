// SPDX-License-Identifier: Apache-2.0
//
// How wide a column has to be for what its cells show, in characters of the default font
// (ECMA-376 part 1, 18.3.1.13).
#pragma once

#include <string_view>

namespace workbook {

/// No column is wider (ECMA-376 part 1, 18.3.1.13; MS-XLS 2.4.53 ColInfo).
inline constexpr double kMaxColumnWidth = 255.0;

/// Width that a column needs to show a string of one or more lines: that of the widest line, wide
/// and narrow characters measured, with padding; at most `kMaxColumnWidth`.
double text_width(std::u16string_view text);

/// The same for a number as a cell of that format shows it.
double number_width(double value, bool is_date);

} // namespace workbook
