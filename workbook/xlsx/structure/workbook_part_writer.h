// SPDX-License-Identifier: Apache-2.0
//
// The elements of the workbook part (ECMA-376 part 1, 18.2) as changes to the book leave them. Only
// sources include this header: it brings pugixml.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include <pugixml.hpp>

#include "workbook/xlsx/structure/sheet_list.h"
#include "workbook/xlsx/structure/table_columns.h"

namespace workbook {

/// Whether a book is written in the Strict form (ECMA-376 part 1, 2.1).
bool is_strict_book(pugi::xml_node workbook_element);

/// The child of that local name, made at the place that CT_Workbook has for it when there is none.
pugi::xml_node child_at_place(pugi::xml_node workbook_element, std::string_view name);

/// Sheets in their order with their names and states.
void write_sheets(pugi::xml_node workbook_element, const SheetList& sheets);

/// The views stay at the sheets that they showed, or go to a visible one beside. Before
/// `write_sheets`.
void write_views(pugi::xml_node workbook_element, const SheetList& sheets);

/// Structured references in defined names.
void write_columns_in_names(pugi::xml_node workbook_element, const RenamedColumns& columns);

/// Names of columns, by their positions, in the root of a table's part.
void write_column_names(pugi::xml_node table, const std::map<std::size_t, std::string>& names);

void write_date_system(pugi::xml_node workbook_element, bool is_1904);
void write_recalculation(pugi::xml_node workbook_element);

} // namespace workbook
