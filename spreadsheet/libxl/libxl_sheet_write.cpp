// SPDX-License-Identifier: Apache-2.0
//
// The changing side of a worksheet: typed writes, clearing, name, visibility, protection, merged
// regions, column widths. A cell that the library does not take (there is no such row or column)
// does not end a write; the first one is logged.
#include <cstdint>
#include <new>

#include "spreadsheet/exception.h"
#include "spreadsheet/libxl/cell_value.h"
#include "spreadsheet/libxl/library_failure.h"
#include "spreadsheet/libxl/libxl_sheet.h"

namespace spreadsheet {
namespace {

/// Columns of dates are at least this wide after a fit: room for a date with its time.
constexpr double kLeastDateColumnWidth = 14.71;

/// Calls `visit(row, column)` column after column; a range may end at the greatest `int`.
template <class Visit>
void for_each_cell(const Range& range, Visit visit) {
    for (std::int64_t column = range.first_column; column <= range.last_column; ++column)
        for (std::int64_t row = range.first_row; row <= range.last_row; ++row)
            visit(static_cast<int>(row), static_cast<int>(column));
}

} // namespace

/// Cells on their way into the library.
class LibXLSheet::CellWriter {
  public:
    CellWriter(workbook::Sheet& sheet, const workbook::Format* date_format, const Range& range)
        : sheet_(sheet), date_format_(date_format) {
        sheet.expect_cells(range.first_row, range.last_row, range.first_column, range.last_column);
    }

    void put(int row, int column, const CellValue& value, const workbook::Format* format) {
        bool written = false;
        switch (value.kind) {
        case CellValue::Kind::Blank:
            written = sheet_.write_blank(row, column, format);
            break;
        case CellValue::Kind::Number:
            written = sheet_.write_num(row, column, value.number, format);
            break;
        case CellValue::Kind::Text:
            written = sheet_.write_str(row, column, value.text, format);
            break;
        case CellValue::Kind::Date:
            written = sheet_.write_num(row, column, value.number, date_format_);
            break;
        case CellValue::Kind::Boolean:
            written = sheet_.write_bool(row, column, value.number != 0.0, format);
            break;
        }
        failed_ |= !written;
    }

    void put_empty_text(int row, int column, const workbook::Format* format) {
        failed_ |= !sheet_.write_str(row, column, u"", format);
    }

    bool failed() const { return failed_; }

