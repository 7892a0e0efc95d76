// SPDX-License-Identifier: Apache-2.0
//
// A tree that was not changed gives no part to write.
#include "workbook/opc/edited_part.h"

#include "workbook/io/text_source.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

PartChange text_change(std::string part, std::string text) {
    const std::uint64_t bytes = text.size();
    return {std::move(part), [text = std::move(text)](ByteSink& out) { out.append(text); }, bytes};
}

} // namespace

EditedPart::EditedPart(OpcPackage& package, std::string part, std::string_view blank)
    : part_(std::move(part)) {
    if (package.has_part(part_)) {
        tree_ = read_editable_tree(*package.open_part(part_));
    } else {
        TextSource source(part_, blank);
        tree_ = read_editable_tree(source);
    }
    original_ = tree_text(tree_);
}

pugi::xml_node EditedPart::append(std::string_view local) {
    const std::string_view root_name = root().name();
    std::string name(root_name.substr(0, root_name.size() - local_name(root().name()).size()));
    name += local;
    return root().append_child(name.c_str());
}

std::string EditedPart::text() const {
    return tree_text(tree_);
}

void EditedPart::deliver(PackageChanges& changes) {
    std::string text = tree_text(tree_);
    if (text != original_) changes.written.push_back(text_change(part_, std::move(text)));
}

void EditedPart::deliver_as(std::string part, PackageChanges& changes) {
    changes.written.push_back(text_change(std::move(part), tree_text(tree_)));
}

void add_relationship(EditedPart& relationships, const std::string& id, const std::string& type,
                      const std::string& target) {
    pugi::xml_node element = relationships.append("Relationship");
    element.append_attribute("Id") = id.c_str();
    element.append_attribute("Type") = type.c_str();
    element.append_attribute("Target") = target.c_str();
}

} // namespace workbook
