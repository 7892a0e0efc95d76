// SPDX-License-Identifier: Apache-2.0
//
// Defined names (ECMA-376 part 1, 18.2.5) that refer to one rectangle of cells.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/cells/rectangle.h"

namespace workbook {

/// What a name's formula refers to.
struct NamedArea {
    std::u16string sheet; ///< empty when the formula names none
    Rectangle cells;
};

struct DefinedName {
    std::u16string name;
    std::string formula;            ///< as the file has it
    std::optional<int> sheet_index; ///< the sheet whose name it is; absent for a name of the book
    bool is_hidden = false;
};

/// The area of a formula that is one rectangle: "Sheet1!$A$1:$B$2", "'It''s'!A1", "$A:$C", "$1:$3".
/// Nothing for unions, functions, errors, other books and sheet spans.
std::optional<NamedArea> parse_named_area(std::string_view formula);

/// The cells of sheet `sheet_index` (named `sheet_name`) that `name` refers to: first a name of
/// this sheet, then one of the book.
std::optional<Rectangle> find_named_cells(const std::vector<DefinedName>& names,
                                          std::u16string_view name, int sheet_index,
                                          std::u16string_view sheet_name);

} // namespace workbook
