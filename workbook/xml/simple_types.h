// SPDX-License-Identifier: Apache-2.0
//
// The simplest values in XML, read the same way everywhere: white space (XML 1.0, 2.3)
// and booleans (XML Schema part 2, 3.2.2, and the words that producers use besides).
#pragma once

#include <string_view>

#include "foundation/ascii_case.h"

namespace workbook {

inline bool is_space(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

/// The first character at or after `p` that is not white space; a zero byte must end the text.
inline const char* skip_spaces(const char* p) {
    while (is_space(*p))
        ++p;
    return p;
}

/// The text without white space at its ends.
inline std::string_view trim(std::string_view text) {
    while (!text.empty() && is_space(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && is_space(text.back()))
        text.remove_suffix(1);
    return text;
}

/// "1", "true" or "on" in any case.
inline bool is_true(std::string_view text) {
    using foundation::unicode::equal_ignoring_ascii_case;
    return text == "1" || equal_ignoring_ascii_case(text, "true") ||
           equal_ignoring_ascii_case(text, "on");
}

} // namespace workbook
