// SPDX-License-Identifier: Apache-2.0
//
// Adds formats to a tree of the styles part, which keeps all else that it has.
#include "workbook/xlsx/writing/styles_writer.h"

#include <algorithm>
#include <string_view>

#include "workbook/error.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

/// What follows cellXfs in a style sheet (ECMA-376 part 1, 18.8.39).
constexpr std::string_view kAfterCellFormats[] = {"cellStyles", "dxfs",   "tableStyles",
                                                  "colors",     "extLst", "AlternateContent"};

/// The name with the namespace prefix of `element`.
std::string prefixed(pugi::xml_node element, std::string_view name) {
    const std::string_view whole{element.name()};
    std::string result{whole.substr(0, whole.size() - local_name(element.name()).size())};
    return result.append(name);
}

pugi::xml_node make_cell_formats(pugi::xml_node root) {
    const std::string name = prefixed(root, "cellXfs");
    for (const pugi::xml_node child : root.children())
        if (std::find(std::begin(kAfterCellFormats), std::end(kAfterCellFormats),
                      local_name(child.name())) != std::end(kAfterCellFormats))
            return root.insert_child_before(name.c_str(), child);
    return root.append_child(name.c_str());
}

/// A new element after the last one that `parent` has.
pugi::xml_node append_element(pugi::xml_node parent, const std::string& name) {
    for (pugi::xml_node last = parent.last_child(); last; last = last.previous_sibling())
        if (last.type() == pugi::node_element) return parent.insert_child_after(name.c_str(), last);
    return parent.append_child(name.c_str());
}

void set_attribute(pugi::xml_node element, const char* name, std::size_t value) {
    pugi::xml_attribute attribute = element.attribute(name);
    if (!attribute) attribute = element.append_attribute(name);
    attribute.set_value(static_cast<unsigned long long>(value));
}

} // namespace

std::string append_cell_formats(ByteSource& part, const CellFormats& formats, std::size_t known,
                                std::size_t end) {
    const pugi::xml_document tree = read_editable_tree(part);
    const pugi::xml_node root = root_element(tree, "styleSheet");
    if (!root) throw Error::damaged(part.part_name(), "it is not a style sheet");
    pugi::xml_node list = child_element(root, "cellXfs");
    if (!list) list = make_cell_formats(root);
    for (std::size_t i = known; i < end; ++i) {
        pugi::xml_node format = append_element(list, prefixed(root, "xf"));
        set_attribute(format, "numFmtId", formats[i].num_format);
        for (const char* first_of : {"fontId", "fillId", "borderId", "xfId"})
            set_attribute(format, first_of, 0);
        set_attribute(format, "applyNumberFormat", 1);
    }
    std::size_t count = 0;
    each_child(list, "xf", [&count](pugi::xml_node) { ++count; });
    set_attribute(list, "count", count);
    return tree_text(tree);
}

} // namespace workbook
