// SPDX-License-Identifier: Apache-2.0
//
// The formulas of a sheet of a BIFF8 book, in a pass of its own.
#pragma once

#include <cstddef>
#include <string_view>

#include "workbook/cells/sheet_data.h"
#include "workbook/library.h"
#include "workbook/xls/formula/formula_context.h"

namespace workbook {

/// Calls `visit` for each cell of `rows` that has a formula, in the file's order. Members of a
/// shared formula get its text as it reads in their place; of an array formula the first cell alone
/// has it, and results of data tables have none. Formulas of which no text is known are left out.
/// Throws `Error`.
void read_xls_formulas(std::string_view stream, std::size_t position, RowSpan rows,
                       const biff::FormulaContext& context, const FormulaVisitor& visit);

} // namespace workbook
