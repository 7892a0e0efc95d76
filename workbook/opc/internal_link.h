// SPDX-License-Identifier: Apache-2.0
//
// Links of relationships that lead to a place in the same book: "#Sheet1!A1", "#'My%20Sheet'!A1".
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace workbook {

/// The target with what `edit` makes of the reference in it (without percent-escapes); nothing when
/// it stays, as every target does that does not begin with '#'.
std::optional<std::string>
edited_fragment(std::string_view target,
                const std::function<std::optional<std::string>(std::string_view)>& edit);

/// The text with percent-escapes (RFC 3986, 2.1) for ASCII other than letters, digits and
/// `kept`.
std::string percent_escaped(std::string_view text, std::string_view kept);

} // namespace workbook
