// SPDX-License-Identifier: Apache-2.0
//
// The places in the parts of a package that speak of sheets by name.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace workbook {

enum class PlaceHolds {
    Formula,   ///< a formula without the equals sign, or a reference
    SheetName, ///< the bare name of a sheet
    PivotName, ///< "[Book.xlsx]Sheet!PivotTable1", the book being this one
    Fragment   ///< "#Sheet!A1" with percent-escapes, in relationships
};

struct ReferencePlace {
    std::string_view element;   ///< local name
    std::string_view attribute; ///< local name; empty for the element's text
    PlaceHolds holds;
    /// Local name of an attribute that says, where it is present, that another book is meant.
    std::string_view other_book = {};
};

/// The places of an element, none for most.
std::span<const ReferencePlace> reference_places(std::string_view element);

/// False for most elements without places, decided by first letter and length alone.
bool may_have_places(std::string_view element);

/// Whether parts that relationships of this type (last segment) lead to can have such places.
bool may_hold_references(std::string_view relationship_type);

} // namespace workbook
