// SPDX-License-Identifier: Apache-2.0
//
// Writes the shared string table of a BIFF8 book (MS-XLS 2.4.265 SST, 2.4.107 ExtSST): the strings
// that the book has are copied with their runs and phonetic data, new ones follow.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "workbook/cells/string_pool.h"

namespace workbook {

/// Appends the SST record, its CONTINUE records and the ExtSST record to `out`, whose first byte is
/// the first byte of the new stream. `old_table` is the position of the SST record in `old_stream`;
/// without one a new table is made. `added` strings are in generalised UTF-8; their indices follow
/// those of the old strings. `added_uses` is how many cells use them. Throws `Error`.
void write_shared_strings(std::string_view old_stream, std::optional<std::size_t> old_table,
                          const StringPool& added, std::uint64_t added_uses, std::string& out);

/// The number of strings that the table at `table` says it has.
std::uint32_t shared_string_count(std::string_view stream, std::size_t table);

} // namespace workbook
