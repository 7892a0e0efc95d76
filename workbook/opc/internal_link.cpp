// SPDX-License-Identifier: Apache-2.0
//
// Percent-escapes of the address around a reference.
#include "workbook/opc/internal_link.h"

#include <charconv>

namespace workbook {

namespace {

bool is_plain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           static_cast<unsigned char>(c) >= 0x80;
}

std::string without_escapes(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned byte = 0;
        const char* digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            plain += static_cast<char>(byte);
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

} // namespace

std::string percent_escaped(std::string_view text, std::string_view kept) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : text) {
        if (is_plain(c) || kept.find(c) != std::string_view::npos) {
            escaped += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        escaped.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return escaped;
}

std::optional<std::string>
edited_fragment(std::string_view target,
                const std::function<std::optional<std::string>(std::string_view)>& edit) {
    if (!target.starts_with('#')) return {};
    const std::optional<std::string> edited = edit(without_escapes(target.substr(1)));
    if (!edited) return {};
    return "#" + percent_escaped(*edited, "!'$:-_.~,()");
}

} // namespace workbook
