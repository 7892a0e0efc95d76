// SPDX-License-Identifier: Apache-2.0
//
// The functions that came after ECMA-376. Files hold their names with a prefix (MS-XLSX 2.2.3,
// "Functions"), which applications do not show; without it they take them for unknown names.
#pragma once

#include <string_view>

namespace workbook {

struct LaterFunction {
    std::string_view prefix; ///< "_xlfn." or "_xlfn._xlws."; empty for any other function
    std::string_view name;   ///< in capitals
};

/// `name` without a prefix, compared without regard to case.
LaterFunction later_function(std::string_view name);

/// "XLOOKUP" for "_xlfn.XLOOKUP"; `name` itself for any other function and for a prefix that is
/// not the function's own.
std::string_view without_later_prefix(std::string_view name);

} // namespace workbook
