// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/date_formats.h"

#include <new>
#include <utility>

#include "spreadsheet/com/late_bound_call.h"

namespace spreadsheet {
namespace {

using foundation::automation::text_in;
using foundation::automation::Variant;

constexpr std::string_view kTag = "[COM DATE FORMATS MSG]:";

/// Places in the `International` array.
constexpr LONG kGeneralName = 26;
constexpr LONG kFirstLetter = 19; // year; month, day, hour, minute and second follow
constexpr LONG kLastLetter = 24;

std::u16string element_text(const VARIANT& array, LONG index) {
    Variant element;
    const bool is_list = array.vt == (VT_ARRAY | VT_VARIANT) && array.parray != nullptr &&
                         SafeArrayGetDim(array.parray) == 1;
    const HRESULT result =
        is_list ? SafeArrayGetElement(array.parray, &index, element.out()) : DISP_E_BADVARTYPE;
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
    const auto text = text_in(element.get());
    if (FAILED(result) || !text)
        com::fail_call(kTag, error_id::internal, OLESTR("International"), result);
    return std::u16string(*text);
}

} // namespace

DateFormats DateFormats::read_from(IDispatch* application) {
    const Variant array = com::get(application, OLESTR("International")).or_fail_internally(kTag);
    std::u16string general = element_text(array.get(), kGeneralName);
    std::u16string letters;
    for (LONG index = kFirstLetter; index <= kLastLetter; ++index)
        letters += element_text(array.get(), index).substr(0, 1);
    return DateFormats(std::move(general), std::move(letters));
}

DateFormats::DateFormats(std::u16string general, std::u16string letters)
    : general_(std::move(general)), letters_(std::move(letters)) {}

bool DateFormats::is_date(const VARIANT& number_format) const {
    const auto format = text_in(number_format);
    if (!format || *format == general_) return false;
    bool in_brackets = false;
    bool in_quotes = false;
    for (const char16_t unit : *format) {
        if (unit == u'[')
            in_brackets = true;
        else if (unit == u']')
            in_brackets = false;
        else if (unit == u'"')
            in_quotes = !in_quotes;
        else if (!in_brackets && !in_quotes && letters_.find(unit) != std::u16string::npos)
            return true;
    }
    return false;
}

} // namespace spreadsheet
