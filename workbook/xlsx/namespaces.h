// SPDX-License-Identifier: Apache-2.0
//
// Addresses of namespaces and relationship types (ECMA-376 part 1, A.2 and 15; part 1, annex A of
// the Strict form). A type's address is the base, a slash and the type's name.
#pragma once

#include <string_view>

namespace workbook {

inline constexpr const char* kMainNamespace =
    "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
inline constexpr const char* kRelationships =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

/// What all addresses of the Strict form begin with.
inline constexpr std::string_view kStrictBase = "http://purl.oclc.org/ooxml/";
inline constexpr const char* kStrictMainNamespace = "http://purl.oclc.org/ooxml/spreadsheetml/main";
inline constexpr const char* kStrictRelationships =
    "http://purl.oclc.org/ooxml/officeDocument/relationships";

} // namespace workbook
