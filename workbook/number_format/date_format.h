// SPDX-License-Identifier: Apache-2.0
//
// Which number formats show a date or a time.
#pragma once

#include <cstdint>
#include <string_view>

#include "workbook/library.h"

namespace workbook {

/// Whether a format code (ECMA-376 part 1, 18.8.31) shows a date or a time. Its first section
/// decides: the one for positive numbers, which dates are. Malformed codes are read as far as they
/// go.
bool is_date_format(std::string_view code);

/// How a number is shown in such a format; `Number` where it is none. A month is one of minutes
/// beside hours or seconds.
NumberStyle date_style(std::string_view code);

/// Whether a built-in identifier (ECMA-376 part 1, 18.8.30) shows a date or a time in every locale.
/// Identifiers that mean something only in East Asian or Thai locales (27 to 36, 50 to 81) do not:
/// producers that use them as dates store their code, which then decides.
bool is_builtin_date_format(std::uint32_t identifier);
NumberStyle builtin_date_style(std::uint32_t identifier);

} // namespace workbook
