// SPDX-License-Identifier: Apache-2.0
//
// The rules follow what a sheet owns (ECMA-376 part 1, 12.3): what is shown on it is copied, what
// it only uses is shared.
#include "workbook/xlsx/structure/sheet_copy.h"

#include <algorithm>
#include <iterator>

#include "foundation/case_folding.h"
#include "foundation/unicode.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

/// In the order of the names.
constexpr std::string_view kCopied[] = {
    "activeXControlBinary", "chart",      "chartColorStyle", "chartEx",    "chartStyle",
    "chartUserShapes",      "comments",   "control",         "ctrlProp",   "drawing",
    "namedSheetView",       "pivotTable", "printerSettings", "queryTable", "table",
    "threadedComment",      "vmlDrawing",
};

/// Each of these belongs to one sheet: the cells mapped to XML, slicers, timelines.
constexpr std::string_view kDropped[] = {"slicer", "tableSingleCells", "timeline"};

constexpr std::string_view kTableType = "table";

std::u16string folded(std::string_view name) {
    return foundation::unicode::fold_case(foundation::unicode::to_utf16(name));
}

} // namespace

std::optional<std::string> SheetCopyPlan::table_name(std::string_view name) const {
    const auto found = table_names.find(folded(name));
    if (found == table_names.end()) return {};
    return found->second;
}

TableNames::TableNames(OpcPackage& package, const std::vector<std::string>& table_parts,
                       const std::vector<DefinedName>& defined_names) {
    for (const DefinedName& name : defined_names)
        names_.insert(foundation::unicode::fold_case(name.name));
    for (const std::string& part : table_parts) {
        const pugi::xml_document tree = read_tree(*package.open_part(part));
        const pugi::xml_node table = root_element(tree, "table");
        for (const char* attribute : {"name", "displayName"})
            if (const auto name = attribute_value(table, attribute)) take(*name);
        last_id_ = std::max(last_id_, attribute_number(table, "id").value_or(0));
    }
}

CopiedTable TableNames::make(std::string_view name) {
    for (unsigned number = 2;; ++number) {
        std::string candidate(name);
        candidate.append("_").append(std::to_string(number));
        if (take(candidate)) return {++last_id_, std::move(candidate)};
    }
}

bool TableNames::take(std::string_view name) {
    return names_.insert(folded(name)).second;
}

CopyRule copy_rule(std::string_view type) {
    if (std::binary_search(std::begin(kCopied), std::end(kCopied), type)) return CopyRule::Copy;
    if (std::binary_search(std::begin(kDropped), std::end(kDropped), type)) return CopyRule::Drop;
    return CopyRule::Share;
}

SheetCopyPlan plan_sheet_copy(OpcPackage& package, const std::string& source, std::string part,
                              NewPartNames& names) {
    SheetCopyPlan plan;
    plan.copy_of.emplace(source, part);
    plan.parts.push_back({source, std::move(part), {}});
    for (std::size_t i = 0; i < plan.parts.size(); ++i) {
        const std::string from = plan.parts[i].source;
        for (const Relationship& relationship : package.relationships(from)) {
            const std::string& target = relationship.target;
            const CopyRule rule = copy_rule(relationship.type);
            if (rule == CopyRule::Drop && relationship.type != "tableSingleCells")
                plan.drops_slicers = true;
            if (rule == CopyRule::Drop || relationship.is_external || !package.has_part(target) ||
                plan.copy_of.contains(target))
                continue;
            if (rule == CopyRule::Share) {
                plan.shared.push_back(target);
                continue;
            }
            std::string copy = names.fresh(target);
            plan.copy_of.emplace(target, copy);
            plan.parts.push_back({target, std::move(copy), relationship.type});
        }
    }
    return plan;
}

bool has_tables(const SheetCopyPlan& plan) {
    return std::any_of(plan.parts.begin(), plan.parts.end(),
                       [](const CopiedPart& part) { return part.type == kTableType; });
}

void name_copied_tables(OpcPackage& package, SheetCopyPlan& plan, TableNames& names) {
    for (const CopiedPart& part : plan.parts) {
        if (part.type != kTableType) continue;
        const pugi::xml_document tree = read_tree(*package.open_part(part.source));
        const pugi::xml_node table = root_element(tree, "table");
        const std::string name(attribute_value(table, "displayName")
                                   .value_or(attribute_value(table, "name").value_or("Table")));
        CopiedTable copy = names.make(name);
        plan.table_names.emplace(folded(name), copy.name);
        plan.tables.emplace(part.source, std::move(copy));
    }
}

} // namespace workbook
