// SPDX-License-Identifier: Apache-2.0
//
// Dot segments are removed as RFC 3986, 5.2.4 has it.
#include "workbook/zip/entry_name.h"

#include <vector>

#include "foundation/ascii_case.h"

namespace workbook {

namespace {

int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string without_escapes(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? hex_digit(text[i + 1]) : -1;
        const int low = high >= 0 ? hex_digit(text[i + 2]) : -1;
        if (low >= 0) {
            plain += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

bool is_slash(char c) {
    return c == '/' || c == '\\';
}

} // namespace

std::string canonical_part_name(std::string_view name) {
    const std::string plain = foundation::unicode::ascii_lower(without_escapes(name));
    std::string canonical;
    canonical.reserve(plain.size());
    std::vector<std::size_t> starts; // where each kept segment begins in `canonical`
    for (std::size_t begin = 0; begin <= plain.size();) {
        std::size_t end = begin;
        while (end < plain.size() && !is_slash(plain[end]))
            ++end;
        const std::string_view segment = std::string_view(plain).substr(begin, end - begin);
        if (segment == "..") {
            if (!starts.empty()) {
                canonical.resize(starts.back());
                starts.pop_back();
            }
        } else if (!segment.empty() && segment != ".") {
            starts.push_back(canonical.size());
            if (!canonical.empty()) canonical += '/';
            canonical += segment;
        }
        begin = end + 1;
    }
    return canonical;
}

} // namespace workbook
