// SPDX-License-Identifier: Apache-2.0
//
// cellXfs and numFmts. A code of the file's own counts before the built-in of the same identifier.
#include "workbook/xlsx/reading/styles.h"

#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/number_format/date_format.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

Styles::Styles(ByteSource& part) {
    const pugi::xml_document tree = read_tree(part);
    const pugi::xml_node root = root_element(tree, "styleSheet");
    each_child(child_element(root, "numFmts"), "numFmt", [&](pugi::xml_node element) {
        const auto identifier = attribute_number(element, "numFmtId");
        const auto code = attribute_value(element, "formatCode");
        if (identifier && code) own_formats_[*identifier] = is_date_format(*code);
    });
    each_child(child_element(root, "cellXfs"), "xf", [&](pugi::xml_node element) {
        if (formats_.size() == kMaxCellFormats)
            throw Error::limit(part.part_name(),
                               "more than " + std::to_string(kMaxCellFormats) + " cell formats");
        // applyNumberFormat is left aside: applications show the cell's own number format anyway.
        const std::size_t index = add_format();
        set_num_format(index, attribute_number(element, "numFmtId").value_or(0));
        formats_[index].locked =
            attribute_is_true(child_element(element, "protection"), "locked", true);
    });
}

std::size_t Styles::add_format() {
    formats_.emplace_back();
    is_date_.push_back(shows_date(0));
    return formats_.size() - 1;
}

void Styles::set_num_format(std::size_t index, std::uint32_t identifier) {
    formats_[index].num_format = identifier;
    is_date_[index] = shows_date(identifier);
}

bool Styles::shows_date(std::uint32_t identifier) const {
    const auto own = own_formats_.find(identifier);
    return own == own_formats_.end() ? is_builtin_date_format(identifier) : own->second;
}

} // namespace workbook
