// SPDX-License-Identifier: Apache-2.0
//
// Overrides and defaults in a tree of the content types part.
#include "workbook/opc/content_type_edits.h"

#include "foundation/ascii_case.h"
#include "workbook/opc/new_part_names.h"
#include "workbook/opc/part_name.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

constexpr std::string_view kBlank =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
    R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
    R"(<Default Extension="rels" )"
    R"(ContentType="application/vnd.openxmlformats-package.relationships+xml"/>)"
    R"(<Default Extension="xml" ContentType="application/xml"/></Types>)";

/// A new part gets the name as written here, and readers look for it letter for letter.
std::string name_in(const OpcPackage& package) {
    const std::string name = "[Content_Types].xml";
    return package.has_part(name) ? canonical_part_name(name) : name;
}

} // namespace

ContentTypeEdits::ContentTypeEdits(OpcPackage& package)
    : types_(package.content_types()), part_(package, name_in(package), kBlank) {
    each_child(part_.root(), "Override", [&](pugi::xml_node element) {
        const std::string_view name = attribute_value(element, "PartName").value_or("");
        overrides_.emplace(canonical_part_name(name), element);
    });
}

void ContentTypeEdits::set(const std::string& part, std::string_view type) {
    if (types_.of(part) != foundation::unicode::ascii_lower(type)) put(part, std::string{type});
}

void ContentTypeEdits::set_like(const std::string& part, const std::string& like) {
    const auto found = overrides_.find(like);
    if (found == overrides_.end()) return;
    put(part, std::string(attribute_value(found->second, "ContentType").value_or("")));
}

void ContentTypeEdits::put(const std::string& part, const std::string& type) {
    pugi::xml_node& element = overrides_[part];
    if (!element) {
        element = part_.append("Override");
        element.append_attribute("PartName") = absolute_target(part).c_str();
        element.append_attribute("ContentType");
    }
    for (pugi::xml_attribute attribute : element.attributes())
        if (local_name(attribute.name()) == "ContentType") attribute = type.c_str();
}

void ContentTypeEdits::drop(const std::unordered_set<std::string>& parts) {
    for (const std::string& part : parts) {
        const auto found = overrides_.find(part);
        if (found == overrides_.end()) continue;
        found->second.parent().remove_child(found->second);
        overrides_.erase(found);
    }
}

} // namespace workbook
