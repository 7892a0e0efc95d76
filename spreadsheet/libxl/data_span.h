// SPDX-License-Identifier: Apache-2.0
//
// The block of content around a cell.
#pragma once

#include "spreadsheet/range.h"
#include "workbook/library.h"

namespace spreadsheet {

/// The smallest rectangle around `start` whose four sides touch no further content: a cell that is
/// not empty, blank or an error. Stays within `bounds`, apart from `start` itself. Looks at each
/// cell once per side at most.
Range find_data_span(const workbook::Sheet& sheet, Cell start, const Range& bounds);

} // namespace spreadsheet
