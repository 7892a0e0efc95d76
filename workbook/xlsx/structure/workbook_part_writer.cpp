// SPDX-License-Identifier: Apache-2.0
//
// What does not change is not touched: a tree that was not changed gives the same text.
#include "workbook/xlsx/structure/workbook_part_writer.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/unicode.h"
#include "workbook/xlsx/namespaces.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

/// The children of CT_Workbook in their order (ECMA-376 part 1, A.2).
constexpr std::string_view kOrder[] = {
    "fileVersion",    "fileSharing",
    "workbookPr",     "workbookProtection",
    "bookViews",      "sheets",
    "functionGroups", "externalReferences",
    "definedNames",   "calcPr",
    "oleSize",        "customWorkbookViews",
    "pivotCaches",    "smartTagPr",
    "smartTagTypes",  "webPublishing",
    "fileRecoveryPr", "webPublishObjects",
    "extLst",
};

/// Its place in the order; after all of them for anything else.
std::ptrdiff_t rank(std::string_view name) {
    return std::find(std::begin(kOrder), std::end(kOrder), name) - std::begin(kOrder);
}

std::string with_prefix_of(pugi::xml_node element, std::string_view local) {
    const std::string_view name = element.name();
    std::string whole(name.substr(0, name.size() - local_name(element.name()).size()));
    return whole.append(local);
}

pugi::xml_attribute find_attribute(pugi::xml_node element, std::string_view name) {
    for (pugi::xml_attribute attribute : element.attributes())
        if (local_name(attribute.name()) == name) return attribute;
    return {};
}

void set_attribute(pugi::xml_node element, const char* name, const std::string& value) {
    pugi::xml_attribute attribute = find_attribute(element, name);
    if (!attribute) attribute = element.append_attribute(name);
    if (value != attribute.value()) attribute = value.c_str();
}

std::vector<pugi::xml_node> sheet_elements(pugi::xml_node workbook_element) {
    std::vector<pugi::xml_node> elements;
    each_child(child_element(workbook_element, "sheets"), "sheet",
               [&](pugi::xml_node element) { elements.push_back(element); });
    return elements;
}

/// The name for the attribute with the relationship of a new sheet ("r:id"); the prefix is declared
/// on the sheet itself unless an element around does so.
std::string relationship_attribute(pugi::xml_node root, pugi::xml_node sheet) {
    const bool is_strict = is_strict_book(root);
    const char* address = is_strict ? kStrictRelationships : kRelationships;
    for (pugi::xml_node around = sheet.parent(); around; around = around.parent())
        for (const pugi::xml_attribute attribute : around.attributes())
            if (std::string_view(attribute.value()) == address &&
                std::string_view(attribute.name()).starts_with("xmlns:"))
                return std::string(local_name(attribute.name())) + ":id";
    sheet.append_attribute("xmlns:r") = address;
    return "r:id";
}

std::string_view state_text(SheetState state) {
    return state == SheetState::Hidden ? "hidden" : "veryHidden";
}

void write_sheet(pugi::xml_node element, const SheetRecord& record) {
    const SheetEntry& entry = *record.entry;
    if (!record.is_in_package || entry.name != record.package_name)
        set_attribute(element, "name", foundation::unicode::to_generalized_utf8(entry.name));
    if (entry.state == record.package_state) return;
    if (entry.state == SheetState::Visible)
        element.remove_attribute(find_attribute(element, "state"));
    else
        set_attribute(element, "state", std::string(state_text(entry.state)));
}

/// Where the sheets of the package are now.
class ViewMap {
  public:
    explicit ViewMap(const SheetList& sheets) : sheets_(sheets) {
        for (const std::unique_ptr<SheetEntry>& entry : sheets.entries())
            positions_.emplace(&sheets.record(*entry), positions_.size());
    }

    /// For a sheet of the package by its old index; the same for an index that had no sheet.
    std::size_t position(std::size_t old_index, bool only_visible) const {
        const auto& records = sheets_.records();
        if (old_index >= records.size() || !records[old_index]->is_in_package) return old_index;
        const SheetRecord* record = records[old_index].get();
        const bool is_gone = record->entry == nullptr;
        if (is_gone) record = beside(record);
        if (record == nullptr) return next_visible(0);
        // A view that showed a hidden sheet all along is left alone.
        const bool must_change = is_gone || record->package_state == SheetState::Visible;
        const std::size_t position = positions_.at(record);
        const bool shows = !only_visible || record->entry->state == SheetState::Visible;
        return shows || !must_change ? position : next_visible(position);
    }

  private:
    static const SheetRecord* beside(const SheetRecord* gone) {
        for (const auto direction : {&SheetRecord::after, &SheetRecord::before}) {
            const SheetRecord* record = gone;
            while (record != nullptr && record->entry == nullptr)
                record = record->*direction;
            if (record != nullptr) return record;
        }
        return nullptr;
    }

    /// The first visible sheet at or after `from`, else the last one before; 0 without any.
    std::size_t next_visible(std::size_t from) const {
        const auto& entries = sheets_.entries();
        const auto shows = [&](std::size_t i) { return entries[i]->state == SheetState::Visible; };
        for (std::size_t i = from; i < entries.size(); ++i)
            if (shows(i)) return i;
        for (std::size_t i = std::min(from, entries.size()); i-- > 0;)
            if (shows(i)) return i;
        return 0;
    }

    const SheetList& sheets_;
    std::unordered_map<const SheetRecord*, std::size_t> positions_;
};

