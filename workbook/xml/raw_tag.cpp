// SPDX-License-Identifier: Apache-2.0
//
// Attributes are found without decoding their values.
#include "workbook/xml/raw_tag.h"

#include "workbook/xml/simple_types.h"

namespace workbook {

namespace {

std::string_view without_prefix(std::string_view name) {
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::size_t name_length(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && !is_space(text[i]) && text[i] != '/' && text[i] != '>' &&
           text[i] != '=')
        ++i;
    return i;
}

std::size_t space_length(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && is_space(text[i]))
        ++i;
    return i;
}

std::string_view escape_of(char c, bool in_attribute) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\r':
        return "&#13;";
    case '"':
        return in_attribute ? "&quot;" : "";
    case '\n':
        return in_attribute ? "&#10;" : "";
    case '\t':
        return in_attribute ? "&#9;" : "";
    default:
        return "";
    }
}

} // namespace

std::string_view raw_tag_name(std::string_view tag) {
    tag.remove_prefix(tag.starts_with("</") ? 2 : tag.starts_with('<') ? 1 : 0);
    return without_prefix(tag.substr(0, name_length(tag)));
}

RawAttributes::RawAttributes(std::string_view tag) : rest_(tag) {
    if (rest_.starts_with('<')) rest_.remove_prefix(1);
    rest_.remove_prefix(name_length(rest_));
}

bool RawAttributes::next() {
    while (!rest_.empty()) {
        const std::string_view start = rest_;
        rest_.remove_prefix(space_length(rest_));
        const std::string_view name = rest_.substr(0, name_length(rest_));
        if (name.empty()) {
            if (!rest_.empty()) rest_.remove_prefix(1);
            continue;
        }
        rest_.remove_prefix(name.size());
        std::string_view value = rest_.substr(space_length(rest_));
        if (!value.starts_with('=')) continue;
        value.remove_prefix(1);
        value.remove_prefix(space_length(value));
        if (!value.starts_with('"') && !value.starts_with('\'')) continue;
        const std::size_t close = value.find(value.front(), 1);
        if (close == std::string_view::npos) return false;
        local_name_ = without_prefix(name);
        raw_value_ = value.substr(1, close - 1);
        rest_ = value.substr(close + 1);
        whole_ = start.substr(0, start.size() - rest_.size());
        return true;
    }
    return false;
}

std::string escaped_xml(std::string_view text, bool in_attribute) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        const std::string_view escape = escape_of(c, in_attribute);
        if (escape.empty())
            escaped += c;
        else
            escaped += escape;
    }
    return escaped;
}

} // namespace workbook
