// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/boolean_formula.h"

#include <algorithm>

namespace office {
namespace {

constexpr std::u16string_view kBooleanFunctions[] = {
    u"AND",       u"EXACT",     u"FALSE", u"ISBLANK",   u"ISERR",    u"ISERROR", u"ISEVEN",
    u"ISFORMULA", u"ISLOGICAL", u"ISNA",  u"ISNONTEXT", u"ISNUMBER", u"ISODD",   u"ISREF",
    u"ISTEXT",    u"NOT",       u"OR",    u"TRUE",      u"XOR"};

bool is_comparison(char16_t unit) {
    return unit == u'=' || unit == u'<' || unit == u'>';
}

/// What stands outside quotes and parentheses, with each pair of parentheses as "()".
std::u16string outermost(std::u16string_view formula) {
    std::u16string text;
    char16_t quote = 0;
    int depth = 0;
    for (const char16_t unit : formula) {
        if (quote != 0) {
            if (unit == quote) quote = 0;
        } else if (unit == u'"' || unit == u'\'') {
            quote = unit;
            if (depth == 0) text += u'"';
        } else if (unit == u'(' || unit == u'{') {
            if (depth++ == 0) text += u"()";
        } else if (unit == u')' || unit == u'}') {
            --depth;
        } else if (depth == 0 && unit != u' ') {
            text += unit;
        }
    }
    return text;
}

} // namespace

bool has_boolean_result(std::u16string_view formula) {
    if (!formula.starts_with(u'=')) return false;
    const std::u16string text = outermost(formula.substr(1));
    if (std::any_of(text.begin(), text.end(), is_comparison)) return true;
    if (!text.ends_with(u"()")) return false;
    const std::u16string_view name = std::u16string_view(text).substr(0, text.size() - 2);
    // A pair of parentheses around all is a step of its own.
    if (name.empty())
        return has_boolean_result(u"=" + std::u16string(formula.substr(2, formula.size() - 3)));
    return std::find(std::begin(kBooleanFunctions), std::end(kBooleanFunctions), name) !=
           std::end(kBooleanFunctions);
}

} // namespace office
