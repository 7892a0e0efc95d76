// SPDX-License-Identifier: Apache-2.0
//
// Clauses are those of ECMA-376 part 1 unless another document is named.
#include "workbook/xlsx/structure/reference_places_table.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

namespace workbook {

namespace {

using enum PlaceHolds;

/// In the order of the elements' names.
constexpr ReferencePlace kPlaces[] = {
    {"FmlaGroup", "", Formula}, // part 4, 19.4 (VML)
    {"FmlaLink", "", Formula},
    {"FmlaPict", "", Formula},
    {"FmlaRange", "", Formula},
    {"FmlaTxbx", "", Formula},
    {"Relationship", "Target", Fragment},          // part 2, 9.3: links of drawings and cells
    {"calculatedColumnFormula", "", Formula},      // 18.5.1.1
    {"cameraTool", "cellRange", Formula},          // MS-ODRAWXML
    {"cfvo", "val", Formula},                      // 18.3.1.11
    {"controlPr", "linkedCell", Formula},          // 18.3.1.20
    {"controlPr", "listFillRange", Formula},       // 18.3.1.20
    {"dataRef", "sheet", SheetName, "id"},         // 18.3.1.29
    {"definedName", "", Formula},                  // 18.2.5
    {"f", "", Formula},                            // 18.3.1.40, 21.2.2; MS-XLSX, MS-ODRAWXML
    {"formControlPr", "fmlaGroup", Formula},       // MS-XLSX
    {"formControlPr", "fmlaLink", Formula},        // MS-XLSX
    {"formControlPr", "fmlaRange", Formula},       // MS-XLSX
    {"formControlPr", "fmlaTxbx", Formula},        // MS-XLSX
    {"formula", "", Formula},                      // 18.3.1.43
    {"formula1", "", Formula},                     // 18.3.1.41
    {"formula2", "", Formula},                     // 18.3.1.42
    {"hyperlink", "location", Formula},            // 18.3.1.47
    {"name", "", PivotName},                       // 21.2.2, of a pivotSource only
    {"nf", "", Formula},                           // MS-ODRAWXML
    {"oldFormula", "", Formula},                   // 18.11
    {"parameter", "cell", Formula},                // 18.13.7
    {"rangeSet", "sheet", SheetName, "id"},        // 18.10.1.79
    {"sp", "textlink", Formula},                   // 20.5.2.29
    {"sqref", "", Formula},                        // MS-ODRAWXML, filtered series of charts
    {"totalsRowFormula", "", Formula},             // 18.5.1.6
    {"worksheetSource", "sheet", SheetName, "id"}, // 18.10.1.95
};

/// Last segments of relationship types in the order of their names.
constexpr std::string_view kHolders[] = {
    "chart",    "chartEx",     "chartUserShapes", "chartsheet",       "connections",
    "ctrlProp", "dialogsheet", "drawing",         "legacyDrawing",    "pivotCacheDefinition",
    "table",    "vmlDrawing",  "worksheet",       "xlIntlMacrosheet", "xlMacrosheet",
};

/// A bit for each length of the elements that begin with a letter.
constexpr std::array<std::uint32_t, 128> lengths_by_letter() {
    std::array<std::uint32_t, 128> lengths{};
    for (const ReferencePlace& place : kPlaces)
        lengths[static_cast<unsigned char>(place.element.front())] |= 1u << place.element.size();
    return lengths;
}

constexpr std::array<std::uint32_t, 128> kLengths = lengths_by_letter();

} // namespace

bool may_have_places(std::string_view element) {
    if (element.empty() || element.size() > 31) return false;
    const auto letter = static_cast<unsigned char>(element.front());
    return letter < kLengths.size() && (kLengths[letter] >> element.size() & 1u) != 0;
}

std::span<const ReferencePlace> reference_places(std::string_view element) {
    const auto [first, last] = std::equal_range(
        std::begin(kPlaces), std::end(kPlaces), ReferencePlace{element, {}, {}},
        [](const ReferencePlace& a, const ReferencePlace& b) { return a.element < b.element; });
    return {first, last};
}

bool may_hold_references(std::string_view relationship_type) {
    return std::binary_search(std::begin(kHolders), std::end(kHolders), relationship_type);
}

} // namespace workbook
