// SPDX-License-Identifier: Apache-2.0
//
// Reads the shared strings part (ECMA-376 part 1, 18.4.9): the text of every item without phonetic
// runs,
// `_xHHHH_` escapes resolved (22.4.2.4, ST_Xstring).
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "workbook/cells/string_pool.h"
#include "workbook/io/byte_source.h"

namespace workbook {

/// Appends items to `strings` until it holds `wanted` of them or the part ends. Claimed counts are
/// not believed. Throws `Error`.
void read_shared_strings(ByteSource& part, std::uint64_t wanted, StringPool& strings);

/// Shows the text of every item to `visit` in turn, and whether the item is one plain text without
/// runs. Throws `Error`.
void visit_shared_strings(ByteSource& part,
                          const std::function<void(std::string_view text, bool is_plain)>& visit);

} // namespace workbook
