// SPDX-License-Identifier: Apache-2.0
//
// The number formats of a document: what kind each is, and its code in English letters.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include <com/sun/star/util/XNumberFormats.hpp>

#include "automation/libreoffice/format_map.h"
#include "automation/libreoffice/uno_access.h"

namespace office {

struct NumberFormat {
    /// With small letters for the parts of a date, as in "yyyy-mm-dd"; no such letter is outside
    /// quotes and brackets where the format shows anything but dates and times.
    std::u16string code;
    bool is_date = false;    ///< shows dates or times of day
    bool is_boolean = false; ///< which makes booleans of the numbers 0 and 1
};

class NumberFormats {
  public:
    explicit NumberFormats(const Reference<css::uno::XInterface>& document);

    const NumberFormat& find(FormatKey key);
    /// The key of a format that the document may not have yet.
    FormatKey key_of(std::u16string_view code);

  private:
    NumberFormat read(FormatKey key) const;

    const Reference<css::util::XNumberFormats> formats_;
    std::unordered_map<FormatKey, NumberFormat> known_;
};

/// A code of the application as `NumberFormat::code`.
std::u16string to_plain_code(std::u16string_view code, bool is_date, bool is_time);

} // namespace office
