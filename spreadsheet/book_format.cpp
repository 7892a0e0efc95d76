// SPDX-License-Identifier: Apache-2.0
//
// The table of formats and their limits.
#include "spreadsheet/book_format.h"

#include <array>
#include <string_view>

#include "foundation/ascii_case.h"
#include "spreadsheet/exception.h"

namespace spreadsheet::book {
namespace {

constexpr std::array<std::u16string_view, 9> kNames{u"XLS",  u"XLSX", u"XLSM", u"XLSB",  u"XLTX",
                                                    u"XLTM", u"ODS",  u"CSV",  u"GSHEET"};

} // namespace

std::u16string to_string(format value) {
    const auto index = static_cast<std::size_t>(value);
    if (index >= kNames.size()) throw Exception(error_id::format_invalid);
    return std::u16string(kNames[index]);
}

format create_format(const std::u16string& name) {
    for (std::size_t i = 0; i < kNames.size(); ++i)
        if (foundation::unicode::equal_ignoring_ascii_case(kNames[i], name))
            return static_cast<format>(i);
    throw Exception(error_id::format_invalid);
}

int get_row_limit(format value) {
    return value == format::XLS ? 65535 : 1048575;
}

int get_col_limit(format value) {
    if (value == format::XLS) return 255;
    return value == format::GSHEET ? 18277 : 16383;
}

bool larger_than_xls(format value) {
    return value >= format::XLSX && value <= format::CSV;
}

} // namespace spreadsheet::book
