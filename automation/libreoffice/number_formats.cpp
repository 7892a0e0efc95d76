// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/number_formats.h"

#include <com/sun/star/lang/Locale.hpp>
#include <com/sun/star/util/NumberFormat.hpp>
#include <com/sun/star/util/XNumberFormatsSupplier.hpp>

namespace office {
namespace {

constexpr std::u16string_view kPartsOfDates = u"ymdhs";

bool is_part_of_date(char16_t unit) {
    return kPartsOfDates.find(unit) != std::u16string_view::npos;
}

char16_t lower(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

/// Whether a letter of a date is outside quotes and brackets.
bool shows_parts_of_dates(std::u16string_view code) {
    bool in_quotes = false;
    bool in_brackets = false;
    for (const char16_t unit : code) {
        if (unit == u'"') in_quotes = !in_quotes;
        if (!in_quotes) in_brackets = unit == u'[' || (in_brackets && unit != u']');
        if (!in_quotes && !in_brackets && is_part_of_date(unit)) return true;
    }
    return false;
}

} // namespace

std::u16string to_plain_code(std::u16string_view code, bool is_date, bool is_time) {
    std::u16string plain;
    bool in_quotes = false;
    bool in_brackets = false;
    bool has_parts = false;
    for (std::size_t i = 0; i < code.size(); ++i) {
        const char16_t unit = code[i];
        const bool is_code = !in_quotes && !in_brackets;
        if (is_code && unit == u'\\' && i + 1 < code.size()) {
            plain.append({u'"', code[++i], u'"'});
            continue;
        }
        if (unit == u'"' && !in_brackets) in_quotes = !in_quotes;
        if (unit == u'[' && !in_quotes) in_brackets = true;
        if (unit == u']' && !in_quotes) in_brackets = false;
        const char16_t small = lower(unit);
        if (!is_code || !is_part_of_date(small)) {
            plain += unit;
        } else if (is_date || is_time) {
            plain += small;
            has_parts = true;
        } else {
            plain.append({u'"', unit, u'"'});
        }
    }
    if (has_parts || !(is_date || is_time)) return plain;
    // Times in brackets alone are durations; other codes have the letters of another language.
    if (is_time && !is_date && code.find(u'[') != std::u16string_view::npos) return plain;
    return is_date && is_time ? u"yyyy-mm-dd hh:mm:ss" : is_date ? u"yyyy-mm-dd" : u"hh:mm:ss";
}

NumberFormats::NumberFormats(const Reference<css::uno::XInterface>& document)
    : formats_(as<css::util::XNumberFormatsSupplier>(document)->getNumberFormats()) {}

NumberFormat NumberFormats::read(FormatKey key) const {
    namespace kinds = css::util::NumberFormat;
    const auto format = formats_->getByKey(key);
    const auto kind = property<sal_Int16>(format, "Type");
    // The standard format has a name in the language of the document.
    if (property<bool>(format, "StandardFormat")) return {u"General", false, false};
    const auto code = property<OUString>(format, "FormatString");
    const bool is_date = (kind & kinds::DATE) != 0;
    const bool is_time = (kind & kinds::TIME) != 0;
    NumberFormat read{to_plain_code(view_of(code), is_date, is_time), false,
                      (kind & kinds::LOGICAL) != 0};
    read.is_date = (is_date || is_time) && shows_parts_of_dates(read.code);
    return read;
}

const NumberFormat& NumberFormats::find(FormatKey key) {
    const auto known = known_.find(key);
    return known != known_.end() ? known->second : known_.emplace(key, read(key)).first->second;
}

FormatKey NumberFormats::key_of(std::u16string_view code) {
    const css::lang::Locale language; // that of the application, which is English
    const FormatKey key = formats_->queryKey(to_uno(code), language, false);
    constexpr FormatKey kNone = -1;
    return key == kNone ? formats_->addNew(to_uno(code), language) : key;
}

} // namespace office
