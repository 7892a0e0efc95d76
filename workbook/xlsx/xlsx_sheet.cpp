// SPDX-License-Identifier: Apache-2.0
//
// Cell reads over the cell store. Callers come here several times for every cell.
#include "workbook/xlsx/xlsx_sheet.h"

#include <algorithm>

#include "foundation/unicode.h"
#include "workbook/cells/cell_reference.h"
#include "workbook/error.h"

namespace workbook {

namespace {

/// By StoredKind.
constexpr CellKind kCellKinds[] = {CellKind::Number,     CellKind::String, CellKind::String,
                                   CellKind::Boolean,    CellKind::Blank,  CellKind::Error,
                                   CellKind::StrictDate, CellKind::String};

} // namespace

XlsxSheet::XlsxSheet(BookContents& contents, SheetEntry& entry, RowSpan rows)
    : contents_(contents),
      entry_(entry),
      is_new_(false),
      is_whole_(rows.first <= 0 && rows.last >= kMaxRows - 1) {
    try {
        const std::unique_ptr<ByteSource> part = contents_.package->open_part(entry_.part);
        tail_read_ = read_worksheet(*part, rows, contents_.workbook.date_1904, cells_, tail_);
    } catch (const Error& error) {
        throw error.in_sheet(utf8_name());
    }
}

XlsxSheet::XlsxSheet(BookContents& contents, SheetEntry& entry)
    : contents_(contents), entry_(entry), is_new_(true), is_whole_(true), tail_read_(true) {}

XlsxSheet::XlsxSheet(const XlsxSheet& original, SheetEntry& entry)
    : contents_(original.contents_),
      entry_(entry),
      is_new_(original.is_new_),
      is_whole_(original.is_whole_),
      cells_(original.cells_),
      changes_(original.changes_),
      uses_added_strings_(original.uses_added_strings_),
      tail_(original.tail()),
      tail_read_(true) {}

void XlsxSheet::check_shared_strings() const {
    const std::size_t known = contents_.shared_strings.size();
    if (cells_.shared_strings_end <= known) return;
    cells_.cells.for_each([&](int row, const StoredCell& cell) {
        if (cell.stored_kind() != StoredKind::String || cell.value.text < known) return;
        const std::string name = cell_name(row, static_cast<int>(cell.column));
        throw Error::damaged("cell " + name, "it refers to shared string " +
                                                 std::to_string(cell.value.text) + " of " +
                                                 std::to_string(known))
            .in_sheet(utf8_name());
    });
}

void XlsxSheet::mark_formats(std::size_t known, std::vector<bool>& formats) const {
    for (const ColumnSpan& span : cells_.columns.spans)
        if (span.has_format && span.format < formats.size()) formats[span.format] = true;
    if (cells_.formats_end <= known) return;
    std::uint32_t last = kMaxStoredFormat + 1; // neighbours are mostly alike
    const auto mark = [&](std::uint32_t format) {
        if (format != last && format < formats.size()) formats[format] = true;
        last = format;
    };
    cells_.cells.for_each([&](int, const StoredCell& cell) { mark(cell.format); });
    for (const RowFormat& row : cells_.row_formats)
        mark(row.format);
}

CellKind XlsxSheet::cell_type(int row, int column) const {
    const StoredCell* cell = cells_.cells.find(row, column);
    return cell == nullptr ? CellKind::Empty
                           : kCellKinds[static_cast<std::size_t>(cell->stored_kind())];
}

bool XlsxSheet::is_date(int row, int column) const {
    const StoredCell* cell = cells_.cells.find(row, column);
    return cell != nullptr && cell->stored_kind() == StoredKind::Number &&
           contents_.styles.is_date(cell->format);
}

double XlsxSheet::read_num(int row, int column) const {
    const StoredCell* cell = cells_.cells.find(row, column);
    if (cell == nullptr) return 0.0;
    switch (cell->stored_kind()) {
    case StoredKind::Number:
    case StoredKind::Boolean:
    case StoredKind::StrictDate:
        return cell->value.number;
    default:
        return 0.0;
    }
}

bool XlsxSheet::read_bool(int row, int column) const {
    const StoredCell* cell = cells_.cells.find(row, column);
    return cell != nullptr && cell->stored_kind() == StoredKind::Boolean &&
           cell->value.number != 0.0;
}

std::u16string_view XlsxSheet::read_str(int row, int column) const {
    const StoredCell* cell = cells_.cells.find(row, column);
    if (cell == nullptr) return {};
    switch (cell->stored_kind()) {
    case StoredKind::String:
        foundation::unicode::assign_utf16(contents_.text,
                                          contents_.shared_strings[cell->value.text]);
        return contents_.text;
    case StoredKind::AddedString:
        foundation::unicode::assign_utf16(contents_.text,
                                          contents_.added_strings[cell->value.text]);
        return contents_.text;
    case StoredKind::OwnString:
    case StoredKind::Error:
        foundation::unicode::assign_utf16(contents_.text, cells_.own_strings[cell->value.text]);
        return contents_.text;
    default:
        return {};
    }
}

const Format* XlsxSheet::cell_format(int row, int column) const {
    const StoredCell* cell = cells_.cells.find(row, column);
    if (cell != nullptr) return format_at(cell->format);
    const std::vector<RowFormat>& rows = cells_.row_formats;
    const auto of_row =
        std::lower_bound(rows.begin(), rows.end(), row,
                         [](const RowFormat& a, int wanted) { return a.row < wanted; });
    if (of_row != rows.end() && of_row->row == row) return format_at(of_row->format);
    for (const ColumnSpan& span : cells_.columns.spans)
        if (span.has_format && column >= span.first && column <= span.last)
            return format_at(span.format);
    return nullptr;
}

const Format* XlsxSheet::format_at(std::uint32_t index) const {
    return index < contents_.formats.size() ? &contents_.formats[index] : nullptr;
}

const std::vector<MergedRegion>& XlsxSheet::merged_regions() const {
    return changes_.merged_regions ? *changes_.merged_regions : tail().merged_regions;
}

bool XlsxSheet::merge(int index, int& first_row, int& last_row, int& first_column,
                      int& last_column) const {
    const std::vector<MergedRegion>& regions = merged_regions();
    if (index < 0 || static_cast<std::size_t>(index) >= regions.size()) return false;
    const MergedRegion& region = regions[static_cast<std::size_t>(index)];
    first_row = region.first_row;
    last_row = region.last_row;
    first_column = region.first_column;
    last_column = region.last_column;
    return true;
}

bool XlsxSheet::named_range(std::u16string_view name, int& first_row, int& last_row,
                            int& first_column, int& last_column) const {
    const std::optional<CellRectangle> cells = find_named_cells(
        contents_.workbook.defined_names, name, contents_.index_of(entry_), entry_.name);
    if (!cells) return false;
    first_row = cells->first_row;
    last_row = cells->last_row;
    first_column = cells->first_column;
    last_column = cells->last_column;
    return true;
}

const WorksheetTail& XlsxSheet::tail() const {
    if (tail_read_) return tail_;
    tail_read_ = true; // also when it fails: the next call would fail alike
    try {
        tail_ = read_worksheet_tail(*contents_.package->open_part(entry_.part));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const Error& error) {
        contents_.error.set(error.in_sheet(utf8_name()));
    } catch (const std::exception& error) {
        contents_.error.set(error);
    }
    return tail_;
}

std::string XlsxSheet::utf8_name() const {
    return foundation::unicode::to_utf8(entry_.name);
}

} // namespace workbook
