// SPDX-License-Identifier: Apache-2.0
//
// Token ends are found by what characters can follow each other; operators are not distinguished.
#include "workbook/xlsx/formula/formula_tokens.h"

#include "workbook/xlsx/formula/reference_text.h"

namespace workbook {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Characters that names of sheets, functions and defined names hold without quotes.
bool is_word_character(char c) {
    return is_letter(c) || is_digit(c) || c == '_' || c == '.' || c == '\\' || c == '?' ||
           static_cast<unsigned char>(c) >= 0x80;
}

std::size_t word_length(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && is_word_character(text[i]))
        ++i;
    return i;
}

/// Length of what `text` begins with up to the closing `quote`, which means itself when it is
/// doubled; `kNone` when it is not closed.
std::size_t quoted_length(std::string_view text, char quote) {
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] != quote) continue;
        if (i + 1 == text.size() || text[i + 1] != quote) return i + 1;
        ++i;
    }
    return kNone;
}

/// The same for brackets, which nest; an apostrophe escapes the next character (18.5.1.2).
std::size_t bracket_length(std::string_view text) {
    std::size_t depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\'')
            ++i;
        else if (text[i] == '[')
            ++depth;
        else if (text[i] == ']' && --depth == 0)
            return i + 1;
    }
    return kNone;
}

/// Digits, point and exponent.
std::size_t number_length(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && (is_digit(text[i]) || text[i] == '.'))
        ++i;
    if (i == 0 || i == text.size() || (text[i] != 'e' && text[i] != 'E')) return i;
    std::size_t exponent = i + 1;
    if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-')) ++exponent;
    const std::size_t digits = exponent;
    while (exponent < text.size() && is_digit(text[exponent]))
        ++exponent;
    return exponent > digits ? exponent : i;
}

/// Length of an error constant; 0 for the '#' after a reference that spills.
std::size_t error_length(std::string_view text) {
    std::size_t i = 1;
    while (i < text.size() &&
           (is_letter(text[i]) || is_digit(text[i]) || text[i] == '_' || (text[i] == '/' && i > 1)))
        ++i;
    if (i == 1) return 0;
    if (i < text.size() && (text[i] == '!' || text[i] == '?')) ++i;
    return i;
}

std::size_t sheet_name_length(std::string_view text) {
    if (!text.starts_with('\'')) return word_length(text);
    const std::size_t length = quoted_length(text, '\'');
    return length == kNone ? 0 : length;
}

/// Length of "name!" or "first:last!" at the start of `text`; 0 when there is none. A cell before
/// the colon is a corner of a range, whose other corner names its sheet.
std::size_t prefix_length(std::string_view text) {
    const std::size_t first = sheet_name_length(text);
    if (first == 0 || first == text.size()) return 0;
    if (text[first] == '!') return first + 1;
    if (text[first] != ':' || is_cell_corner(text.substr(0, first))) return 0;
    const std::size_t last = sheet_name_length(text.substr(first + 1));
    const std::size_t end = first + 1 + last;
    return last > 0 && end < text.size() && text[end] == '!' ? end + 1 : 0;
}

/// Sheet names hold none of these: a quoted prefix with one of them leads to another book.
bool names_other_book(std::string_view prefix) {
    return prefix.find_first_of("[]\\/?*|") != kNone;
}

} // namespace

FormulaToken FormulaTokenizer::take(FormulaTokenKind kind, std::size_t count) {
    const FormulaToken token{kind, rest_.substr(0, count)};
    rest_.remove_prefix(count);
    last_kind_ = kind;
    last_character_ = token.text.empty() ? '\0' : token.text.back();
    return token;
}

FormulaToken FormulaTokenizer::take_broken() {
    is_broken_ = true;
    return take(FormulaTokenKind::Other, rest_.size());
}

FormulaToken FormulaTokenizer::next() {
    if (rest_.empty()) return {};
    const char c = rest_.front();
    if (c == '"') {
        const std::size_t length = quoted_length(rest_, '"');
        return length == kNone ? take_broken() : take(FormulaTokenKind::Other, length);
    }
    if (c == '[') return take_bracket();
    if (c == '#') {
        const std::size_t length = error_length(rest_);
        return length == 0 ? take(FormulaTokenKind::Other, 1)
                           : take(FormulaTokenKind::Error, length);
    }
    if (c == '\'' || c == '$' || is_word_character(c)) return take_operand();
    return take(FormulaTokenKind::Other, 1);
}

FormulaToken FormulaTokenizer::take_operand() {
    const bool is_behind_prefix =
        last_kind_ == FormulaTokenKind::SheetPrefix || last_kind_ == FormulaTokenKind::OtherPrefix;
    const std::size_t prefix = is_behind_prefix ? 0 : prefix_length(rest_);
    if (prefix > 0) {
        const bool is_other = last_character_ == '|' || names_other_book(rest_.substr(0, prefix));
        return take(is_other ? FormulaTokenKind::OtherPrefix : FormulaTokenKind::SheetPrefix,
                    prefix);
    }
    if (rest_.front() == '\'') {
        const std::size_t length = quoted_length(rest_, '\'');
        return length == kNone ? take_broken() : take(FormulaTokenKind::Other, length);
    }
    if (const std::size_t length = reference_length(rest_); length > 0)
        return take(last_kind_ == FormulaTokenKind::Error ? FormulaTokenKind::Other
                                                          : FormulaTokenKind::Reference,
                    length);
    if (is_digit(rest_.front()) || rest_.front() == '.') {
        const std::size_t number = number_length(rest_);
        return take(FormulaTokenKind::Other, number);
    }
    std::size_t length = word_length(rest_);
    if (length == 0) return take(FormulaTokenKind::Other, 1); // a '$' that begins no reference
    if (length == rest_.size()) return take(FormulaTokenKind::Name, length);
    if (rest_[length] == '(') return take(FormulaTokenKind::Function, length);
    if (rest_[length] == '[') {
        const std::size_t bracket = bracket_length(rest_.substr(length));
        if (bracket == kNone) return take_broken();
        length += bracket;
    }
    return take(FormulaTokenKind::Name, length);
}

/// "[1]Sheet1!" and "[1]!" are other books; everything else is a column of the table around.
FormulaToken FormulaTokenizer::take_bracket() {
    const std::size_t bracket = bracket_length(rest_);
    if (bracket == kNone) return take_broken();
    const std::string_view after = rest_.substr(bracket);
    if (after.starts_with('!')) return take(FormulaTokenKind::OtherPrefix, bracket + 1);
    const std::size_t prefix = prefix_length(after);
    return prefix > 0 ? take(FormulaTokenKind::OtherPrefix, bracket + prefix)
                      : take(FormulaTokenKind::Name, bracket);
}

} // namespace workbook
