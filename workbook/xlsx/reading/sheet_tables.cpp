// SPDX-License-Identifier: Apache-2.0
//
// One small part for each table, found through the sheet's relationships.
#include "workbook/xlsx/reading/sheet_tables.h"

#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/xlsx/cell_reference.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

std::vector<SheetTable> read_tables(OpcPackage& package, const std::string& sheet_part) {
    std::vector<SheetTable> tables;
    if (sheet_part.empty()) return tables;
    for (const Relationship& relationship : package.relationships(sheet_part)) {
        if (relationship.type != "table" || relationship.is_external ||
            !package.has_part(relationship.target))
            continue;
        try {
            const pugi::xml_document tree = read_tree(*package.open_part(relationship.target));
            const pugi::xml_node root = root_element(tree, "table");
            const auto area = parse_area_reference(attribute_value(root, "ref").value_or(""));
            if (!area) continue;
            const auto name = attribute_value(root, "displayName")
                                  .value_or(attribute_value(root, "name").value_or(""));
            tables.push_back({foundation::unicode::to_utf16(name), *area});
        } catch (const Error&) {
            // Nothing depends on a table that is damaged.
        }
    }
    return tables;
}

} // namespace workbook
