// SPDX-License-Identifier: Apache-2.0
//
// One flat list; nobody follows relationships further than one step, so cycles among them do no
// harm.
#include "workbook/opc/relationships.h"

#include "foundation/ascii_case.h"
#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/opc/part_name.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

std::string last_segment(std::string_view type) {
    const std::size_t slash = type.find_last_of('/');
    return std::string{slash == std::string_view::npos ? type : type.substr(slash + 1)};
}

} // namespace

std::vector<Relationship> read_relationships(ByteSource& part, std::string_view source) {
    const pugi::xml_document tree = read_tree(part);
    std::vector<Relationship> relationships;
    std::size_t target_bytes = 0;
    each_child(root_element(tree, "Relationships"), "Relationship", [&](pugi::xml_node element) {
        const std::string_view target = attribute_value(element, "Target").value_or("");
        const std::string mode =
            foundation::unicode::ascii_lower(attribute_value(element, "TargetMode").value_or(""));
        Relationship relationship;
        relationship.id = attribute_value(element, "Id").value_or("");
        relationship.type = last_segment(attribute_value(element, "Type").value_or(""));
        relationship.is_external = mode == "external";
        relationship.target =
            relationship.is_external ? std::string{target} : resolve_target(source, target);
        target_bytes += relationship.target.size();
        if (target_bytes > kMaxTargetBytes)
            throw Error::limit(part.part_name(), "more than " +
                                                     std::to_string(kMaxTargetBytes >> 20) +
                                                     " MiB of targets");
        relationships.push_back(std::move(relationship));
    });
    return relationships;
}

} // namespace workbook
