// SPDX-License-Identifier: Apache-2.0
//
// Names of entries. Producers write them with leading or backward slashes, in differing case and
// with percent-escapes; the canonical form makes one of all: no leading slash, '/', ASCII lower
// case, escapes resolved, no "." and "..".
#pragma once

#include <string>
#include <string_view>

namespace workbook {

std::string canonical_part_name(std::string_view name);

} // namespace workbook
