// SPDX-License-Identifier: Apache-2.0
//
// What the workbook's metadata tell about a sheet. One record for each sheet, shared by the
// workbook and the sheet's object, so that both see every change.
#pragma once

#include <cstdint>
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
    GridRange range;
    std::vector<GridRange> unprotected;
};

struct SheetProperties {
    std::u16string title;
    std::int64_t sheet_id = 0;
    SheetKind kind = SheetKind::other;
    bool hidden = false;
    bool is_protected = false; ///< as a whole
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

/// Whether no cell of `target` is protected, unprotected parts of protected ranges left aside.
bool is_writeable(const spreadsheet::Range& target, const std::vector<ProtectedRange>& ranges);

} // namespace gsheet
