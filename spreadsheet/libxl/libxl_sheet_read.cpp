// SPDX-License-Identifier: Apache-2.0
//
// The reading side of a worksheet: what cells are, bounds and spans, typed reads.
#include <cstddef>
#include <string>

#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/libxl/cell_readers.h"
#include "spreadsheet/libxl/data_span.h"
#include "spreadsheet/libxl/libxl_sheet.h"
#include "spreadsheet/limits.h"
#include "spreadsheet/range_walk.h"
#include "spreadsheet/typed_cells.h"

namespace spreadsheet {
namespace {

constexpr std::string_view kLoadTag = "[LIBXL SHEET LOAD MSG]:";

} // namespace

LibXLSheet::LibXLSheet(workbook::Sheet& sheet, const Common& common)
    : sheet_(&sheet),
      reporter_(common.reporter),
      date_format_(common.date_format),
      default_format_(common.default_format),
      date_offset_(common.dates_1904 ? kDateSystemOffsetDays : 0.0) {}

const workbook::Sheet& LibXLSheet::library_sheet() const {
    if (removed_) throw Exception(error_id::sheet_not_found);
    if (!sheet_) throw Exception(error_id::chart_sheet_unsupported);
    return *sheet_;
}

const workbook::Sheet& LibXLSheet::sheet_with_rows(int first_row, int last_row) const {
    const workbook::Sheet& sheet = library_sheet();
    if (!sheet.need_rows(first_row, last_row)) fail(kLoadTag, error_id::book_not_loaded);
    return sheet;
}

const workbook::Sheet& LibXLSheet::sheet_with_tail() const {
    const workbook::Sheet& sheet = library_sheet();
    if (!sheet.need_tail()) fail(kLoadTag, error_id::book_not_loaded);
    return sheet;
}

void LibXLSheet::detach() {
    sheet_ = nullptr;
    removed_ = true;
}

Range LibXLSheet::used_range() const {
    const workbook::Sheet& sheet = library_sheet();
    if (use_filled_bounds_)
        return {sheet.first_filled_row(), sheet.first_filled_column(), sheet.end_filled_row() - 1,
                sheet.end_filled_column() - 1};
    return {sheet.first_row(), sheet.first_column(), sheet.end_row() - 1, sheet.end_column() - 1};
}

Range LibXLSheet::named_range(const std::u16string& name) const {
    Range range;
    if (!library_sheet().named_range(name, range.first_row, range.last_row, range.first_column,
                                     range.last_column))
        throw Exception(error_id::named_range_not_found);
    return range;
}

Range LibXLSheet::get_data_span(Range range, const MergedCellColumnRule& column_rule,
                                const MergedCellRowRule& row_rule) {
    const bool with_rules =
        column_rule != MergedCellColumnRule::first || row_rule != MergedCellRowRule::first;
    if (!data_span_cached_ || with_rules) {
        use_filled_bounds_ = with_rules;
        data_span_ =
            find_data_span(library_sheet(), {range.first_row, range.first_column}, used_range());
        data_span_cached_ = true;
    }
    return data_span_;
}

cell_type LibXLSheet::typeCheck(int row, int column) {
    return classify(library_sheet(), row, column);
}

void LibXLSheet::cell_types(Range range, cell_type* out) const {
    const workbook::Sheet& sheet = sheet_with_rows(range.first_row, range.last_row);
    for_each_cell_by_row(range, [&](std::size_t index, int row, int column) {
        out[index] = classify(sheet, row, column);
    });
}

void LibXLSheet::cell_types(const CellIterator& cells, cell_type* out) const {
    const workbook::Sheet& sheet = library_sheet();
    for (const CellIterator::Indices at : cells)
        *out++ = classify(sheet, at.row, at.column);
}

// --- Typed reads

void LibXLSheet::read_all(const Range& range, const Destination& destination) const {
    const workbook::Sheet& sheet = sheet_with_rows(range.first_row, range.last_row);
    std::visit([&](const auto& out) { read_range(make_reader(sheet, out, date_offset_), range); },
               destination);
}

void LibXLSheet::read(Range range, unsigned char* out) const {
    read_all(range, out);
}

void LibXLSheet::read(Range range, bool* out) const {
    read_all(range, out);
}

void LibXLSheet::read(Range range, SerialDatenum* out) const {
    read_all(range, out);
}

void LibXLSheet::read(Range range, double* out) const {
    read_all(range, out);
}

void LibXLSheet::readDatesAsDoubles(Range range, double* out) const {
    read_all(range, out);
}

void LibXLSheet::read(Range range, const StringBuilder& builder) const {
    read_all(range, builder);
}

void LibXLSheet::read(Range range, const cell_type* types, const CellBuilder& builder) const {
    LibraryCell cell(sheet_with_rows(range.first_row, range.last_row), date_offset_);
    for_each_cell(
        range, [&](int row, int column) { deliver(builder, *types++, cell.select(row, column)); });
}

void LibXLSheet::read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                                 const bool dates_as_numbers) const {
    LibraryCell cell(library_sheet(), date_offset_);
    builder.begin(cells.rows(), cells.columns());
    for (cells.rewind(); !cells.at_end(); ++cells)
        deliver(builder, cells.type(), dates_as_numbers,
                cell.select((*cells).row, (*cells).column));
}

void LibXLSheet::prefetch(Range, cell_type*) const {
    throw Exception(error_id::google_only);
}

} // namespace spreadsheet
