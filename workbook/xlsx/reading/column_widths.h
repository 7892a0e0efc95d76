// SPDX-License-Identifier: Apache-2.0
//
// Widths of columns (ECMA-376 part 1, 18.3.1.13 col): reading them from a sheet's cols element and
// setting some in it.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/cells/sheet_data.h"

namespace workbook {

/// The spans of a `cols` element, in its order; what is not within a sheet's columns is left out.
/// `markup` is the whole element as the part has it, with any namespace prefix.
std::vector<ColumnSpan> read_column_spans(std::string_view markup);

/// The element with the widths of some columns set (zero-based column, width in characters): spans
/// are split where needed, all their other attributes stay. An empty `markup` makes a new element;
/// `prefix` is the part's namespace prefix with its colon, or empty. Ascending, not overlapping.
std::string set_column_widths(std::string_view markup, std::string_view prefix,
                              const std::map<int, double>& widths);

} // namespace workbook
