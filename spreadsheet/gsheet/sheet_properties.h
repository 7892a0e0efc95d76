// SPDX-License-Identifier: Apache-2.0
//
// What the workbook's metadata tell about a sheet. One record for each sheet, shared by the
// workbook and the sheet's object, so that both see every change.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "spreadsheet/gsheet/grid_range.h"
#include "spreadsheet/gsheet/json_access.h"

namespace gsheet {

enum class SheetKind : std::uint8_t {
    grid,
    object, ///< carries a chart instead of cells
    other   ///< unspecified, a data source, or not known yet
};

struct ProtectedRange {
    std::int64_t id = 0;
    bool is_whole_sheet = false;
    /// It only warns, or the caller is one of its editors.
    bool is_editable = false;
    GridRange range;
    std::vector<GridRange> unprotected;
};

struct SheetProperties {
    std::u16string title;
    std::int64_t sheet_id = 0;
    SheetKind kind = SheetKind::other;
    bool hidden = false;
    bool is_protected = false; ///< as a whole
    std::vector<ProtectedRange> protected_ranges;
    std::int64_t row_count = 0;
    std::int64_t column_count = 0;
    bool removed = false; ///< from the spreadsheet; its object is of no use any more
};

/// From a "properties" object; tells nothing about protection.
SheetProperties parse_sheet_properties(const Object& properties);
/// From an element of "sheets": "properties" and "protectedRanges".
SheetProperties parse_sheet(const Object& sheet);
/// The "protectedRanges" of an element of "sheets".
std::vector<ProtectedRange> parse_protected_ranges(const Object& sheet);

/// The "range" of the entry of "namedRanges" with that name, compared without regard to case; null
/// when there is none.
const Object* find_named_range(const Object& reply, const std::u16string& name);
/// The cells of a GridRange object on its sheet; open ends reach to the end of the grid. No value
/// when there are none.
std::optional<spreadsheet::Range> cells_of(const Object& grid_range, const SheetProperties& sheet);

/// Whether no cell of `target` is protected, unprotected parts of protected ranges left aside. What
/// the caller may edit all the same counts as protected.
bool is_writeable(const spreadsheet::Range& target, const std::vector<ProtectedRange>& ranges);

} // namespace gsheet