void write_position(pugi::xml_node view, const char* attribute, std::size_t position) {
    if (attribute_number(view, attribute).value_or(0) != position)
        set_attribute(view, attribute, std::to_string(position));
}

/// Custom views name the sheet that they show by its identifier, which is required.
void write_custom_views(pugi::xml_node root, const SheetList& sheets, const ViewMap& map) {
    std::unordered_map<std::uint32_t, std::size_t> removed; // old indexes by identifier
    for (const std::unique_ptr<SheetRecord>& record : sheets.records())
        if (record->is_in_package && record->entry == nullptr)
            removed.emplace(record->sheet_id, record->element);
    if (removed.empty()) return;
    each_child(child_element(root, "customWorkbookViews"), "customWorkbookView",
               [&](pugi::xml_node view) {
                   const auto id = attribute_number(view, "activeSheetId");
                   const auto found = id ? removed.find(*id) : removed.end();
                   if (found == removed.end()) return;
                   const std::size_t now = map.position(found->second, true);
                   const SheetRecord& record = sheets.record(*sheets.entries()[now]);
                   set_attribute(view, "activeSheetId", std::to_string(record.sheet_id));
               });
}

} // namespace

bool is_strict_book(pugi::xml_node root) {
    for (const pugi::xml_attribute attribute : root.attributes()) {
        const std::string_view name = attribute.name();
        const std::string_view prefix = name.starts_with("xmlns:") ? name.substr(6) : "";
        const std::string_view root_name = root.name();
        const std::size_t colon = root_name.find(':');
        const std::string_view root_prefix =
            colon == std::string_view::npos ? "" : root_name.substr(0, colon);
        if ((name == "xmlns" || !prefix.empty()) && prefix == root_prefix)
            return std::string_view(attribute.value()).starts_with(kStrictBase);
    }
    return false;
}

pugi::xml_node child_at_place(pugi::xml_node root, std::string_view name) {
    if (pugi::xml_node known = child_element(root, name)) return known;
    pugi::xml_node before, first;
    for (const pugi::xml_node child : root.children()) {
        if (child.type() != pugi::node_element) continue;
        if (!first) first = child;
        if (rank(local_name(child.name())) < rank(name)) before = child;
    }
    const std::string whole = with_prefix_of(root, name);
    if (before) return root.insert_child_after(whole.c_str(), before);
    if (first) return root.insert_child_before(whole.c_str(), first);
    return root.append_child(whole.c_str());
}

void write_sheets(pugi::xml_node root, const SheetList& sheets) {
    const std::vector<pugi::xml_node> elements = sheet_elements(root);
    const bool has_changed = sheets.has_changed();
    if (!has_changed && sheets.entries().empty()) return;
    pugi::xml_node list = child_at_place(root, "sheets");
    for (const std::unique_ptr<SheetEntry>& entry : sheets.entries()) {
        const SheetRecord& record = sheets.record(*entry);
        pugi::xml_node element;
        if (record.is_in_package && record.element < elements.size()) {
            element = elements[record.element];
            if (has_changed) list.append_move(element);
            write_sheet(element, record);
            continue;
        }
        element = list.append_child(with_prefix_of(list, "sheet").c_str());
        element.append_attribute("name");
        element.append_attribute("sheetId") = record.sheet_id;
        write_sheet(element, record);
        const std::string id_name = relationship_attribute(root, element);
        element.append_attribute(id_name.c_str()) = record.relationship_id.c_str();
    }
    for (const std::unique_ptr<SheetRecord>& record : sheets.records())
        if (record->is_in_package && record->entry == nullptr && record->element < elements.size())
            elements[record->element].parent().remove_child(elements[record->element]);
}

void write_views(pugi::xml_node root, const SheetList& sheets) {
    const ViewMap map(sheets);
    each_child(child_element(root, "bookViews"), "workbookView", [&](pugi::xml_node view) {
        const std::size_t active = attribute_number(view, "activeTab").value_or(0);
        const std::size_t first = attribute_number(view, "firstSheet").value_or(0);
        write_position(view, "activeTab", map.position(active, true));
        if (first > 0) write_position(view, "firstSheet", map.position(first, false));
    });
    write_custom_views(root, sheets, map);
}

void write_columns_in_names(pugi::xml_node root, const RenamedColumns& columns) {
    each_child(child_element(root, "definedNames"), "definedName", [&](pugi::xml_node element) {
        const auto formula = columns.edited(element.text().get());
        if (!formula) return;
        element.remove_children();
        element.append_child(pugi::node_pcdata).set_value(formula->c_str());
    });
}

void write_column_names(pugi::xml_node table, const std::map<std::size_t, std::string>& names) {
    std::size_t position = 0;
    each_child(child_element(table, "tableColumns"), "tableColumn", [&](pugi::xml_node column) {
        const auto found = names.find(position++);
        if (found != names.end()) set_attribute(column, "name", column_attribute(found->second));
    });
}

void write_date_system(pugi::xml_node root, bool is_1904) {
    const pugi::xml_node known = child_element(root, "workbookPr");
    if (attribute_is_true(known, "date1904", false) == is_1904) return;
    set_attribute(child_at_place(root, "workbookPr"), "date1904", is_1904 ? "1" : "0");
}

void write_recalculation(pugi::xml_node root) {
    set_attribute(child_at_place(root, "calcPr"), "fullCalcOnLoad", "1");
}

} // namespace workbook
