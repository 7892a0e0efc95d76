// SPDX-License-Identifier: Apache-2.0
//
// The tables of a worksheet (ECMA-376 part 1, 18.5): their names in formulas and their cells.
#pragma once

#include <string>
#include <vector>

#include "workbook/cells/rectangle.h"
#include "workbook/opc/opc_package.h"

namespace workbook {

struct SheetTable {
    std::u16string name;
    Rectangle cells; ///< header and totals included
};

/// The tables of the sheet in part `sheet_part`; those that cannot be read are left out. Throws
/// `Error` when the sheet's relationships cannot be read.
std::vector<SheetTable> read_tables(OpcPackage& package, const std::string& sheet_part);

} // namespace workbook