  private:
    workbook::Sheet& sheet_;
    const workbook::Format* date_format_;
    bool failed_ = false;
};

workbook::Sheet& LibXLSheet::changeable_sheet() {
    library_sheet();
    data_span_cached_ = false;
    return *sheet_;
}

template <class NextValue>
void LibXLSheet::write_all(const Range& range, NextValue next_value) {
    write_cells(range, [&](CellWriter& writer, int row, int column) {
        writer.put(row, column, next_value(), nullptr);
    });
}

template <class WriteCell>
void LibXLSheet::write_cells(const Range& range, WriteCell write_cell) {
    constexpr std::string_view tag = "[LIBXL SHEET WRITE MSG]:";
    try {
        CellWriter writer(changeable_sheet(), date_format_, range);
        for_each_cell(range, [&](int row, int column) { write_cell(writer, row, column); });
        if (writer.failed() && library_) libxl::log_library_message(tag, *library_);
    } catch (const std::bad_alloc&) {
        libxl::fail_without_memory(tag, error_id::write_failed);
    }
}

void LibXLSheet::note_dates(const Range& range) {
    for (std::int64_t column = range.first_column; column <= range.last_column; ++column)
        date_columns_.insert(static_cast<int>(column));
}

void LibXLSheet::write(Range range, const unsigned char* values) {
    write_all(range, [&] { return CellValue::of(*values++ != 0); });
}

void LibXLSheet::write(Range range, const bool* values) {
    write_all(range, [&] { return CellValue::of(*values++); });
}

void LibXLSheet::write(Range range, const SerialDatenum* values) {
    write_all(range, [&] { return CellValue::of(*values++, date_offset_); });
    note_dates(range);
}

void LibXLSheet::write(Range range, const double* values) {
    write_all(range, [&] { return CellValue::of(*values++); });
}

void LibXLSheet::write(Range range, const StringProvider& provider) {
    write_all(range, [&] { return CellValue::of(provider.next(provider.context)); });
}

void LibXLSheet::write(Range range, const cell_type* types, const CellProvider& provider,
                       bool preserve_format) {
    const workbook::Sheet& sheet = library_sheet();
    write_cells(range, [&](CellWriter& writer, int row, int column) {
        const workbook::Format* format = preserve_format ? sheet.cell_format(row, column) : nullptr;
        switch (*types++) {
        case cell_type::number:
            writer.put(row, column, CellValue::of(provider.number(provider.context)), format);
            break;
        case cell_type::text:
            writer.put(row, column, CellValue::of(provider.text(provider.context)), format);
            break;
        case cell_type::date:
            writer.put(row, column, CellValue::of(provider.date(provider.context), date_offset_),
                       format);
            date_columns_.insert(column);
            break;
        case cell_type::boolean:
            writer.put(row, column, CellValue::of(provider.boolean(provider.context)), format);
            break;
        default:
            provider.skip(provider.context);
            writer.put_empty_text(row, column, format);
        }
    });
}

void LibXLSheet::clear(Cell cell) {
    clear(Range{cell.row, cell.column, cell.row, cell.column});
}

void LibXLSheet::clear(Range range) {
    if (!changeable_sheet().clear(range.first_row, range.last_row, range.first_column,
                                  range.last_column))
        fail("[LIBXL SHEET CLEAR MSG]:", error_id::range_not_cleared);
}

void LibXLSheet::name(const std::u16string& new_name) {
    if (!changeable_sheet().set_name(new_name) && library_)
        libxl::log_library_message("[LIBXL SHEET NAME MSG]:", *library_);
}

std::u16string LibXLSheet::name() const {
    return std::u16string(library_sheet().name());
}

void LibXLSheet::hidden(sheet::hidden state) {
    workbook::Sheet& sheet = changeable_sheet();
    if (state > sheet::hidden::very_hidden) throw Exception(error_id::hidden_state_not_set);
    if (!sheet.set_hidden(static_cast<workbook::SheetState>(state)))
        fail("[LIBXL SHEET HIDDEN MSG]:", error_id::hidden_state_not_set);
}

sheet::hidden LibXLSheet::hidden() const {
    switch (library_sheet().hidden()) {
    case workbook::SheetState::Hidden:
        return sheet::hidden::hidden;
    case workbook::SheetState::VeryHidden:
        return sheet::hidden::very_hidden;
    default:
        return sheet::hidden::visible;
    }
}

bool LibXLSheet::is_protected() const {
    return library_sheet().protect();
}

void LibXLSheet::set_protected(bool on) {
    if (!changeable_sheet().set_protect(on) && library_)
        libxl::log_library_message("[LIBXL SHEET PROTECT MSG]:", *library_);
}

void LibXLSheet::unmerge(Range range) {
    workbook::Sheet& sheet = changeable_sheet();
    merge_map_.reset();
    for (int index = sheet.merge_size() - 1; index >= 0; --index) {
        Range region;
        if (!sheet.merge(index, region.first_row, region.last_row, region.first_column,
                         region.last_column))
            continue;
        const bool lies_within =
            region.first_row >= range.first_row && region.first_column >= range.first_column &&
            region.last_row <= range.last_row && region.last_column <= range.last_column;
        if (lies_within && !sheet.delete_merge(index))
            fail("[LIBXL SHEET UNMERGE MSG]:", error_id::merge_not_removed);
    }
}

bool LibXLSheet::is_range_writeable(Range range) {
    const workbook::Sheet& sheet = library_sheet();
    if (!sheet.protect()) return true;
    for (std::int64_t row = range.first_row; row <= range.last_row; ++row)
        for (std::int64_t column = range.first_column; column <= range.last_column; ++column) {
            // Without a format a cell is locked, as every format is by default (ECMA-376 part 1,
            // 18.8.33).
            const workbook::Format* format =
                sheet.cell_format(static_cast<int>(row), static_cast<int>(column));
            if (!format || format->locked()) return false;
        }
    return true;
}

void LibXLSheet::auto_fit_column_widths(Range range) {
    workbook::Sheet& sheet = changeable_sheet();
    bool done = sheet.auto_fit_columns(range.first_column, range.last_column);
    for (auto column = date_columns_.lower_bound(range.first_column);
         column != date_columns_.end() && *column <= range.last_column; ++column)
        if (sheet.column_width(*column) < kLeastDateColumnWidth)
            done &= sheet.set_column_width(*column, kLeastDateColumnWidth);
    if (!done && library_) libxl::log_library_message("[LIBXL SHEET AUTOFIT MSG]:", *library_);
}

void LibXLSheet::fail(std::string_view tag, error_id id) const {
    if (library_) libxl::fail(tag, *library_, id);
    throw Exception(id);
}

} // namespace spreadsheet
