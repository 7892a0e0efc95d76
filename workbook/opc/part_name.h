// SPDX-License-Identifier: Apache-2.0
//
// Names of parts. Producers write them with leading or backward slashes, in differing case and with
// percent-escapes; the canonical form makes one of all: no leading slash, '/', ASCII lower case,
// escapes resolved, no "." and "..".
#pragma once

#include <string>
#include <string_view>

namespace workbook {

std::string canonical_part_name(std::string_view name);

/// The part that `target` of a relationship of the part `source` means ("" for the package itself).
std::string resolve_target(std::string_view source, std::string_view target);

/// The part that holds the relationships of `part` ("" for the package itself).
std::string relationships_part_name(std::string_view part);

/// The name as a new part gets it in the container and as others refer to it. Names are compared
/// without regard to case, but there are readers that look for "sharedStrings.xml" letter by
/// letter.
std::string new_part_spelling(std::string_view part);

/// Text in ASCII lower case.
std::string ascii_lower(std::string_view text);

} // namespace workbook
