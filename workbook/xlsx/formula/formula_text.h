// SPDX-License-Identifier: Apache-2.0
//
// Changes references within the text of a formula (ECMA-376 part 1, 18.17.2; without the equals
// sign, in UTF-8, references to XML resolved). Strings, function names and structured references
// to tables are left as they are; a text that is not a formula comes back unchanged.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "workbook/xlsx/formula/formula_tokens.h"

namespace workbook {

/// The formula as it reads `rows` further down and `columns` further right: references without '$'
/// move along, across the sheet's edge they become #REF!. For members of shared formulas.
std::string translate_formula(std::string_view formula, int rows, int columns);

/// What becomes of a sheet's name in a formula: the same name, another one, nullopt for a sheet
/// that is gone.
using SheetNameMap = std::function<std::optional<std::string>(std::string_view name)>;

/// The same for a span of sheets; without a `last` when one sheet is left.
using SheetSpanMap = std::function<std::optional<SheetPrefixNames>(const SheetPrefixNames& span)>;

/// The formula with every sheet name replaced by what `map` returns for it ("Sheet1!A1",
/// "'It''s'!A1", spans of sheets "A:C!B2"), quoted where the new name asks for it; other books'
/// sheets are not asked for. A reference to a sheet that is gone becomes #REF!. Without `spans`, a
/// span that loses one end keeps the other. Returns nothing when the formula does not change.
std::optional<std::string> rename_sheets(std::string_view formula, const SheetNameMap& map,
                                         const SheetSpanMap& spans = {});

/// The new name of a table; nullopt for a name that stays or is not a table's.
using TableNameMap = std::function<std::optional<std::string>(std::string_view name)>;

/// The formula with the names of tables ("Table1[Col]", "Table1") replaced. Returns nothing when it
/// does not change.
std::optional<std::string> rename_tables(std::string_view formula, const TableNameMap& map);

/// The new name of a column of a table; nullopt for one that keeps its name.
using ColumnNameMap =
    std::function<std::optional<std::string>(std::string_view table, std::string_view column)>;

/// The formula with the columns in structured references ("Table1[Col]",
/// "Table1[[#This Row],[Col]]", 18.5.1.2) replaced; those without a table's name stay. Returns
/// nothing when it does not change.
std::optional<std::string> rename_columns(std::string_view formula, const ColumnNameMap& map);

} // namespace workbook
