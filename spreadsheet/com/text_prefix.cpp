// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/text_prefix.h"

#include <algorithm>
#include <cstddef>

#include "foundation/ascii_case.h"
#include "foundation/unicode.h"

namespace spreadsheet::com {
namespace {

/// No date or time that an application recognises is longer, in any language.
constexpr std::size_t kLongestDate = 64;

/// Units that a formula, an error value or hidden text begins with.
constexpr std::u16string_view kSpecialBeginnings = u"=+-@#'";

/// The booleans in the languages that applications come in.
constexpr std::u16string_view kBooleans[] = {
    u"TRUE",       u"FALSE",  u"WAHR",   u"FALSCH",  u"VRAI",   u"FAUX",     u"VERDADERO", u"FALSO",
    u"VERO",       u"WAAR",   u"ONWAAR", u"PRAWDA",  u"FAŁSZ",  u"SANT",     u"SAND",      u"FALSK",
    u"FALSKT",     u"USANN",  u"TOSI",   u"EPÄTOSI", u"PRAVDA", u"NEPRAVDA", u"IGAZ",      u"HAMIS",
    u"VERDADEIRO", u"ИСТИНА", u"ЛОЖЬ",   u"DOĞRU",   u"YANLIŞ", u"ADEVĂRAT", u"FALS"};

/// A decimal digit, ASCII or of full width.
bool is_digit(char16_t unit) {
    return (unit >= u'0' && unit <= u'9') || (unit >= u'\uFF10' && unit <= u'\uFF19');
}

/// An ASCII letter that no number has: the exponent's are left out.
bool is_word_letter(char16_t unit) {
    const char32_t lower = foundation::unicode::fold_ascii(unit);
    return lower >= U'a' && lower <= U'z' && lower != U'e';
}

} // namespace

bool needs_apostrophe(std::u16string_view text) {
    if (text.empty()) return false;
    if (kSpecialBeginnings.find(text.front()) != std::u16string_view::npos) return true;
    // A number may be of any length.
    if (text.size() > kLongestDate && std::any_of(text.begin(), text.end(), is_word_letter))
        return false;
    return std::any_of(text.begin(), text.end(), is_digit) ||
           std::any_of(std::begin(kBooleans), std::end(kBooleans), [&](std::u16string_view word) {
               return foundation::unicode::equal_ignoring_case(word, text);
           });
}

} // namespace spreadsheet::com
