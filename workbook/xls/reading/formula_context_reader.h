// SPDX-License-Identifier: Apache-2.0
//
// What the formulas of a book refer to, in a pass of its own over the globals: nearly all reads
// want values only.
#pragma once

#include <string_view>

#include "workbook/xls/formula/formula_context.h"
#include "workbook/xls/reading/globals.h"

namespace workbook {

/// `stream` is that of a BIFF8 book, `globals` what has been read from it. Records that break the
/// format leave what they are about without a name. Throws `Error` where the records themselves
/// are cut.
biff::FormulaContext read_formula_context(std::string_view stream, const XlsGlobals& globals);

} // namespace workbook
