// SPDX-License-Identifier: Apache-2.0
//
// Parts without references are copied as they are; tables and drawings with slicers change as
// trees, everything else while it is streamed.
#include "workbook/xlsx/structure/sheet_copy_parts.h"

#include <string>
#include <vector>

#include "foundation/ascii_case.h"
#include "workbook/io/text_source.h"
#include "workbook/opc/edited_part.h"
#include "workbook/opc/new_part_names.h"
#include "workbook/opc/part_name.h"
#include "workbook/xlsx/structure/workbook_part_writer.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

void set_existing(pugi::xml_node element, std::string_view name, const char* value) {
    for (pugi::xml_attribute attribute : element.attributes())
        if (local_name(attribute.name()) == name) attribute = value;
}

void remove_attribute(pugi::xml_node element, std::string_view name) {
    for (const pugi::xml_attribute attribute : element.attributes())
        if (local_name(attribute.name()) == name) {
            element.remove_attribute(attribute);
            return;
        }
}

/// A name and an identifier of its own; a map of XML leads to one table only.
void edit_table(pugi::xml_node table, const CopiedTable& copy) {
    set_existing(table, "id", std::to_string(copy.id).c_str());
    set_existing(table, "name", copy.name.c_str());
    set_existing(table, "displayName", copy.name.c_str());
    if (attribute_value(table, "tableType") != "xml") return;
    remove_attribute(table, "tableType");
    each_child(child_element(table, "tableColumns"), "tableColumn", [](pugi::xml_node column) {
        if (const pugi::xml_node map = child_element(column, "xmlColumnPr"))
            map.parent().remove_child(map);
        remove_attribute(column, "uniqueName");
    });
}

/// Whether an element of this anchor shows a slicer or a timeline.
bool shows_slicer(pugi::xml_node anchor) {
    return bool(anchor.find_node([](pugi::xml_node node) {
        const std::string_view name = local_name(node.name());
        return name == "slicer" || name == "timeslicer";
    }));
}

void remove_slicers(pugi::xml_node drawing) {
    std::vector<pugi::xml_node> gone;
    for (const pugi::xml_node anchor : drawing.children())
        if (shows_slicer(anchor)) gone.push_back(anchor);
    for (const pugi::xml_node anchor : gone)
        drawing.remove_child(anchor);
}

/// The part that a relationship element of `source` leads to; empty for an external one.
std::string target_of(pugi::xml_node relationship, std::string_view source) {
    const std::string mode =
        foundation::unicode::ascii_lower(attribute_value(relationship, "TargetMode").value_or(""));
    if (mode == "external") return {};
    return resolve_target(source, attribute_value(relationship, "Target").value_or(""));
}

std::string_view type_of(pugi::xml_node relationship) {
    const std::string_view type = attribute_value(relationship, "Type").value_or("");
    return type.substr(type.find_last_of('/') + 1);
}

/// Relationships keep their identifiers, by which the XML refers to them.
void deliver_relationships(OpcPackage& package, const SheetCopyPlan& plan, const CopiedPart& part,
                           const PartEdits& edits, PackageChanges& changes) {
    const std::string name = relationships_part_name(part.source);
    if (!package.has_part(name)) return;
    EditedPart relationships(package, name, kBlankRelationships);
    std::vector<pugi::xml_node> gone;
    each_child(relationships.root(), "Relationship", [&](pugi::xml_node element) {
        if (copy_rule(type_of(element)) == CopyRule::Drop) gone.push_back(element);
        const auto copy = plan.copy_of.find(target_of(element, part.source));
        const std::string_view target = attribute_value(element, "Target").value_or("");
        if (copy != plan.copy_of.end())
            set_existing(element, "Target", absolute_target(copy->second).c_str());
        else if (const auto link = edited_value(edits, PlaceHolds::Fragment, target))
            set_existing(element, "Target", link->c_str());
    });
    for (const pugi::xml_node element : gone)
        element.parent().remove_child(element);
    relationships.deliver_as(relationships_part_name(part.part), changes);
}

/// The text of a part that changes as a tree; nothing for any other.
std::optional<std::string> edited_text(OpcPackage& package, const SheetCopyPlan& plan,
                                       const CopiedPart& part, const RenamedColumns& columns) {
    const auto table = plan.tables.find(part.source);
    if (table != plan.tables.end()) {
        EditedPart tree(package, part.source, {});
        edit_table(tree.root(), table->second);
        const auto names = columns.by_part().find(part.part);
        if (names != columns.by_part().end()) write_column_names(tree.root(), names->second);
        return tree.text();
    }
    if (part.type == "drawing" && plan.drops_slicers) {
        EditedPart tree(package, part.source, {});
        remove_slicers(tree.root());
        return tree.text();
    }
    return {};
}

void deliver_part(OpcPackage& package, const SheetCopyPlan& plan, const CopiedPart& part,
                  const RenamedColumns& columns, const std::shared_ptr<const PartEdits>& edits,
                  PackageChanges& changes) {
    if (std::optional<std::string> text = edited_text(package, plan, part, columns)) {
        const std::uint64_t bytes = text->size();
        changes.written.push_back(
            {part.part,
             [name = part.part, text = std::move(*text), edits](ByteSink& out) {
                 ReferenceRewriter rewriter(std::make_unique<TextSource>(name, text), edits);
                 copy_bytes(rewriter, out);
             },
             bytes});
        return;
    }
    const bool holds_references = may_hold_references(part.type);
    changes.written.push_back(
        {part.part, [&package, source = part.source, edits, holds_references](ByteSink& out) {
             std::unique_ptr<ByteSource> bytes = package.open_part(source);
             if (holds_references)
                 bytes = std::make_unique<ReferenceRewriter>(std::move(bytes), edits);
             copy_bytes(*bytes, out);
         }});
}

} // namespace

void copy_bytes(ByteSource& source, ByteSink& out) {
    std::string block(64u << 10, '\0');
    while (const std::size_t count = source.read(block.data(), block.size()))
        out.append(block.data(), count);
}

void deliver_copied_parts(OpcPackage& package, const SheetCopyPlan& plan,
                          const RenamedColumns& columns,
                          const std::shared_ptr<const PartEdits>& edits, PackageChanges& changes) {
    for (const CopiedPart& part : plan.parts) {
        if (&part != &plan.parts.front())
            deliver_part(package, plan, part, columns, edits, changes);
        deliver_relationships(package, plan, part, *edits, changes);
    }
}

} // namespace workbook
