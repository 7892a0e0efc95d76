// SPDX-License-Identifier: Apache-2.0
//
// Counts, names and ranges as text.
#include "zxsheet/wording.h"

#include <algorithm>

#include "foundation/unicode.h"

namespace zxsheet {

std::string grouped(std::uint64_t count) {
    std::string text = std::to_string(count);
    for (std::size_t end = text.size(); end > 3; end -= 3)
        text.insert(end - 3, 1, ',');
    return text;
}

std::string counted(std::uint64_t count, const std::string& thing) {
    return grouped(count) + ' ' + thing + (count == 1 ? "" : "s");
}

std::string one_line(std::string text) {
    const auto is_control = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    };
    std::replace_if(text.begin(), text.end(), is_control, ' ');
    return text;
}

std::string quoted_sheet(std::u16string_view name) {
    std::string text = "'";
    for (const char character : foundation::unicode::to_utf8(name)) {
        if (character == '\'') text.push_back('\'');
        text.push_back(character);
    }
    return text + '\'';
}

std::string place_text(std::u16string_view sheet, const spreadsheet::Range& range) {
    return quoted_sheet(sheet) + '!' +
           foundation::unicode::to_utf8(spreadsheet::range_string(range));
}

} // namespace zxsheet
