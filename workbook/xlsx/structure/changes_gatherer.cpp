// SPDX-License-Identifier: Apache-2.0
//
// Gathers what differs from the package. Nothing of the editor changes by that, so it can be done
// again after a save that failed.
#include <algorithm>
#include <unordered_map>

#include "foundation/ascii_case.h"
#include "workbook/io/text_source.h"
#include "workbook/opc/content_type_edits.h"
#include "workbook/opc/edited_part.h"
#include "workbook/opc/new_part_names.h"
#include "workbook/opc/part_name.h"
#include "workbook/opc/part_reachability.h"
#include "workbook/xlsx/structure/sheet_copy_parts.h"
#include "workbook/xlsx/structure/workbook_editor_state.h"
#include "workbook/xlsx/structure/workbook_part_writer.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

constexpr std::string_view kWorksheetType =
    "application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml";

constexpr std::string_view kRelationshipsType =
    "application/vnd.openxmlformats-package.relationships+xml";

/// ECMA-376 part 1, 12.3.23; MS-OFFMACRO2 for those with macros.
std::string_view content_type_of(DocumentType type) {
    switch (type) {
    case DocumentType::MacroWorkbook:
        return "application/vnd.ms-excel.sheet.macroEnabled.main+xml";
    case DocumentType::Template:
        return "application/vnd.openxmlformats-officedocument.spreadsheetml.template.main+xml";
    case DocumentType::MacroTemplate:
        return "application/vnd.ms-excel.template.macroEnabled.main+xml";
    case DocumentType::Workbook:
        break;
    }
    return "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml";
}

std::string_view last_segment(std::string_view type) {
    return type.substr(type.find_last_of('/') + 1);
}

/// Parts that name cells by their sheet, and are made again by applications.
bool lists_cells(std::string_view type, bool chain_only) {
    return type == "calcChain" || (!chain_only && type == "volatileDependencies");
}

} // namespace

/// One gathering of changes.
class WorkbookEditor::Gatherer {
  public:
    explicit Gatherer(State& state) : state_(state) {
        for (const std::unique_ptr<SheetRecord>& record : state.sheets.records()) {
            if (!record->is_in_package || record->entry != nullptr) continue;
            has_removed_ = true;
            removed_.insert(record->relationship_id);
            removed_ids_.insert(record->sheet_id);
            if (!record->part.empty()) removed_parts_.insert(record->part);
        }
        for (const std::unique_ptr<SheetEntry>& entry : state.sheets.entries()) {
            const SheetRecord& record = state.sheets.record(*entry);
            removed_.erase(record.relationship_id);
            has_copies_ = has_copies_ || record.copied_from != nullptr;
        }
    }

    PackageChanges run() {
        gather_workbook();
        gather_relationships();
        gather_dropped();
        gather_tables();
        gather_references();
        gather_filter_caches();
        gather_new_sheets();
        gather_content_types();
        gather_properties();
        return std::move(changes_);
    }

  private:
    /// The chain has every cell with a formula, those of sheets that came or went included.
    bool drops_chain() const {
        return state_.drops_calculation_chain || has_removed_ || has_copies_;
    }

    bool follows(std::string_view source, const Relationship& relationship) const {
        if (source != state_.part) return true;
        if (drops_chain() && lists_cells(relationship.type, !has_removed_)) return false;
        return !removed_.contains(relationship.id) && !removed_parts_.contains(relationship.target);
    }

    void gather_workbook() {
        EditedPart part(state_.package, state_.part, {});
        const pugi::xml_node root = part.root();
        write_views(root, state_.sheets);
        write_sheets(root, state_.sheets);
        state_.names.write(root);
        write_columns_in_names(root, state_.columns);
        write_date_system(root, state_.workbook.date_1904);
        if (state_.recalculates) write_recalculation(root);
        part.deliver(changes_);
    }

    /// As the type of a sheet is written where the workbook leads to it, by the sheet's part.
    using Types = std::unordered_map<std::string, std::string>;

    void gather_relationships() {
        const bool has_new_sheets =
            std::any_of(state_.sheets.records().begin(), state_.sheets.records().end(),
                        [](const auto& record) { return !record->is_in_package; });
        if (!has_removed_ && !drops_chain() && !has_new_sheets && state_.added.empty()) return;
        EditedPart part(state_.package, relationships_part_name(state_.part), kBlankRelationships);
        const Types types = drop_relationships(part);
        for (const std::unique_ptr<SheetEntry>& entry : state_.sheets.entries()) {
            const SheetRecord& record = state_.sheets.record(*entry);
            if (record.is_in_package) continue;
            const auto type = types.find(record.package_part);
            add_relationship(part, record.relationship_id,
                             type == types.end() ? state_.type_address("worksheet") : type->second,
                             target_from_workbook(record.part));
        }
        for (const State::AddedPart& added : state_.added)
            if (added.is_needed)
                add_relationship(part, added.relationship_id, added.type,
                                 target_from_workbook(added.part));
        part.deliver(changes_);
    }

