// SPDX-License-Identifier: Apache-2.0
//
// Changes to a sheet's cells, merged regions, protection and widths. They are made in memory; a
// save applies them to the file.
#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "foundation/unicode.h"
#include "workbook/cells/column_width.h"
#include "workbook/cells/stored_sheet.h"

namespace workbook {

namespace {

std::string place_name(int row, int column) {
    return "row " + std::to_string(row) + ", column " + std::to_string(column);
}

} // namespace

bool StoredSheet::fail(ErrorKind kind, const std::string& reason) const {
    book_.error.set(kind, "sheet \"" + utf8_name() + "\": " + reason);
    return false;
}

void StoredSheet::refuse_changes(std::string reason) {
    refusal_ = std::move(reason);
    limits_ = {0, 0};
}

bool StoredSheet::check_area(const Rectangle& area) const {
    if (limits_.hold(area)) return true;
    if (!refusal_.empty()) return fail(ErrorKind::Refused, refusal_);
    return fail(ErrorKind::Limit, "zero-based " + place_name(area.first_row, area.first_column) +
                                      " to " + place_name(area.last_row, area.last_column) +
                                      " is not within a sheet of " + std::to_string(limits_.rows) +
                                      " rows and " + std::to_string(limits_.columns) + " columns");
}

bool StoredSheet::set_protect(bool on) {
    if (!refusal_.empty()) return fail(ErrorKind::Refused, refusal_);
    if (!changes_.is_protected && !need_tail()) return false;
    if (on || protect()) changes_.is_protected = on;
    return true;
}

void StoredSheet::expect_cells(int first_row, int last_row, int first_column, int last_column) {
    cells_.cells.expect({std::max(first_row, 0), std::min(last_row, limits_.rows - 1),
                         std::max(first_column, 0), std::min(last_column, limits_.columns - 1)});
}

// Cells are mostly written with the format of the cell before.
bool StoredSheet::find_format(const Format* format, std::uint32_t& index) {
    if (format != last_format_) {
        const auto* const own = dynamic_cast<const StoredFormat*>(format);
        const std::size_t found = own != nullptr ? own->index() : book_.formats.size();
        if (found >= book_.formats.size() || &book_.formats[found] != own)
            return fail(ErrorKind::Missing, "the cell format belongs to another workbook");
        book_.used_formats_end = std::max(book_.used_formats_end, found + 1);
        last_format_ = format;
        last_format_index_ = static_cast<std::uint32_t>(found);
    }
    index = last_format_index_;
    return true;
}

bool StoredSheet::write(int row, int column, const Format* format, StoredKind kind,
                        StoredCell cell) {
    if (!limits_.hold(row, column)) return check_area({row, row, column, column});
    std::uint32_t index = book_.default_format;
    if (format != nullptr && !find_format(format, index)) return false;
    cell.column = static_cast<std::uint32_t>(column);
    cell.format = index & kMaxStoredFormat;
    cell.kind = static_cast<std::uint32_t>(kind);
    cells_.cells.put(row, cell);
    changes_.cells = true;
    return true;
}

bool StoredSheet::write_num(int row, int column, double value, const Format* format) {
    if (!std::isfinite(value))
        return fail(ErrorKind::Refused, "a cell cannot hold a number that is not finite (" +
                                            place_name(row, column) + ")");
    StoredCell cell{};
    cell.value.number = value;
    return write(row, column, format, StoredKind::Number, cell);
}

bool StoredSheet::write_str(int row, int column, std::u16string_view text, const Format* format) {
    if (!check_area({row, row, column, column})) return false;
    StoredCell cell{};
    cell.value.text = book_.added_strings.add(foundation::unicode::to_generalized_utf8(text));
    if (!write(row, column, format, StoredKind::AddedString, cell)) return false;
    uses_added_strings_ = true;
    return true;
}

bool StoredSheet::write_bool(int row, int column, bool value, const Format* format) {
    StoredCell cell{};
    cell.value.number = value ? 1.0 : 0.0;
    return write(row, column, format, StoredKind::Boolean, cell);
}

bool StoredSheet::write_blank(int row, int column, const Format* format) {
    return write(row, column, format, StoredKind::Blank, {});
}

bool StoredSheet::write_formula(int, int, std::string_view, const Format*) {
    return fail(ErrorKind::Refused, "formulas cannot be written into a workbook of this format; "
                                    "convert it to .xlsx before");
}

bool StoredSheet::keep_formula(int row, int column, std::string_view formula,
                               const Format* format) {
    if (!check_area({row, row, column, column})) return false;
    StoredCell cell{};
    cell.value.text = changes_.formulas.add(formula);
    return write(row, column, format, StoredKind::Formula, cell);
}

bool StoredSheet::clear(int first_row, int last_row, int first_column, int last_column) {
    const Rectangle area{first_row, last_row, first_column, last_column};
    if (!check_area(area)) return false;
    changes_.cleared.add(area);
    changes_.cells = true;
    cells_.cells.remove(area);
    if (other_rows_ != nullptr) other_rows_->cells.remove(area);
    return true;
}

bool StoredSheet::delete_merge(int index) {
    if (!changes_.merged_regions && !need_tail()) return false;
    const std::vector<Rectangle>& regions = merged_regions();
    if (index < 0 || static_cast<std::size_t>(index) >= regions.size())
        return fail(ErrorKind::Missing, "it has no merged region " + std::to_string(index) +
                                            ", it has " + std::to_string(regions.size()));
    if (!changes_.merged_regions) changes_.merged_regions = regions;
    changes_.merged_regions->erase(changes_.merged_regions->begin() + index);
    return true;
}

double StoredSheet::column_width(int column) const {
    const auto changed = changes_.column_widths.find(column);
    if (changed != changes_.column_widths.end()) return changed->second;
    for (const ColumnSpan& span : cells_.columns.spans)
        if (span.width > 0.0 && column >= span.first && column <= span.last) return span.width;
    return cells_.columns.default_width;
}

bool StoredSheet::set_column_width(int column, double width) {
    if (!check_area({0, 0, column, column})) return false;
    if (!(width >= 0.0 && width <= kMaxColumnWidth))
        return fail(ErrorKind::Limit,
                    "a column cannot be " + std::to_string(width) + " characters wide");
    changes_.column_widths[column] = width;
    return true;
}

bool StoredSheet::auto_fit_columns(int first_column, int last_column) {
    if (!check_area({0, 0, first_column, last_column}) || !need_other_rows()) return false;
    std::map<int, double> widths;
    const auto measure = [&](const StoredCell& cell, const StringPool& own_strings) {
        const auto column = static_cast<int>(cell.column);
        if (column < first_column || column > last_column) return;
        if (const double width = width_of(cell, own_strings); width > 0.0) {
            double& widest = widths[column];
            widest = std::max(widest, width);
        }
    };
    cells_.cells.for_each([&](int, const StoredCell& cell) { measure(cell, cells_.own_strings); });
    if (other_rows_ != nullptr)
        other_rows_->cells.for_each([&](int row, const StoredCell& cell) {
            const bool is_overwritten =
                cells_.cells.find(row, static_cast<int>(cell.column)) != nullptr;
            if (!is_overwritten) measure(cell, other_rows_->own_strings);
        });
    // Widths are counted in 256ths of a character.
    for (const auto& [column, width] : widths)
        changes_.column_widths[column] =
            std::min(std::round(width * 256.0) / 256.0, kMaxColumnWidth);
    return true;
}

// 0 for a cell that shows nothing.
double StoredSheet::width_of(const StoredCell& cell, const StringPool& own_strings) const {
    switch (cell.stored_kind()) {
    case StoredKind::Number:
        return number_width(cell.value.number, book_.cell_formats.is_date(cell.format));
    case StoredKind::StrictDate:
        return number_width(cell.value.number, true);
    case StoredKind::Boolean:
        return text_width(cell.value.number != 0.0 ? u"TRUE" : u"FALSE");
    default:
        break;
    }
    std::u16string text;
    if (const auto stored = text_of(cell, own_strings))
        foundation::unicode::assign_utf16(text, *stored);
    return text.empty() ? 0.0 : text_width(text);
}

} // namespace workbook
