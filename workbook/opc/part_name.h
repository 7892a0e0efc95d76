// SPDX-License-Identifier: Apache-2.0
//
// How parts refer to each other by name. Names are canonical (zip/entry_name.h).
#pragma once

#include <string>
#include <string_view>

#include "workbook/zip/entry_name.h"

namespace workbook {

/// The part that `target` of a relationship of the part `source` means ("" for the package itself).
std::string resolve_target(std::string_view source, std::string_view target);

/// The part that holds the relationships of `part` ("" for the package itself).
std::string relationships_part_name(std::string_view part);

/// The name as a new part gets it in the container and as others refer to it. Names are compared
/// without regard to case, but there are readers that look for "sharedStrings.xml" letter by
/// letter.
std::string new_part_spelling(std::string_view part);

} // namespace workbook
