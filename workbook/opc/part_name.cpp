// SPDX-License-Identifier: Apache-2.0
//
// Canonical names and the resolution of relative targets (RFC 3986, 5.2.4, for paths only).
#include "workbook/opc/part_name.h"

#include <vector>

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

std::string ascii_lower(std::string_view text) {
    std::string lower{text};
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

std::string canonical_part_name(std::string_view name) {
    const std::string plain = ascii_lower(without_escapes(name));
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

std::string resolve_target(std::string_view source, std::string_view target) {
    const std::string_view path = target.substr(0, target.find('#'));
    if (!path.empty() && is_slash(path.front())) return canonical_part_name(path);
    const std::size_t folder_end = source.find_last_of('/');
    std::string joined{folder_end == std::string_view::npos ? std::string_view{}
                                                            : source.substr(0, folder_end + 1)};
    return canonical_part_name(joined.append(path));
}

std::string relationships_part_name(std::string_view part) {
    const std::size_t slash = part.find_last_of('/');
    const std::size_t name_begin = slash == std::string_view::npos ? 0 : slash + 1;
    std::string name{part.substr(0, name_begin)};
    return name.append("_rels/").append(part.substr(name_begin)).append(".rels");
}

std::string new_part_spelling(std::string_view part) {
    constexpr std::string_view kUsual = "sharedStrings.xml";
    const std::size_t slash = part.rfind('/');
    const std::size_t begin = slash == std::string_view::npos ? 0 : slash + 1;
    std::string spelled(part);
    if (part.substr(begin) == ascii_lower(kUsual)) spelled.replace(begin, spelled.npos, kUsual);
    return spelled;
}

} // namespace workbook
