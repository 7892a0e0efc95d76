// SPDX-License-Identifier: Apache-2.0
//
// Strings of cells as character data: the inverse of what escaped_text.cpp does.
#include <algorithm>
#include <array>

#include "workbook/xlsx/writing/shared_strings_writer.h"

namespace workbook {

namespace {

/// Bytes at which a text may not simply be copied.
constexpr std::array<bool, 256> special_bytes() {
    std::array<bool, 256> special{};
    for (int c = 0; c < ' '; ++c)
        special[static_cast<std::size_t>(c)] = c != '\t' && c != '\n';
    for (const unsigned char c : {'&', '<', '>', '_'})
        special[c] = true;
    special[0xED] = special[0xEF] = true; // surrogates; U+FFFE and U+FFFF
    return special;
}
constexpr std::array<bool, 256> kSpecial = special_bytes();

unsigned char octet(std::string_view text, std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

bool is_hex_digit(unsigned char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// A code unit that XML cannot hold, with its bytes; none when XML can.
struct Unit {
    unsigned value = 0;
    std::size_t bytes = 0;
};

Unit forbidden_unit(std::string_view text, std::size_t at) {
    const unsigned char first = octet(text, at), second = octet(text, at + 1);
    if (first < ' ' && first != '\t' && first != '\n') return {first, 1};
    const bool is_surrogate = first == 0xED && second >= 0xA0;
    const bool is_no_character = first == 0xEF && second == 0xBF && octet(text, at + 2) >= 0xBE;
    if (!is_surrogate && !is_no_character) return {};
    return {(first & 0xFu) << 12 | (second & 0x3Fu) << 6 | (octet(text, at + 2) & 0x3Fu), 3};
}

/// Whether a reader would take the underscore at `at` for the beginning of an escape, given that
/// what follows may be written as one.
bool begins_escape(std::string_view text, std::size_t at) {
    if (octet(text, at + 1) != 'x' || at + 6 >= text.size()) return false;
    for (std::size_t i = at + 2; i < at + 6; ++i)
        if (!is_hex_digit(octet(text, i))) return false;
    return text[at + 6] == '_' || forbidden_unit(text, at + 6).bytes > 0;
}

void append_escape(std::string& out, unsigned unit) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    out += "_x";
    for (const unsigned shift : {12u, 8u, 4u, 0u})
        out += kDigits[unit >> shift & 0xF];
    out += '_';
}

/// Appends the character at `at`, whose first byte is special, and returns its bytes.
std::size_t append_special(std::string& out, std::string_view text, std::size_t at) {
    switch (text[at]) {
    case '&':
        out += "&amp;";
        return 1;
    case '<':
        out += "&lt;";
        return 1;
    case '>':
        out += "&gt;";
        return 1;
    case '_':
        if (begins_escape(text, at))
            append_escape(out, '_');
        else
            out += '_';
        return 1;
    default:
        break;
    }
    const Unit unit = forbidden_unit(text, at);
    if (unit.bytes == 0) {
        out += text[at];
        return 1;
    }
    append_escape(out, unit.value);
    return std::min(unit.bytes, text.size() - at);
}

} // namespace

void append_escaped_text(std::string& out, std::string_view text) {
    std::size_t copied = 0;
    for (std::size_t i = 0; i < text.size();) {
        if (!kSpecial[octet(text, i)]) {
            ++i;
            continue;
        }
        out.append(text, copied, i - copied);
        i += append_special(out, text, i);
        copied = i;
    }
    out.append(text, copied, text.size() - copied);
}

bool needs_space_preserved(std::string_view text) {
    if (text.empty()) return false;
    const auto is_blank = [](char c) { return c == ' ' || c == '\t' || c == '\n'; };
    if (is_blank(text.front()) || is_blank(text.back())) return true;
    for (std::size_t i = 1; i < text.size(); ++i)
        if (is_blank(text[i]) && (text[i] != ' ' || text[i - 1] == ' ')) return true;
    return false;
}

} // namespace workbook
