// SPDX-License-Identifier: Apache-2.0
//
// Replies with cells, read in one pass without a tree: the memory needed beside the text is that of
// the result.
#pragma once

#include <cstddef>
#include <string_view>

#include "spreadsheet/gsheet/cell_cache.h"
#include "spreadsheet/range.h"

namespace gsheet {

/// The cells of "sheets"[0], "data"[0], "rowData", counted from the corner of `range`, with their
/// types. Throws `foundation::json::ParseError` for a text that is not one JSON object or has more
/// cells than a spreadsheet.
CellCache parse_cells(std::string_view text, const spreadsheet::Range& range);

/// The number of elements of "values", 0 when it is absent; throws as above.
std::size_t count_values(std::string_view text);

} // namespace gsheet
