// SPDX-License-Identifier: Apache-2.0
//
// Which formulas have a boolean result, by their text.
#pragma once

#include <string_view>

namespace office {

/// True for a formula in English, such as "=A1>5" or "=AND(A1;B1)", whose last step compares or
/// calls a function that returns a boolean. The application reads boolean cells of the binary
/// format as "=TRUE()" and loses what kind of result other formulas have there.
bool has_boolean_result(std::u16string_view formula);

} // namespace office
