// SPDX-License-Identifier: Apache-2.0
//
// New names and identifiers, and the XML that sheets are made from.
#include "workbook/xlsx/structure/workbook_editor_state.h"

#include <algorithm>

#include "workbook/error.h"
#include "workbook/io/text_source.h"
#include "workbook/limits.h"
#include "workbook/opc/part_name.h"
#include "workbook/opc/part_reachability.h"
#include "workbook/xlsx/namespaces.h"
#include "workbook/xlsx/reading/workbook_locator.h"
#include "workbook/xlsx/structure/workbook_part_writer.h"
#include "workbook/xlsx/writing/blank_package.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

/// Applications take no larger identifiers, although the schema does.
constexpr std::uint32_t kLargestSheetId = 65'534;

std::string folder_of(std::string_view part) {
    const std::size_t slash = part.rfind('/');
    return std::string(part.substr(0, slash == std::string_view::npos ? 0 : slash + 1));
}

void replace_all(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

/// An empty sheet in the namespaces of a Strict book.
const std::string& blank_strict_worksheet() {
    static const std::string text = [] {
        std::string blank(blank_worksheet_part());
        replace_all(blank, kMainNamespace, kStrictMainNamespace);
        replace_all(blank, kRelationships, kStrictRelationships);
        return blank;
    }();
    return text;
}

} // namespace

WorkbookEditor::State::State(OpcPackage& of, WorkbookPart& model)
    : package(of),
      workbook(model),
      part(locate_workbook(of)),
      sheets(model),
      names(model),
      new_parts(of) {
    const pugi::xml_document tree = read_tree(*package.open_part(part));
    const pugi::xml_node root = root_element(tree, "workbook");
    is_strict = is_strict_book(root);
    std::size_t count = 0;
    each_child(child_element(root, "sheets"), "sheet", [&](pugi::xml_node element) {
        const std::uint32_t id = attribute_number(element, "sheetId").value_or(0);
        if (count < sheets.records().size()) {
            SheetRecord& record = *sheets.records()[count];
            record.relationship_id = attribute_value(element, "id").value_or("");
            record.sheet_id = id;
        }
        ++count;
        sheet_ids_.insert(id);
        last_sheet_id_ = std::max(last_sheet_id_, id);
    });
    if (count != model.sheets.size())
        throw Error::damaged(part, "it does not have the sheets that the book has");
    for (const Relationship& relationship : package.relationships(part))
        relationship_ids_.insert(relationship.id);
}

std::unique_ptr<SheetEntry> WorkbookEditor::State::make_entry(std::u16string_view name) const {
    auto entry = std::make_unique<SheetEntry>();
    entry->name = name;
    entry->kind = SheetKind::Worksheet;
    return entry;
}

std::uint32_t WorkbookEditor::State::new_sheet_id() {
    std::uint32_t id = last_sheet_id_ + 1;
    if (last_sheet_id_ >= kLargestSheetId)
        for (id = 1; sheet_ids_.contains(id);)
            ++id;
    else
        last_sheet_id_ = id;
    sheet_ids_.insert(id);
    return id;
}

std::string WorkbookEditor::State::new_relationship_id() {
    for (;;) {
        std::string id = "rId" + std::to_string(++last_relationship_);
        if (relationship_ids_.insert(id).second) return id;
    }
}

std::string WorkbookEditor::State::new_sheet_part() {
    for (const std::unique_ptr<SheetRecord>& record : sheets.records())
        if (!record->package_part.empty() && record->entry != nullptr &&
            record->entry->kind == SheetKind::Worksheet)
            return new_parts.fresh(folder_of(record->package_part) + "sheet1.xml");
    return new_parts.fresh(folder_of(part) + "worksheets/sheet1.xml");
}

TableNames& WorkbookEditor::State::table_names() {
    if (!table_names_) {
        std::vector<std::string> parts;
        const auto all = [](std::string_view, const Relationship&) { return true; };
        for (ReachedPart& reached : reachable_parts(package, all))
            if (reached.type == "table") parts.push_back(std::move(reached.part));
        table_names_.emplace(package, parts, workbook.defined_names);
    }
    return *table_names_;
}

std::string WorkbookEditor::State::need_part(std::string& known, std::string_view file_name,
                                             const char* type, const char* content_type) {
    for (AddedPart& other : added)
        other.is_needed = other.is_needed || other.part == known;
    if (!known.empty()) return known;
    std::string name = folder_of(part).append(file_name);
    if (package.has_part(name)) {
        const std::size_t dot = name.rfind('.');
        name = new_parts.fresh(name.substr(0, dot) + "1" + name.substr(dot));
    }
    added.push_back({name, new_relationship_id(), type_address(type), content_type});
    known = std::move(name);
    return known;
}

std::string WorkbookEditor::State::type_address(std::string_view type) const {
    std::string address = is_strict ? kStrictRelationships : kRelationships;
    return address.append("/").append(type);
}

std::shared_ptr<const SheetNames> WorkbookEditor::State::names_now() {
    if (names_now_ == nullptr) names_now_ = std::make_shared<SheetNames>(sheets, columns);
    return names_now_;
}

std::shared_ptr<const PartEdits> WorkbookEditor::State::edits_of(const SheetRecord& record) {
    const bool is_hidden_now = record.is_in_package && record.entry != nullptr &&
                               record.package_state == SheetState::Visible &&
                               record.entry->state != SheetState::Visible;
    if (record.copied_from == nullptr && !is_hidden_now && names_now()->are_unchanged()) return {};
    auto edits = edits_for(names_now(), record.copied_from == nullptr ? nullptr : &record);
    if (is_hidden_now) edits->clears_tab_selected = true;
    return edits;
}

std::unique_ptr<ByteSource> WorkbookEditor::State::open(const SheetRecord& record) {
    if (record.package_part.empty())
        return std::make_unique<TextSource>(record.part, is_strict ? blank_strict_worksheet()
                                                                   : blank_worksheet_part());
    std::unique_ptr<ByteSource> source = package.open_part(record.package_part);
    std::shared_ptr<const PartEdits> edits = edits_of(record);
    if (edits == nullptr) return source;
    return std::make_unique<ReferenceRewriter>(std::move(source), std::move(edits));
}

} // namespace workbook
