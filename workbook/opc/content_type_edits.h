// SPDX-License-Identifier: Apache-2.0
//
// Changes to the content types part (ECMA-376 part 2, 10.1.2). Only sources include this header: it
// brings pugixml.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "workbook/opc/edited_part.h"

namespace workbook {

class ContentTypeEdits {
  public:
    /// Throws `Error`.
    explicit ContentTypeEdits(OpcPackage& package);

    /// States the type of a part for itself; nothing changes when its type is this one already.
    void set(const std::string& part, std::string_view type);
    /// Gives `part` the type that is stated for `like` itself; nothing when there is none.
    void set_like(const std::string& part, const std::string& like);
    void drop(const std::unordered_set<std::string>& parts);

    void deliver(PackageChanges& changes) { part_.deliver(changes); }

  private:
    void put(const std::string& part, const std::string& type);

    const ContentTypes& types_;
    EditedPart part_;
    std::unordered_map<std::string, pugi::xml_node> overrides_; ///< by canonical name
};

} // namespace workbook
