// SPDX-License-Identifier: Apache-2.0
//
// Quotes of sheet names in formulas. They are always allowed, so a name gets them whenever it could
// be read as something else.
#include <algorithm>

#include "foundation/ascii_case.h"
#include "workbook/xlsx/formula/formula_tokens.h"
#include "workbook/xlsx/formula/reference_text.h"

namespace workbook {

namespace {

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Up to three letters and then digits only: a cell or column of some size of sheet.
bool looks_like_cell(std::string_view name) {
    const auto digits = std::find_if_not(name.begin(), name.end(), is_letter);
    return digits - name.begin() <= 3 && std::all_of(digits, name.end(), is_digit);
}

/// "R", "C", "R1", "R1C1", "RC", "C12" in either case.
bool looks_like_r1c1(std::string_view name) {
    const auto skip_letter_and_digits = [&name](char letter) {
        if (name.empty() || (name.front() & ~0x20) != letter) return;
        name.remove_prefix(1);
        while (!name.empty() && is_digit(name.front()))
            name.remove_prefix(1);
    };
    skip_letter_and_digits('R');
    skip_letter_and_digits('C');
    return name.empty();
}

bool needs_quotes(std::string_view name, bool in_span) {
    using foundation::unicode::equal_ignoring_ascii_case;
    const auto is_plain = [](char c) {
        return is_letter(c) || is_digit(c) || c == '_' || c == '.';
    };
    if (name.empty() || !std::all_of(name.begin(), name.end(), is_plain)) return true;
    if (is_digit(name.front()) || name.front() == '.') return true;
    // A column's letters are a name before '!', and a reference before ':'.
    const bool has_digit = is_digit(name.back());
    if ((has_digit || in_span) && looks_like_cell(name)) return true;
    return looks_like_r1c1(name) || equal_ignoring_ascii_case(name, "TRUE") ||
           equal_ignoring_ascii_case(name, "FALSE");
}

void append_doubled(std::string& out, std::string_view name) {
    for (const char c : name) {
        if (c == '\'') out += '\'';
        out += c;
    }
}

/// Takes a name with or without quotes up to the ':' or '!' that ends it.
std::string take_name(std::string_view& text) {
    std::string name;
    bool is_quoted = false;
    for (; !text.empty(); text.remove_prefix(1)) {
        const char c = text.front();
        if (c == '\'') {
            if (is_quoted && text.substr(1).starts_with('\''))
                text.remove_prefix(1);
            else {
                is_quoted = !is_quoted;
                continue;
            }
        } else if (c == ':' || (c == '!' && !is_quoted)) {
            break;
        }
        name += c;
    }
    return name;
}

} // namespace

SheetPrefixNames names_in_prefix(std::string_view prefix) {
    // 'A:C'! has one pair of quotes around both names, 'A':'C'! one around each.
    SheetPrefixNames names;
    std::string_view rest = prefix;
    names.first = take_name(rest);
    if (!rest.starts_with(':')) return names;
    rest.remove_prefix(1);
    std::string quoted;
    const bool is_one_pair =
        prefix.starts_with('\'') && !rest.starts_with('\'') && rest.ends_with("'!");
    if (is_one_pair) rest = quoted.append(1, '\'').append(rest);
    names.last = take_name(rest);
    return names;
}

std::string make_sheet_prefix(std::string_view first, std::string_view last) {
    const bool is_span = !last.empty();
    const bool quotes = needs_quotes(first, is_span) || (is_span && needs_quotes(last, true));
    std::string prefix;
    if (quotes) prefix += '\'';
    append_doubled(prefix, first);
    if (is_span) {
        prefix += ':';
        append_doubled(prefix, last);
    }
    return prefix.append(quotes ? "'!" : "!");
}

} // namespace workbook
