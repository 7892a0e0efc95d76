// SPDX-License-Identifier: Apache-2.0
//
// Relationships parts (ECMA-376 part 2, 9.3).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "workbook/io/byte_source.h"

namespace workbook {

struct Relationship {
    std::string id;
    std::string
        type; ///< last segment of the type's address: "worksheet" for transitional and strict
    std::string target; ///< canonical part name; the address as written when external
    bool is_external = false;
};

/// The relationships of the part `source` ("" for the package), in the part's order. Throws
/// `Error`.
std::vector<Relationship> read_relationships(ByteSource& part, std::string_view source);

} // namespace workbook
