// SPDX-License-Identifier: Apache-2.0
//
// Files hold more in a formula than applications show: prefixes of functions that came after
// ECMA-376 (functions/later_functions.h), "_xlpm." before the names that LET and LAMBDA give to
// values, and "_xlop." where LAMBDA takes one that may be missing, shown in brackets. "A1#", all
// cells that A1 fills, is "_xlfn.ANCHORARRAY(A1)".
#pragma once

#include <string>
#include <string_view>

namespace workbook {

/// The formula as files hold it. Prefixes that it has already stay, as does everything within
/// strings. For formulas without a `formula_problem`; any other text comes back in some form.
std::string stored_formula(std::string_view formula);

/// The formula as applications show it, from which `stored_formula` makes `stored` again. Where it
/// would not, `stored` itself: unknown prefixes, a name that hides another one.
std::string shown_formula(std::string_view stored);

} // namespace workbook
