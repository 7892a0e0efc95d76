// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/sheet_properties.h"

#include <algorithm>

#include "foundation/unicode.h"
#include "spreadsheet/limits.h"

namespace gsheet {

namespace {

/// No sheet has more rows or columns than a spreadsheet has cells.
std::int64_t count_in(const Object& grid, std::string_view key) {
    return std::clamp<std::int64_t>(integer_in(grid, key).value_or(0), 0,
                                    spreadsheet::kMaxGoogleCells);
}

SheetKind kind_in(const Object& properties) {
    const std::u16string type = text_in(properties, "sheetType");
    if (type == u"GRID") return SheetKind::grid;
    return type == u"OBJECT" ? SheetKind::object : SheetKind::other;
}

ProtectedRange parse_protected_range(const Object& entry) {
    ProtectedRange parsed;
    parsed.id = integer_in(entry, "protectedRangeId").value_or(0);
    if (const Object* const range = object_in(entry, "range"))
        parsed.range = parse_grid_range(*range);
    // A range that belongs to a name or a table is not the sheet's, whatever it covers.
    const bool is_own = !entry.contains("namedRangeId") && !entry.contains("tableId");
    parsed.is_whole_sheet = is_own && parsed.range == GridRange{};
    parsed.is_editable = flag_in(entry, "warningOnly") || flag_in(entry, "requestingUserCanEdit");
    if (const Array* const parts = array_in(entry, "unprotectedRanges"))
        for (const auto& part : *parts)
            if (part.is_object()) parsed.unprotected.push_back(parse_grid_range(part.get_object()));
    return parsed;
}

} // namespace

SheetProperties parse_sheet_properties(const Object& properties) {
    SheetProperties parsed;
    parsed.title = text_in(properties, "title");
    parsed.sheet_id = integer_in(properties, "sheetId").value_or(0);
    parsed.kind = kind_in(properties);
    parsed.hidden = flag_in(properties, "hidden");
    if (const Object* const grid = object_in(properties, "gridProperties")) {
        parsed.row_count = count_in(*grid, "rowCount");
        parsed.column_count = count_in(*grid, "columnCount");
    }
    return parsed;
}

SheetProperties parse_sheet(const Object& sheet) {
    const Object* const properties = object_in(sheet, "properties");
    SheetProperties parsed =
        properties != nullptr ? parse_sheet_properties(*properties) : SheetProperties{};
    parsed.protected_ranges = parse_protected_ranges(sheet);
    parsed.is_protected =
        std::any_of(parsed.protected_ranges.begin(), parsed.protected_ranges.end(),
                    [](const auto& range) { return range.is_whole_sheet; });
    return parsed;
}

std::vector<ProtectedRange> parse_protected_ranges(const Object& sheet) {
    std::vector<ProtectedRange> parsed;
    const Array* const entries = array_in(sheet, "protectedRanges");
    if (entries == nullptr) return parsed;
    for (const auto& entry : *entries)
        if (entry.is_object()) parsed.push_back(parse_protected_range(entry.get_object()));
    return parsed;
}

const Object* find_named_range(const Object& reply, const std::u16string& name) {
    const Array* const entries = array_in(reply, "namedRanges");
    if (entries == nullptr) return nullptr;
    for (const auto& entry : *entries) {
        const Object* const candidate = entry.if_object();
        if (candidate != nullptr &&
            foundation::unicode::equal_ignoring_case(text_in(*candidate, "name"), name))
            return object_in(*candidate, "range");
    }
    return nullptr;
}

std::optional<spreadsheet::Range> cells_of(const Object& grid_range, const SheetProperties& sheet) {
    const GridRange range = parse_grid_range(grid_range);
    const auto end_of = [](std::int64_t end, std::int64_t count) {
        return end == GridRange::kUnbounded ? count : end;
    };
    const GridRange closed{range.start_row, end_of(range.end_row, sheet.row_count),
                           range.start_column, end_of(range.end_column, sheet.column_count)};
    if (closed.is_empty()) return {};
    return spreadsheet::Range{
        static_cast<int>(closed.start_row), static_cast<int>(closed.start_column),
        static_cast<int>(closed.end_row - 1), static_cast<int>(closed.end_column - 1)};
}

bool is_writeable(const spreadsheet::Range& target, const std::vector<ProtectedRange>& ranges) {
    const GridRange cells = to_grid_range(target);
    return std::all_of(ranges.begin(), ranges.end(), [&](const ProtectedRange& entry) {
        const GridRange common = intersection(cells, entry.range);
        return common.is_empty() || is_covered(common, entry.unprotected);
    });
}

} // namespace gsheet
