// SPDX-License-Identifier: Apache-2.0
//
// Character data of XML 1.0: references (4.1, 4.6) and line ends (2.11).
#pragma once

#include <string>
#include <string_view>

namespace workbook {

/// Appends `raw` to `out` with the predefined and numeric references resolved and line ends made
/// line feeds. False, with `out` in an unspecified state, for any other reference.
bool append_decoded(std::string& out, std::string_view raw);

} // namespace workbook
