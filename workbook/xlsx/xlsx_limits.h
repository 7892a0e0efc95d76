// SPDX-License-Identifier: Apache-2.0
//
// How large sheets of the Open XML formats can be (ECMA-376 part 1, 18.3.1.73; the applications'
// own limits).
#pragma once

#include "workbook/cells/sheet_limits.h"

namespace workbook {

inline constexpr int kMaxRows = 1'048'576;
inline constexpr int kMaxColumns = 16'384;
inline constexpr SheetLimits kXlsxLimits{kMaxRows, kMaxColumns};

} // namespace workbook
