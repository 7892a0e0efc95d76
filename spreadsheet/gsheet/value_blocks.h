// SPDX-License-Identifier: Apache-2.0
//
// How large the blocks of values in a reply are, read without a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace gsheet {

/// One block: values in rows, cut after the last one.
struct ValueBlock {
    std::int64_t sheet_id = 0;
    std::size_t rows = 0;
    std::size_t columns = 0; ///< of the longest row
};

/// The elements of "valueRanges", each with its "valueRange"/"values" and the sheet of its
/// "dataFilters". Throws `foundation::json::ParseError` for text that is not one JSON object or has
/// more blocks than a spreadsheet has sheets.
std::vector<ValueBlock> measure_value_blocks(std::string_view text);

} // namespace gsheet
