// SPDX-License-Identifier: Apache-2.0
//
// Defaults and overrides, names and extensions without regard to case.
#include "workbook/opc/content_types.h"

#include "foundation/ascii_case.h"
#include "workbook/opc/part_name.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

ContentTypes::ContentTypes(ByteSource& part) {
    const pugi::xml_document tree = read_tree(part);
    const pugi::xml_node types = root_element(tree, "Types");
    const auto type_of = [](pugi::xml_node element) {
        return foundation::unicode::ascii_lower(
            attribute_value(element, "ContentType").value_or(""));
    };
    each_child(types, "Override", [&](pugi::xml_node element) {
        const std::string_view name = attribute_value(element, "PartName").value_or("");
        overrides_.emplace(canonical_part_name(name), type_of(element));
    });
    each_child(types, "Default", [&](pugi::xml_node element) {
        const std::string_view extension = attribute_value(element, "Extension").value_or("");
        defaults_.emplace(foundation::unicode::ascii_lower(extension), type_of(element));
    });
}

std::string_view ContentTypes::of(std::string_view part_name) const {
    const std::string name = canonical_part_name(part_name);
    if (const auto found = overrides_.find(name); found != overrides_.end()) return found->second;
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos) return {};
    const auto found = defaults_.find(name.substr(dot + 1));
    return found == defaults_.end() ? std::string_view{} : std::string_view{found->second};
}

} // namespace workbook
