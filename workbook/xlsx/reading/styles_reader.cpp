// SPDX-License-Identifier: Apache-2.0
//
// The cellXfs and numFmts elements.
#include "workbook/xlsx/reading/styles_reader.h"

#include <string>

#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

CellFormats read_styles(ByteSource& part) {
    CellFormats formats;
    const pugi::xml_document tree = read_tree(part);
    const pugi::xml_node root = root_element(tree, "styleSheet");
    each_child(child_element(root, "numFmts"), "numFmt", [&](pugi::xml_node element) {
        const auto identifier = attribute_number(element, "numFmtId");
        const auto code = attribute_value(element, "formatCode");
        if (identifier && code) formats.define_number_format(*identifier, *code);
    });
    each_child(child_element(root, "cellXfs"), "xf", [&](pugi::xml_node element) {
        if (formats.size() == kMaxCellFormats)
            throw Error::limit(part.part_name(),
                               "more than " + std::to_string(kMaxCellFormats) + " cell formats");
        // applyNumberFormat is left aside: applications show the cell's own number format anyway.
        formats.add({attribute_number(element, "numFmtId").value_or(0),
                     attribute_is_true(child_element(element, "protection"), "locked", true)});
    });
    return formats;
}

} // namespace workbook
