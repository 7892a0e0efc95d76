// SPDX-License-Identifier: Apache-2.0
//
// The application's filters and the numbers that automation has for their formats.
#pragma once

#include <cstdint>
#include <string_view>

namespace office {

struct FileFormat {
    std::int32_t number;
    const char16_t* filter;
    bool can_be_saved;
};

inline constexpr std::int32_t kPlainText = -4158;
inline constexpr std::int32_t kNormalWorkbook = -4143;
inline constexpr std::int32_t kOpenXmlWorkbook = 51;
inline constexpr std::int32_t kCommaSeparated = 6;
inline constexpr const char16_t* kTextFilter = u"Text - txt - csv (StarCalc)";
/// Commas between fields in double quotes, UTF-8 (76), from the first line, no column formats,
/// English (1033, saving: 0); quoted fields are text and others are recognised, saving: cells as
/// they are shown.
inline constexpr const char16_t* kTextLoading = u"44,34,76,1,,1033,false,true";
inline constexpr const char16_t* kTextSaving = u"44,34,76,1,,0,false,true,false";

/// The first entry of a number or a filter is what the other side becomes.
inline constexpr FileFormat kFileFormats[] = {
    {kNormalWorkbook, u"MS Excel 97", true},
    {39, u"MS Excel 5.0/95", false},
    {39, u"MS Excel 95", false},
    {50, u"Calc MS Excel 2007 Binary", false},
    {kOpenXmlWorkbook, u"Calc MS Excel 2007 XML", true},
    {kOpenXmlWorkbook, u"Calc Office Open XML", false},
    {52, u"Calc MS Excel 2007 VBA XML", true},
    {54, u"Calc MS Excel 2007 XML Template", true},
    {54, u"Calc Office Open XML Template", false},
    {60, u"calc8", true},
    {60, u"OpenDocument Spreadsheet Flat XML", false},
    {kCommaSeparated, kTextFilter, true},
};

/// What a number is saved as; null for a format that the application cannot save.
constexpr const FileFormat* find_saved_format(std::int32_t number) {
    for (const FileFormat& format : kFileFormats)
        if (format.number == number && format.can_be_saved) return &format;
    return nullptr;
}

/// The number of what a filter has read.
constexpr std::int32_t number_of_filter(std::u16string_view filter) {
    for (const FileFormat& format : kFileFormats)
        if (filter == format.filter) return format.number;
    return kNormalWorkbook;
}

} // namespace office
