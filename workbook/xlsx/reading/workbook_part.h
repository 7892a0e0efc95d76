// SPDX-License-Identifier: Apache-2.0
//
// The workbook part (ECMA-376 part 1, 18.2.27) with the parts that it refers to: sheets in their
// order, date system, defined names.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "workbook/library.h"
#include "workbook/opc/opc_package.h"
#include "workbook/xlsx/reading/defined_names.h"
#include "workbook/xlsx/reading/iso_date.h"

namespace workbook {

struct SheetEntry {
    std::u16string name;
    std::string part; ///< canonical name; empty for an unknown sheet and a missing part
    SheetKind kind = SheetKind::Unknown;
    SheetState state = SheetState::Visible;
};

struct WorkbookPart {
    std::vector<std::unique_ptr<SheetEntry>> sheets; ///< entries stay where they are in memory
    std::vector<DefinedName> defined_names;
    bool date_1904 = false;
    bool is_date_compatible = true;    ///< serial numbers have the leap-year error of 1900
    std::vector<std::string> warnings; ///< what is missing and was done without
    std::string shared_strings_part;   ///< empty when the book has none
    std::string styles_part;           ///< empty when the book has none
};

/// The base of the ISO dates in the book's cells.
DateBase date_base(const WorkbookPart& workbook);

/// Finds and reads the package's workbook. Throws `Error`; a package of another application is
/// named.
WorkbookPart read_workbook_part(OpcPackage& package);

} // namespace workbook
