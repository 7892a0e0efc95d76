// SPDX-License-Identifier: Apache-2.0
//
// The formulas of a worksheet part (ECMA-376 part 1, 18.3.1.40) in a pass of its own: nearly all
// reads want values only.
#pragma once

#include "workbook/cells/sheet_data.h"
#include "workbook/io/byte_source.h"
#include "workbook/library.h"

namespace workbook {

/// Calls `visit` for each cell of `rows` that has a formula. Members of a shared formula get its
/// text moved to their place; of an array formula the first cell alone has it. Stops after the last
/// wanted row. Throws `Error`.
void read_formulas(ByteSource& part, RowSpan rows, const FormulaVisitor& visit);

} // namespace workbook
