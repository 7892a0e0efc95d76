// SPDX-License-Identifier: Apache-2.0
//
// The shared strings of a BIFF8 book (MS-XLS 2.4.265 SST).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "workbook/cells/string_pool.h"

namespace workbook {

/// Appends the first `wanted` strings of the SST record at `position` to `strings`; fewer when the
/// record has fewer. Strings that nothing refers to are not read. Throws `Error`.
void read_shared_strings(std::string_view stream, std::size_t position, std::uint64_t wanted,
                         StringPool& strings);

} // namespace workbook
