// SPDX-License-Identifier: Apache-2.0
//
// Comparison without regard to case, with the simple foldings (status C and S) of Unicode's
// CaseFolding.txt.
#include "foundation/case_folding.h"

#include <utf8proc.h>

#include "foundation/ascii_case.h"
#include "foundation/code_points.h"
#include "foundation/unicode.h"

namespace foundation::unicode {
namespace {

constexpr char32_t kCapitalIWithDot = 0x130; ///< has a full and a Turkic folding but no simple one

char32_t fold(char32_t code_point) {
    if (code_point < 0x80) return fold_ascii(code_point);
    if (code_point == kCapitalIWithDot || is_high_surrogate(code_point) ||
        is_low_surrogate(code_point))
        return code_point;
    utf8proc_int32_t folded[4];
    int boundary = 0;
    const auto value = static_cast<utf8proc_int32_t>(code_point);
    const auto length = utf8proc_decompose_char(value, folded, 4, UTF8PROC_CASEFOLD, &boundary);
    if (length == 1) return static_cast<char32_t>(folded[0]);
    // Where the full folding has several code points, the simple one is the lower-case letter.
    return static_cast<char32_t>(utf8proc_tolower(value));
}

} // namespace

std::u16string fold_case(std::u16string_view text) {
    std::u16string folded;
    folded.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const char32_t code_point = fold(next_code_point(text, i));
        if (code_point >= 0x10000) {
            folded += static_cast<char16_t>(0xD800 + ((code_point - 0x10000) >> 10));
            folded += static_cast<char16_t>(0xDC00 + ((code_point - 0x10000) & 0x3FF));
        } else {
            folded += static_cast<char16_t>(code_point);
        }
    }
    return folded;
}

char16_t upper_case(char16_t unit) {
    const auto upper = utf8proc_toupper(static_cast<utf8proc_int32_t>(unit));
    return upper < 0x10000 ? static_cast<char16_t>(upper) : unit;
}

bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) {
    // A simple folding never leaves its plane, so equal texts have equal lengths.
    if (a.size() != b.size()) return false;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        const char32_t first = next_code_point(a, i);
        const char32_t second = next_code_point(b, j);
        if (first != second && fold(first) != fold(second)) return false;
    }
    return i == a.size() && j == b.size();
}

} // namespace foundation::unicode
