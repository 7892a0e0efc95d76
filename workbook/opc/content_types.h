// SPDX-License-Identifier: Apache-2.0
//
// The content types part (ECMA-376 part 2, 10.1.2): which kind of content each part holds.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "workbook/io/byte_source.h"

namespace workbook {

class ContentTypes {
  public:
    /// Without any type: of a package that has no such part.
    ContentTypes() = default;

    /// Throws `Error`.
    explicit ContentTypes(ByteSource& part);

    /// The type of a part in lower case; empty when none is stated.
    std::string_view of(std::string_view part_name) const;

    /// A part of a type that `accepts(type)` is true for; empty when there is none.
    template <class Accepts>
    std::string find_part(const Accepts& accepts) const {
        std::string found;
        for (const auto& [name, type] : overrides_)
            if (accepts(type) && (found.empty() || name < found)) found = name;
        return found;
    }

  private:
    std::unordered_map<std::string, std::string> overrides_; ///< by canonical part name
    std::unordered_map<std::string, std::string> defaults_;  ///< by extension in lower case
};

} // namespace workbook
