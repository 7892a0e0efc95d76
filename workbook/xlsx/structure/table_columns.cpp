// SPDX-License-Identifier: Apache-2.0
//
// Reads the headers of tables and renames columns in formulas.
#include "workbook/xlsx/structure/table_columns.h"

#include <utility>

#include "foundation/case_folding.h"
#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/xlsx/formula/formula_text.h"
#include "workbook/xlsx/reading/escaped_text.h"
#include "workbook/xlsx/writing/shared_strings_writer.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

std::u16string folded(std::string_view name) {
    return foundation::unicode::fold_case(foundation::unicode::to_utf16(name));
}

std::optional<TableHeader> read_header(OpcPackage& package, const std::string& part) {
    const pugi::xml_document tree = read_tree(*package.open_part(part));
    const pugi::xml_node root = root_element(tree, "table");
    const auto area = parse_area_reference(attribute_value(root, "ref").value_or(""));
    if (!area || attribute_number(root, "headerRowCount").value_or(1) == 0) return {};
    TableHeader header{part, {}, {area->first_row, area->first_column}, {}};
    header.table =
        attribute_value(root, "displayName").value_or(attribute_value(root, "name").value_or(""));
    const auto width = static_cast<std::size_t>(area->last_column - area->first_column) + 1;
    each_child(child_element(root, "tableColumns"), "tableColumn", [&](pugi::xml_node column) {
        if (header.columns.size() == width) return;
        append_unescaped(header.columns.emplace_back(),
                         attribute_value(column, "name").value_or(""));
    });
    return header;
}

} // namespace

std::vector<TableHeader> read_table_headers(OpcPackage& package, const std::string& sheet_part) {
    std::vector<TableHeader> headers;
    for (const Relationship& relationship : package.relationships(sheet_part)) {
        if (relationship.type != "table" || relationship.is_external ||
            !package.has_part(relationship.target))
            continue;
        try {
            if (auto header = read_header(package, relationship.target))
                headers.push_back(std::move(*header));
        } catch (const Error&) {
            // Nothing is known of a table that is damaged already; its part is kept as it is.
        }
    }
    return headers;
}

void RenamedColumns::add(const TableHeader& table, const std::vector<std::string>& names) {
    for (std::size_t i = 0; i < table.columns.size() && i < names.size(); ++i) {
        if (names[i] == table.columns[i]) continue;
        tables_[folded(table.table)].emplace(folded(table.columns[i]), names[i]);
        by_part_[table.part].emplace(i, names[i]);
    }
}

std::optional<std::string> RenamedColumns::name(std::string_view table,
                                                std::string_view column) const {
    const auto names = tables_.find(folded(table));
    if (names == tables_.end()) return {};
    const auto found = names->second.find(folded(column));
    if (found == names->second.end()) return {};
    return found->second;
}

std::optional<std::string> RenamedColumns::edited(std::string_view formula) const {
    if (empty()) return {};
    return rename_columns(formula, [this](std::string_view table, std::string_view column) {
        return name(table, column);
    });
}

// The references of character data are left to the tree that gets the attribute; line feeds and
// tabs would become blanks in it.
std::string column_attribute(std::string_view name) {
    std::string text;
    append_escaped_text(text, name);
    constexpr std::pair<std::string_view, std::string_view> kOthers[] = {
        {"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}, {"\n", "_x000a_"}, {"\t", "_x0009_"}};
    for (const auto& [from, to] : kOthers)
        for (std::size_t at = text.find(from); at != text.npos;
             at = text.find(from, at + to.size()))
            text.replace(at, from.size(), to);
    return text;
}

} // namespace workbook
