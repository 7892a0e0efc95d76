// SPDX-License-Identifier: Apache-2.0
//
// Widths of columns (ECMA-376 part 1, 18.3.1.13 col): reading them from a sheet's cols element,
// setting some in it, and measuring how wide a cell's text is.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace workbook {

/// One col element; zero-based, corners inclusive.
struct ColumnSpan {
    int first = 0, last = 0;
    double width = 0.0; ///< in characters; 0 when the element states none
    std::uint32_t format = 0;
    bool has_format = false;
};

/// The spans of a `cols` element, in its order; what is no span of a sheet's columns is left out.
/// `markup` is the whole element as it stands in the part, with any namespace prefix.
std::vector<ColumnSpan> read_column_spans(std::string_view markup);

/// The element with the widths of some columns set (zero-based column, width in characters): spans
/// are split where needed, all their other attributes stay. An empty `markup` makes a new element;
/// `prefix` is the part's namespace prefix with its colon, or empty. Ascending, not overlapping.
std::string set_column_widths(std::string_view markup, std::string_view prefix,
                              const std::map<int, double>& widths);

/// Width in characters that a column needs to show a text of one line in the default font, as
/// applications compute it: the widest line, wide and narrow characters told apart, with padding.
double text_width(std::u16string_view text);

/// The same for a number as a cell of that format shows it.
double number_width(double value, bool is_date);

} // namespace workbook
