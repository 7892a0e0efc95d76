// SPDX-License-Identifier: Apache-2.0
//
// The five predefined entities and character references; other entities are errors.
#include "workbook/xml/character_data.h"

#include <algorithm>
#include <charconv>

#include "foundation/unicode.h"

namespace workbook {

namespace {

struct PredefinedEntity {
    std::string_view name;
    char character;
};

constexpr PredefinedEntity kPredefined[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

// "#233" or "#xE9".
bool append_numeric(std::string& out, std::string_view reference) {
    const bool hex = reference.size() > 1 && (reference[1] == 'x' || reference[1] == 'X');
    const std::string_view digits = reference.substr(hex ? 2 : 1);
    std::uint32_t value = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value, hex ? 16 : 10);
    if (error != std::errc() || stop != end || value > 0x10FFFF) return false;
    foundation::unicode::append_code_point(out, value);
    return true;
}

bool append_reference(std::string& out, std::string_view reference) {
    for (const PredefinedEntity& entity : kPredefined)
        if (reference == entity.name) {
            out += entity.character;
            return true;
        }
    return reference.starts_with('#') && append_numeric(out, reference);
}

} // namespace

bool append_decoded(std::string& out, std::string_view raw) {
    const auto is_special = [](char c) { return c == '&' || c == '\r'; };
    while (!raw.empty()) {
        std::size_t stop = 0;
        while (stop < raw.size() && !is_special(raw[stop]))
            ++stop;
        out.append(raw.data(), stop);
        raw.remove_prefix(stop);
        if (raw.starts_with('\r')) {
            out += '\n';
            raw.remove_prefix(raw.starts_with("\r\n") ? 2 : 1);
        } else if (!raw.empty()) {
            const std::size_t semicolon = raw.find(';');
            if (semicolon == std::string_view::npos ||
                !append_reference(out, raw.substr(1, semicolon - 1)))
                return false;
            raw.remove_prefix(semicolon + 1);
        }
    }
    return true;
}

} // namespace workbook