    Types drop_relationships(EditedPart& part) const {
        Types types;
        std::vector<pugi::xml_node> gone;
        each_child(part.root(), "Relationship", [&](pugi::xml_node element) {
            const std::string_view type = attribute_value(element, "Type").value_or("");
            Relationship relationship;
            relationship.id = attribute_value(element, "Id").value_or("");
            relationship.type = last_segment(type);
            relationship.target =
                resolve_target(state_.part, attribute_value(element, "Target").value_or(""));
            relationship.is_external =
                foundation::unicode::ascii_lower(
                    attribute_value(element, "TargetMode").value_or("")) == "external";
            if (relationship.is_external) return;
            types.emplace(relationship.target, type);
            if (!follows(state_.part, relationship)) gone.push_back(element);
        });
        for (const pugi::xml_node element : gone)
            element.parent().remove_child(element);
        return types;
    }

    /// Relative where the part is below the workbook's folder, as most producers have it.
    std::string target_from_workbook(const std::string& part) const {
        const std::size_t slash = state_.part.rfind('/');
        const std::string folder =
            slash == std::string::npos ? std::string{} : state_.part.substr(0, slash + 1);
        const std::string absolute = absolute_target(part);
        return part.starts_with(folder) && absolute.size() == part.size() + 1
                   ? new_part_spelling(part.substr(folder.size()))
                   : absolute;
    }

    /// Parts that nothing leads to any more, and that something led to before.
    void gather_dropped() {
        if (!drops_chain()) return;
        const auto all = [](std::string_view, const Relationship&) { return true; };
        const auto now = [this](std::string_view source, const Relationship& relationship) {
            return follows(source, relationship);
        };
        const std::unordered_set<std::string> left =
            names_of(reachable_parts(state_.package, now, shared_parts()));
        for (const ReachedPart& before : reachable_parts(state_.package, all)) {
            if (left.contains(before.part)) continue;
            changes_.dropped.insert(before.part);
            std::string relationships = relationships_part_name(before.part);
            if (state_.package.has_part(relationships))
                changes_.dropped.insert(std::move(relationships));
        }
    }

    /// What copies use together with an original, which may be gone.
    std::vector<std::string> shared_parts() const {
        std::vector<std::string> shared;
        for (const std::unique_ptr<SheetRecord>& record : state_.sheets.records())
            if (record->entry != nullptr)
                shared.insert(shared.end(), record->copy.shared.begin(), record->copy.shared.end());
        return shared;
    }

    /// Tables of the package with renamed columns.
    void gather_tables() {
        for (const auto& [part, names] : state_.columns.by_part()) {
            if (!state_.package.has_part(part)) continue; // a copy's
            EditedPart table(state_.package, part, {});
            write_column_names(table.root(), names);
            changes_.written.push_back(
                {part, [part = part, text = table.text(),
                        edits = edits_for(state_.names_now(), nullptr)](ByteSink& out) {
                     ReferenceRewriter rewriter(std::make_unique<TextSource>(part, text), edits);
                     copy_bytes(rewriter, out);
                 }});
        }
    }

    void gather_references() {
        const bool names_changed = !state_.names_now()->are_unchanged();
        std::unordered_set<std::string> seen{state_.part};
        for (const auto& [part, names] : state_.columns.by_part())
            seen.insert(part); // see above
        for (const std::unique_ptr<SheetEntry>& entry : state_.sheets.entries()) {
            const SheetRecord& record = state_.sheets.record(*entry);
            if (!record.is_in_package || record.part.empty()) continue;
            seen.insert(record.part);
            if (auto edits = state_.edits_of(record)) enter_if_changed(record.part, edits);
            if (names_changed) check_links(record.part);
        }
        if (!names_changed) return;
        const auto edits = edits_for(state_.names_now(), nullptr);
        const auto now = [this](std::string_view source, const Relationship& relationship) {
            return follows(source, relationship);
        };
        for (const ReachedPart& reached : reachable_parts(state_.package, now, shared_parts())) {
            if (!may_hold_references(reached.type) || !seen.insert(reached.part).second) continue;
            enter_if_changed(reached.part, edits);
            check_links(reached.part);
        }
    }

