// SPDX-License-Identifier: Apache-2.0
//
// The rules that all formats and applications share.
#include "workbook/cells/sheet_name_rules.h"

#include <string>

#include "foundation/code_points.h"
#include "foundation/unicode.h"
#include "workbook/error.h"

namespace workbook {

namespace {

constexpr std::size_t kMaxNameUnits = 31;
constexpr std::u16string_view kForbidden = u":\\/?*[]";

/// Characters that XML has no way to write (XML 1.0, 2.2), and controls.
bool is_writable(char32_t c) {
    using foundation::unicode::is_high_surrogate;
    using foundation::unicode::is_low_surrogate;
    return c >= 0x20 && c != 0x7F && c != 0xFFFE && c != 0xFFFF && !is_high_surrogate(c) &&
           !is_low_surrogate(c);
}

} // namespace

void refuse_sheet_name(std::u16string_view name, std::string_view why) {
    throw Error::refused("a sheet cannot be named \"" + foundation::unicode::to_utf8(name) +
                         "\": " + std::string{why});
}

void check_sheet_name(std::u16string_view name) {
    if (name.empty()) refuse_sheet_name(name, "the name is empty");
    if (name.size() > kMaxNameUnits) refuse_sheet_name(name, "names have at most 31 characters");
    if (name.find_first_of(kForbidden) != std::u16string_view::npos)
        refuse_sheet_name(name, "names hold none of : \\ / ? * [ ]");
    if (name.front() == u'\'' || name.back() == u'\'')
        refuse_sheet_name(name, "names neither begin nor end with an apostrophe");
    for (std::size_t i = 0; i < name.size();)
        if (!is_writable(foundation::unicode::next_code_point(name, i)))
            refuse_sheet_name(name, "it holds a character that no file can hold");
}

} // namespace workbook
