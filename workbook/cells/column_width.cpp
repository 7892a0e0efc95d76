// SPDX-License-Identifier: Apache-2.0
//
// Measures what a cell shows as applications compute it.
#include "workbook/cells/column_width.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>

#include "foundation/code_points.h"
#include "foundation/unicode.h"
#include "workbook/cells/text_widths.h"

namespace workbook {

namespace {

// Pixels of the widest digit of an 11 point font, and of the margins and the grid line of a cell.
constexpr int kDigitPixels = 7;
constexpr int kPaddingPixels = 5;

double padded(int hundredths) {
    const double pixels = std::ceil(hundredths * kDigitPixels / 100.0) + kPaddingPixels;
    return std::min(std::trunc(pixels / kDigitPixels * 256.0) / 256.0, kMaxColumnWidth);
}

} // namespace

double text_width(std::u16string_view text) {
    int widest = 0, line = 0;
    for (std::size_t i = 0; i < text.size();) {
        const char32_t character = foundation::unicode::next_code_point(text, i);
        line = character == U'\n' ? 0 : line + character_width(character);
        widest = std::max(widest, line);
        if (widest >= static_cast<int>(kMaxColumnWidth) * 100) break;
    }
    return padded(widest);
}

double number_width(double value, bool is_date) {
    if (is_date) {
        if (value < 1.0) return text_width(u"00:00:00");
        return text_width(value == std::trunc(value) ? u"00/00/0000" : u"00/00/0000 00:00");
    }
    // As the general format shows it: eleven digits without a point, ten with one, six before an
    // exponent.
    const bool is_short_whole = value == std::trunc(value) && std::abs(value) < 1e11;
    char text[40];
    char* const room_end = text + sizeof text;
    auto end = is_short_whole
                   ? std::to_chars(text, room_end, static_cast<long long>(value)).ptr
                   : std::to_chars(text, room_end, value, std::chars_format::general, 10).ptr;
    if (std::find(text, end, 'e') != end)
        end = std::to_chars(text, room_end, value, std::chars_format::general, 6).ptr;
    return text_width(foundation::unicode::to_utf16({text, static_cast<std::size_t>(end - text)}));
}

} // namespace workbook