    /// Caches of slicers and timelines list their pivot tables with the sheets that have these.
    void gather_filter_caches() {
        if (!has_removed_) return;
        std::unordered_set<std::string> seen;
        for (const Relationship& relationship : state_.package.relationships(state_.part)) {
            const bool is_cache =
                relationship.type == "slicerCache" || relationship.type == "timelineCache";
            if (!is_cache || relationship.is_external ||
                !state_.package.has_part(relationship.target) ||
                !seen.insert(relationship.target).second)
                continue;
            EditedPart part(state_.package, relationship.target, {});
            drop_pivot_tables(part.root());
            part.deliver(changes_);
        }
    }

    void drop_pivot_tables(pugi::xml_node cache) const {
        const pugi::xml_node list = child_element(cache, "pivotTables");
        std::vector<pugi::xml_node> gone;
        std::size_t count = 0;
        each_child(list, "pivotTable", [&](pugi::xml_node table) {
            ++count;
            if (removed_ids_.contains(attribute_number(table, "tabId").value_or(0)))
                gone.push_back(table);
        });
        for (const pugi::xml_node table : gone)
            table.parent().remove_child(table);
        if (count > 0 && gone.size() == count) list.parent().remove_child(list);
    }

    void check_links(const std::string& part) {
        const std::string relationships = relationships_part_name(part);
        if (state_.package.has_part(relationships))
            enter_if_changed(relationships, edits_for(state_.names_now(), nullptr));
    }

    void enter_if_changed(const std::string& part, std::shared_ptr<const PartEdits> edits) {
        if (!would_change(state_.package.open_part(part), edits)) return;
        OpcPackage& package = state_.package;
        changes_.written.push_back(
            {part, [&package, part, edits = std::move(edits)](ByteSink& out) {
                 ReferenceRewriter rewriter(package.open_part(part), edits);
                 copy_bytes(rewriter, out);
             }});
    }

    void gather_new_sheets() {
        for (const std::unique_ptr<SheetEntry>& entry : state_.sheets.entries()) {
            const SheetRecord& record = state_.sheets.record(*entry);
            if (record.is_in_package) continue;
            changes_.written.push_back({record.part, [state = &state_, &record](ByteSink& out) {
                                            copy_bytes(*state->open(record), out);
                                        }});
            if (!record.package_part.empty())
                deliver_copied_parts(state_.package, record.copy, state_.columns,
                                     state_.edits_of(record), changes_);
        }
    }

    void gather_content_types() {
        ContentTypeEdits types(state_.package);
        if (state_.document_type) types.set(state_.part, content_type_of(*state_.document_type));
        for (const std::unique_ptr<SheetEntry>& entry : state_.sheets.entries()) {
            const SheetRecord& record = state_.sheets.record(*entry);
            if (record.is_in_package) continue;
            if (record.package_part.empty()) types.set(record.part, kWorksheetType);
            for (const CopiedPart& copied : record.copy.parts)
                types.set_like(copied.part, copied.source);
        }
        for (const State::AddedPart& added : state_.added)
            if (added.is_needed) types.set(added.part, added.content_type);
        // A package may state the type of each of its relationship parts for itself.
        for (const PartChange& change : changes_.written)
            if (change.part.ends_with(".rels")) types.set(change.part, kRelationshipsType);
        types.drop(changes_.dropped);
        types.deliver(changes_);
    }

    /// Titles of parts are a copy of the sheets' and ranges' names that no reader needs.
    void gather_properties() {
        if (!state_.sheets.has_changed()) return;
        for (const Relationship& relationship : state_.package.relationships("")) {
            const bool has_titles = relationship.type == "extended-properties" ||
                                    relationship.type == "extendedProperties";
            if (!has_titles || relationship.is_external ||
                !state_.package.has_part(relationship.target))
                continue;
            EditedPart part(state_.package, relationship.target, {});
            for (const char* name : {"HeadingPairs", "TitlesOfParts"})
                if (const pugi::xml_node element = child_element(part.root(), name))
                    element.parent().remove_child(element);
            part.deliver(changes_);
            return;
        }
    }

    State& state_;
    PackageChanges changes_;
    bool has_removed_ = false, has_copies_ = false;
    std::unordered_set<std::string> removed_; ///< relationships of removed sheets
    std::unordered_set<std::string> removed_parts_;
    std::unordered_set<std::uint32_t> removed_ids_; ///< `sheetId`s of removed sheets
};

PackageChanges WorkbookEditor::changes() {
    return Gatherer(*state_).run();
}

} // namespace workbook
