// SPDX-License-Identifier: Apache-2.0
//
// Built-in date and time formats: 14 to 22 (m/d/yyyy to m/d/yyyy h:mm) and 45 to 47 (mm:ss,
// [h]:mm:ss, mmss.0).
#include "workbook/number_format/date_format.h"

namespace workbook {

namespace {

struct IdentifierSpan {
    std::uint32_t first, last;
};

constexpr IdentifierSpan kDateIdentifiers[] = {{14, 22}, {45, 47}};

} // namespace

bool is_builtin_date_format(std::uint32_t identifier) {
    for (const IdentifierSpan& span : kDateIdentifiers)
        if (identifier >= span.first && identifier <= span.last) return true;
    return false;
}

} // namespace workbook
