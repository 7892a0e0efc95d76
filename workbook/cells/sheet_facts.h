// SPDX-License-Identifier: Apache-2.0
//
// What the engines have found about sheets, as `library.h` hands it out.
#pragma once

#include <optional>
#include <string>

#include "workbook/cells/sheet_data.h"
#include "workbook/library.h"

namespace workbook {

/// `cells` was filled with a store that keeps bounds only.
inline void fill_scan(const SheetCells& cells, const SheetTail& tail, SheetScan& scan) {
    const CellBounds& all = cells.cells.bounds();
    scan.first_row = all.first_row;
    scan.end_row = all.end_row;
    scan.first_column = all.first_column;
    scan.end_column = all.end_column;
    const CellBounds& filled = cells.cells.filled_bounds();
    scan.first_filled_row = filled.first_row;
    scan.end_filled_row = filled.end_row;
    scan.first_filled_column = filled.first_column;
    scan.end_filled_column = filled.end_column;
    scan.cells = cells.cells.size();
    scan.formulas = cells.formulas;
    scan.formulas_without_result = cells.formulas_without_result;
    scan.is_protected = tail.is_protected;
}

inline NamedCells make_named_cells(const std::u16string& name, int sheet, std::optional<int> scope,
                                   const Rectangle& cells) {
    return {name,
            sheet,
            scope,
            false,
            cells.first_row,
            cells.last_row,
            cells.first_column,
            cells.last_column};
}

} // namespace workbook
