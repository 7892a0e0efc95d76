// SPDX-License-Identifier: Apache-2.0
//
// Walking over the code points of UTF-16 text. Not for installation.
#pragma once

#include <cstddef>
#include <string_view>

namespace foundation::unicode {

constexpr bool is_high_surrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool is_low_surrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// The code point at `position` (below the text's size), which moves behind it; a lone surrogate
/// stands for itself.
constexpr char32_t next_code_point(std::u16string_view text, std::size_t& position) {
    const char32_t unit = text[position++];
    if (!is_high_surrogate(unit) || position == text.size() || !is_low_surrogate(text[position]))
        return unit;
    const char32_t low = text[position++];
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
}

} // namespace foundation::unicode
