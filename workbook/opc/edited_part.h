// SPDX-License-Identifier: Apache-2.0
//
// A small part that is changed as a tree. Only sources include this header: it brings pugixml.
#pragma once

#include <string>
#include <string_view>

#include <pugixml.hpp>

#include "workbook/opc/opc_package.h"
#include "workbook/opc/package_writer.h"

namespace workbook {

class EditedPart {
  public:
    /// Reads the part; begins with `blank` when the package does not have it. Throws `Error`.
    EditedPart(OpcPackage& package, std::string part, std::string_view blank);

    pugi::xml_node root() const { return tree_.document_element(); }
    /// As it is now.
    std::string text() const;

    /// A child of the root with the root's namespace prefix.
    pugi::xml_node append(std::string_view local_name);

    /// Enters the part into `changes` when its text is another than at the beginning.
    void deliver(PackageChanges& changes);
    /// Enters it in any case, as a new part of that name.
    void deliver_as(std::string part, PackageChanges& changes);

  private:
    std::string part_;
    pugi::xml_document tree_;
    std::string original_;
};

inline constexpr std::string_view kBlankRelationships =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
    R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships"/>)";
/// Adds a relationship to a relationships part; `type` is the whole address.
void add_relationship(EditedPart& relationships, const std::string& id, const std::string& type,
                      const std::string& target);

} // namespace workbook
