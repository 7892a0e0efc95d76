// SPDX-License-Identifier: Apache-2.0
//
// Comparison of names that are ASCII by definition: only ASCII letters have two cases. Not for
// installation; texts of users go through foundation/unicode.h.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace foundation::unicode {

constexpr char32_t fold_ascii(char32_t code_point) {
    return code_point >= U'A' && code_point <= U'Z' ? code_point + (U'a' - U'A') : code_point;
}

/// True when the texts are equal but for the case of ASCII letters.
constexpr bool equal_ignoring_ascii_case(std::u16string_view a, std::u16string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char16_t first, char16_t second) {
        return fold_ascii(first) == fold_ascii(second);
    });
}

/// The same for UTF-8.
constexpr bool equal_ignoring_ascii_case(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char first, char second) {
        return fold_ascii(static_cast<unsigned char>(first)) ==
               fold_ascii(static_cast<unsigned char>(second));
    });
}

/// The text with ASCII letters in lower case.
inline std::string ascii_lower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return lower;
}

} // namespace foundation::unicode
