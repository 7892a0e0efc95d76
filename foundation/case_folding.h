// SPDX-License-Identifier: Apache-2.0
//
// Keys for looking texts up without regard to case. Not for installation.
#pragma once

#include <string>
#include <string_view>

namespace foundation::unicode {

/// Equal for two texts exactly when `equal_ignoring_case` is true for them.
std::u16string fold_case(std::u16string_view text);

/// The simple upper-case form of one UTF-16 unit; surrogates stay.
char16_t upper_case(char16_t unit);

} // namespace foundation::unicode
