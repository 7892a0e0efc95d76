// SPDX-License-Identifier: Apache-2.0
//
// Changes to a worksheet. They are made in memory; `write_part` applies them to the sheet's part.
#include <algorithm>
#include <cmath>
#include <map>

#include "foundation/unicode.h"
#include "workbook/cells/cell_reference.h"
#include "workbook/error.h"
#include "workbook/xlsx/xlsx_sheet.h"

namespace workbook {

namespace {

constexpr double kWidest = 255.0;

std::string place_name(int row, int column) {
    return "row " + std::to_string(row) + ", column " + std::to_string(column);
}

} // namespace

bool XlsxSheet::fail(const std::string& reason) const {
    contents_.error.set(ErrorKind::Refused, "sheet \"" + utf8_name() + "\": " + reason);
    return false;
}

bool XlsxSheet::check_area(int first_row, int last_row, int first_column, int last_column) const {
    if (first_row >= 0 && first_row <= last_row && last_row < kMaxRows && first_column >= 0 &&
        first_column <= last_column && last_column < kMaxColumns)
        return true;
    return fail("zero-based " + place_name(first_row, first_column) + " to " +
                place_name(last_row, last_column) + " does not lie within a sheet of " +
                std::to_string(kMaxRows) + " rows and " + std::to_string(kMaxColumns) + " columns");
}

bool XlsxSheet::set_name(std::u16string_view name) {
    try {
        contents_.rename_sheet(entry_, name);
        return true;
    } catch (const Error& error) {
        contents_.error.set(error); // it names the sheet
        return false;
    }
}

bool XlsxSheet::set_hidden(SheetState state) {
    try {
        contents_.set_sheet_state(entry_, state);
        return true;
    } catch (const Error& error) {
        contents_.error.set(error); // it names the sheet
        return false;
    }
}

bool XlsxSheet::set_protect(bool on) {
    if (on || protect()) changes_.is_protected = on;
    return true;
}

void XlsxSheet::expect_cells(int first_row, int last_row, int first_column, int last_column) {
    cells_.cells.expect(std::max(first_row, 0), std::min(last_row, kMaxRows - 1),
                        std::max(first_column, 0), std::min(last_column, kMaxColumns - 1));
}

// Cells are mostly written with the format of the cell before.
bool XlsxSheet::find_format(const Format* format, std::uint32_t& index) {
    if (format != last_format_) {
        const auto* const own = dynamic_cast<const XlsxFormat*>(format);
        const std::size_t found = own != nullptr ? own->index() : contents_.formats.size();
        if (found >= contents_.formats.size() || &contents_.formats[found] != own)
            return fail("the cell format belongs to another workbook");
        contents_.used_formats_end = std::max(contents_.used_formats_end, found + 1);
        last_format_ = format;
        last_format_index_ = static_cast<std::uint32_t>(found);
    }
    index = format != nullptr ? last_format_index_ : 0;
    return true;
}

bool XlsxSheet::write(int row, int column, const Format* format, StoredKind kind, StoredCell cell) {
    if (row < 0 || row >= kMaxRows || column < 0 || column >= kMaxColumns)
        return check_area(row, row, column, column);
    std::uint32_t index = 0;
    if (format != nullptr && !find_format(format, index)) return false;
    cell.column = static_cast<std::uint32_t>(column);
    cell.format = index & kMaxStoredFormat;
    cell.kind = static_cast<std::uint32_t>(kind);
    cells_.cells.put(row, cell);
    changes_.cells = true;
    return true;
}

bool XlsxSheet::write_num(int row, int column, double value, const Format* format) {
    if (!std::isfinite(value))
        return fail("a cell cannot hold a number that is not finite (" + place_name(row, column) +
                    ")");
    StoredCell cell{};
    cell.value.number = value;
    return write(row, column, format, StoredKind::Number, cell);
}

bool XlsxSheet::write_str(int row, int column, std::u16string_view text, const Format* format) {
    if (!check_area(row, row, column, column)) return false;
    StoredCell cell{};
    cell.value.text = contents_.added_strings.add(foundation::unicode::to_generalized_utf8(text));
    if (!write(row, column, format, StoredKind::AddedString, cell)) return false;
    uses_added_strings_ = true;
    return true;
}

bool XlsxSheet::write_bool(int row, int column, bool value, const Format* format) {
    StoredCell cell{};
    cell.value.number = value ? 1.0 : 0.0;
    return write(row, column, format, StoredKind::Boolean, cell);
}

bool XlsxSheet::write_blank(int row, int column, const Format* format) {
    return write(row, column, format, StoredKind::Blank, {});
}

bool XlsxSheet::clear(int first_row, int last_row, int first_column, int last_column) {
    if (!check_area(first_row, last_row, first_column, last_column)) return false;
    changes_.cleared.add(first_row, last_row, first_column, last_column);
    changes_.cells = true;
    cells_.cells.remove(first_row, last_row, first_column, last_column);
    return true;
}

bool XlsxSheet::delete_merge(int index) {
    const std::vector<MergedRegion>& regions = merged_regions();
    if (index < 0 || static_cast<std::size_t>(index) >= regions.size())
        return fail("it has no merged region " + std::to_string(index) + ", it has " +
                    std::to_string(regions.size()));
    if (!changes_.merged_regions) changes_.merged_regions = regions;
    changes_.merged_regions->erase(changes_.merged_regions->begin() + index);
    return true;
}

double XlsxSheet::column_width(int column) const {
    const auto changed = changes_.column_widths.find(column);
    if (changed != changes_.column_widths.end()) return changed->second;
    for (const ColumnSpan& span : cells_.columns.spans)
        if (span.width > 0.0 && column >= span.first && column <= span.last) return span.width;
    return cells_.columns.default_width;
}

bool XlsxSheet::set_column_width(int column, double width) {
    if (!check_area(0, 0, column, column)) return false;
    if (!(width >= 0.0 && width <= kWidest))
        return fail("a column cannot be " + std::to_string(width) + " characters wide");
    changes_.column_widths[column] = width;
    return true;
}

bool XlsxSheet::auto_fit_columns(int first_column, int last_column) {
    if (!check_area(0, 0, first_column, last_column)) return false;
    std::map<int, double> widths;
    cells_.cells.for_each([&](int, const StoredCell& cell) {
        const auto column = static_cast<int>(cell.column);
        if (column < first_column || column > last_column) return;
        if (const double width = width_of(cell); width > 0.0) {
            double& widest = widths[column];
            widest = std::max(widest, width);
        }
    });
    // Widths are counted in 256ths of a character.
    for (const auto& [column, width] : widths)
        changes_.column_widths[column] = std::min(std::round(width * 256.0) / 256.0, kWidest);
    return true;
}

// 0 for a cell that shows nothing.
double XlsxSheet::width_of(const StoredCell& cell) const {
    std::u16string text;
    switch (cell.stored_kind()) {
    case StoredKind::Number:
        return number_width(cell.value.number, contents_.styles.is_date(cell.format));
    case StoredKind::StrictDate:
        return number_width(cell.value.number, true);
    case StoredKind::Boolean:
        return text_width(cell.value.number != 0.0 ? u"TRUE" : u"FALSE");
    case StoredKind::String:
        foundation::unicode::assign_utf16(text, contents_.shared_strings[cell.value.text]);
        break;
    case StoredKind::AddedString:
        foundation::unicode::assign_utf16(text, contents_.added_strings[cell.value.text]);
        break;
    case StoredKind::OwnString:
    case StoredKind::Error:
        foundation::unicode::assign_utf16(text, cells_.own_strings[cell.value.text]);
        break;
    case StoredKind::Blank:
        break;
    }
    return text.empty() ? 0.0 : text_width(text);
}

std::uint64_t XlsxSheet::expected_bytes() const {
    constexpr std::uint64_t kCellBytes = 60;
    return cells_.cells.size() * kCellBytes;
}

void XlsxSheet::write_part(const PartOpener& open_part,
                           const std::vector<std::uint32_t>& shared_index_of, ByteSink& out) const {
    rewrite_worksheet(open_part, cells_.cells, shared_index_of, changes_, is_whole_, out);
}

} // namespace workbook
