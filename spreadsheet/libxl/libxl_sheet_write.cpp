// SPDX-License-Identifier: Apache-2.0
//
// The changing side of a worksheet: typed writes, clearing, name, visibility, protection, merged
// regions, column widths. A cell that the library refuses, such as one beyond the last row, does
// not end a write.
#include <cstdint>
#include <type_traits>
#include <utility>

#include "spreadsheet/exception.h"
#include "spreadsheet/libxl/cell_value.h"
#include "spreadsheet/libxl/libxl_sheet.h"
#include "spreadsheet/range_walk.h"
#include "spreadsheet/typed_cells.h"

namespace spreadsheet {
namespace {

/// Columns of dates are at least this wide after a fit: room for a date with its time.
constexpr double kLeastDateColumnWidth = 14.71;

constexpr std::string_view kWriteTag = "[LIBXL SHEET WRITE MSG]:";

} // namespace

/// Cells on their way into the library. The first that it refuses is reported.
class LibXLSheet::CellWriter {
  public:
    CellWriter(LibXLSheet& owner, const Range& range)
        : owner_(owner), sheet_(owner.changeable_sheet()) {
        sheet_.expect_cells(range.first_row, range.last_row, range.first_column, range.last_column);
    }

    void put(int row, int column, const CellValue& value, const workbook::Format* format) {
        switch (value.kind) {
        case CellValue::Kind::Blank:
            return check(sheet_.write_blank(row, column, format));
        case CellValue::Kind::Number:
            return check(sheet_.write_num(row, column, value.number, format));
        case CellValue::Kind::Text:
            return check(sheet_.write_str(row, column, value.text, format));
        case CellValue::Kind::Date:
            return check(sheet_.write_num(row, column, value.number, owner_.date_format_));
        case CellValue::Kind::Boolean:
            return check(sheet_.write_bool(row, column, value.number != 0.0, format));
        }
    }

    void put_empty_text(int row, int column, const workbook::Format* format) {
        check(sheet_.write_str(row, column, u"", format));
    }

  private:
    void check(bool is_written) {
        if (is_written || failed_) return;
        failed_ = true;
        owner_.note_failure(kWriteTag);
    }

    LibXLSheet& owner_;
    workbook::Sheet& sheet_;
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
    const auto write = [&] {
        CellWriter writer(*this, range);
        for_each_cell(range, [&](int row, int column) { write_cell(writer, row, column); });
    };
    if (reporter_ != nullptr)
        reporter_->run(kWriteTag, error_id::write_failed, write);
    else
        write();
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
    const workbook::Sheet& sheet =
        preserve_format ? sheet_with_rows(range.first_row, range.last_row) : library_sheet();
    write_cells(range, [&](CellWriter& writer, int row, int column) {
        const workbook::Format* format = preserve_format ? sheet.cell_format(row, column) : nullptr;
        take_cell(provider, *types++, [&](auto value) {
            using Value = decltype(value);
            if constexpr (std::is_same_v<Value, NoValue>) {
                writer.put_empty_text(row, column, format);
            } else if constexpr (std::is_same_v<Value, SerialDatenum>) {
                writer.put(row, column, CellValue::of(value, date_offset_), format);
                date_columns_.insert(column);
            } else {
                writer.put(row, column, CellValue::of(std::move(value)), format);
            }
        });
    });
}

void LibXLSheet::write_formulas(Range range, const std::string_view* formulas) {
    const workbook::Sheet& known = sheet_with_rows(range.first_row, range.last_row);
    workbook::Sheet& sheet = changeable_sheet();
    for_each_cell(range, [&](int row, int column) {
        if (!sheet.write_formula(row, column, *formulas++, known.cell_format(row, column)))
            fail(kWriteTag, error_id::write_failed);
    });
}

void LibXLSheet::clear(Cell cell) {
    clear(Range{cell.row, cell.column, cell.row, cell.column});
}

void LibXLSheet::clear(Range range) {
    workbook::Sheet& sheet = changeable_sheet();
    if (is_empty(range)) return; // such as the used range of an empty sheet
    if (!sheet.clear(range.first_row, range.last_row, range.first_column, range.last_column))
        fail("[LIBXL SHEET CLEAR MSG]:", error_id::range_not_cleared);
}

void LibXLSheet::name(const std::u16string& new_name) {
    if (!changeable_sheet().set_name(new_name)) note_failure("[LIBXL SHEET NAME MSG]:");
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
    return sheet_with_tail().protect();
}

void LibXLSheet::set_protected(bool on) {
    if (!changeable_sheet().set_protect(on)) note_failure("[LIBXL SHEET PROTECT MSG]:");
}

void LibXLSheet::unmerge(Range range) {
    sheet_with_tail();
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
    if (!sheet_with_tail().protect()) return true;
    const workbook::Sheet& sheet = sheet_with_rows(range.first_row, range.last_row);
    for (std::int64_t row = range.first_row; row <= range.last_row; ++row)
        for (std::int64_t column = range.first_column; column <= range.last_column; ++column) {
            const workbook::Format* format =
                sheet.cell_format(static_cast<int>(row), static_cast<int>(column));
            if (format == nullptr) format = default_format_;
            // A format is locked unless it says otherwise (ECMA-376 part 1, 18.8.33).
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
    if (!done) note_failure("[LIBXL SHEET AUTOFIT MSG]:");
}

void LibXLSheet::fail(std::string_view tag, error_id id) const {
    if (reporter_ != nullptr) reporter_->fail(tag, id);
    throw Exception(id);
}

void LibXLSheet::note_failure(std::string_view tag) const {
    if (reporter_ != nullptr) reporter_->note(tag);
}

} // namespace spreadsheet
