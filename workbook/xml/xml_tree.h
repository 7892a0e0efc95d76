// SPDX-License-Identifier: Apache-2.0
//
// Small parts as trees. Names are compared without their namespace prefix, which every producer
// chooses as it likes. Only sources include this header: it brings pugixml.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <pugixml.hpp>

#include "workbook/io/byte_source.h"

namespace workbook {

/// The whole part as a tree, in any encoding that its BOM or declaration states. Throws `Error` for
/// a part that is larger than `kMaxTreePartBytes` or not well-formed.
pugi::xml_document read_tree(ByteSource& part);

/// The same for a part that is going to be changed: white space, comments, instructions and the
/// declaration, which becomes one of UTF-8, are nodes of the tree.
pugi::xml_document read_editable_tree(ByteSource& part);

/// The part's text in UTF-8, without white space that the tree does not have.
std::string tree_text(const pugi::xml_document& tree);

/// `name` without its prefix.
std::string_view local_name(const char* name);

/// The root element when its local name is `name`; else a null node.
pugi::xml_node root_element(const pugi::xml_document& tree, std::string_view name);

/// The first child element of that local name; null when there is none.
pugi::xml_node child_element(pugi::xml_node parent, std::string_view name);

/// The value of the attribute of that local name; nothing when it is absent.
std::optional<std::string_view> attribute_value(pugi::xml_node element, std::string_view name);

/// ST_OnOff and xsd:boolean: "1", "true" and "on" in any case.
bool attribute_is_true(pugi::xml_node element, std::string_view name, bool absent);

/// A whole number without sign; nothing when the attribute is absent or anything else.
std::optional<std::uint32_t> attribute_number(pugi::xml_node element, std::string_view name);

/// The children that count in place of an mc:AlternateContent element (ECMA-376 part 3, 9.3): those
/// of its Fallback, since no Choice's namespace is known here, or of its first Choice without one.
pugi::xml_node chosen_alternative(pugi::xml_node alternate_content);

/// Calls `visit(element)` for every child element of that local name, looking into alternate
/// content.
template <class Visit>
void each_child(pugi::xml_node parent, std::string_view name, const Visit& visit) {
    for (const pugi::xml_node child : parent.children()) {
        const std::string_view local = local_name(child.name());
        if (local == name) visit(child);
        if (local == "AlternateContent")
            for (const pugi::xml_node inner : chosen_alternative(child).children())
                if (local_name(inner.name()) == name) visit(inner);
    }
}

} // namespace workbook
