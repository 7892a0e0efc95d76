// SPDX-License-Identifier: Apache-2.0
//
// Most strings have no escape and are passed on without being copied.
#include "workbook/xlsx/reading/escaped_text.h"

#include <charconv>
#include <optional>

#include "foundation/unicode.h"
#include "workbook/xml/character_data.h"

namespace workbook {

namespace {

constexpr std::size_t kEscapeLength = 7; // _xHHHH_

// The code unit of the escape at the beginning of `text`.
std::optional<char32_t> leading_escape(std::string_view text) {
    if (text.size() < kEscapeLength || text[1] != 'x' || text[6] != '_') return std::nullopt;
    unsigned unit = 0;
    const auto [end, error] = std::from_chars(text.data() + 2, text.data() + 6, unit, 16);
    if (error != std::errc() || end != text.data() + 6) return std::nullopt;
    return unit;
}

bool is_high_surrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool is_low_surrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

} // namespace

void append_unescaped(std::string& out, std::string_view text) {
    for (;;) {
        const std::size_t underscore = text.find('_');
        out.append(text.substr(0, underscore));
        if (underscore == std::string_view::npos) return;
        text.remove_prefix(underscore);
        const auto unit = leading_escape(text);
        if (!unit) {
            out += '_';
            text.remove_prefix(1);
            continue;
        }
        text.remove_prefix(kEscapeLength);
        if (is_high_surrogate(*unit) && text.starts_with('_')) {
            const auto low = leading_escape(text);
            if (low && is_low_surrogate(*low)) {
                foundation::unicode::append_code_point(out, 0x10000 + ((*unit - 0xD800) << 10) +
                                                                (*low - 0xDC00));
                text.remove_prefix(kEscapeLength);
                continue;
            }
        }
        foundation::unicode::append_code_point(out, *unit);
    }
}

std::string_view CellTextDecoder::decode(std::string_view raw) {
    decoded_.clear();
    if (!append_decoded(decoded_, raw)) return {};
    if (decoded_.find("_x") == std::string::npos) return decoded_;
    unescaped_.clear();
    append_unescaped(unescaped_, decoded_);
    return unescaped_;
}

} // namespace workbook
