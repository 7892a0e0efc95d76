// SPDX-License-Identifier: Apache-2.0
//
// The records that a copy of a sheet begins with, made from the original's: the same but for what
// the book can have only once. Changes to cells are written over them as over those of any sheet.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "workbook/xls/formula/token_rewriter.h"
#include "workbook/xls/writing/drawing_group.h"
#include "workbook/xls/writing/sheet_name_changes.h"

namespace workbook {

/// The substream of a copy of the BIFF8 worksheet whose BOF record is at `position`. Formulas and
/// names of sheets change as given. Drawings with their charts, comments and form controls are
/// entered into `drawings`; without a place there, the copy has none. Embedded objects, ActiveX
/// controls and linked pictures become pictures. Tables become plain cells; custom views, web
/// publishing, pictures of headers and the name in macros stay with the original. Throws `Error`.
std::string copied_sheet(std::string_view stream, std::size_t position,
                         const biff::TokenChanges& formulas, const SheetNameChanges& names,
                         DrawingGroup& drawings);

/// The substream at `position` with renamed sheets in it; empty when nothing in it changes. Throws
/// `Error`.
std::string sheet_with_names(std::string_view stream, std::size_t position,
                             const SheetNameChanges& names);

} // namespace workbook
