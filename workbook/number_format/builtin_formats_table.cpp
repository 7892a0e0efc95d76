// SPDX-License-Identifier: Apache-2.0
//
// Built-in date and time formats: 14 to 22 (m/d/yyyy to m/d/yyyy h:mm) and 45 to 47 (mm:ss,
// [h]:mm:ss, mmss.0).
#include "workbook/number_format/date_format.h"

namespace workbook {

namespace {

struct IdentifierSpan {
    std::uint32_t first, last;
    NumberStyle style;
};

constexpr IdentifierSpan kDateIdentifiers[] = {
    {14, 17, NumberStyle::Date}, {18, 21, NumberStyle::Time},    {22, 22, NumberStyle::DateTime},
    {45, 45, NumberStyle::Time}, {46, 46, NumberStyle::Elapsed}, {47, 47, NumberStyle::Time}};

} // namespace

NumberStyle builtin_date_style(std::uint32_t identifier) {
    for (const IdentifierSpan& span : kDateIdentifiers)
        if (identifier >= span.first && identifier <= span.last) return span.style;
    return NumberStyle::Number;
}

bool is_builtin_date_format(std::uint32_t identifier) {
    return builtin_date_style(identifier) != NumberStyle::Number;
}

} // namespace workbook
