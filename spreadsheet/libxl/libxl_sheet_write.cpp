// SPDX-License-Identifier: Apache-2.0
//
// The changing side of a worksheet: name, visibility, protection. The workbook library has no
// writing operations, so whatever would change the workbook is refused.
#include "spreadsheet/exception.h"
#include "spreadsheet/libxl/library_failure.h"
#include "spreadsheet/libxl/libxl_sheet.h"

namespace spreadsheet {

using libxl::refuse_writing;

void LibXLSheet::name(const std::u16string&) {
    refuse_writing(error_id::write_failed);
}

std::u16string LibXLSheet::name() const {
    return std::u16string(library_sheet().name());
}

void LibXLSheet::hidden(sheet::hidden) {
    refuse_writing(error_id::hidden_state_not_set);
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

void LibXLSheet::set_protected(bool) {
    refuse_writing(error_id::write_failed);
}

void LibXLSheet::clear(Cell) {
    refuse_writing(error_id::range_not_cleared);
}

void LibXLSheet::clear(Range) {
    refuse_writing(error_id::range_not_cleared);
}

void LibXLSheet::write(Range, const unsigned char*) {
    refuse_writing(error_id::write_failed);
}

void LibXLSheet::write(Range, const bool*) {
    refuse_writing(error_id::write_failed);
}

void LibXLSheet::write(Range, const SerialDatenum*) {
    refuse_writing(error_id::write_failed);
}

void LibXLSheet::write(Range, const double*) {
    refuse_writing(error_id::write_failed);
}

void LibXLSheet::write(Range, const StringProvider&) {
    refuse_writing(error_id::write_failed);
}

void LibXLSheet::write(Range, const cell_type*, const CellProvider&, bool) {
    refuse_writing(error_id::write_failed);
}

void LibXLSheet::auto_fit_column_widths(Range) {
    refuse_writing(error_id::write_failed);
}

void LibXLSheet::unmerge(Range) {
    refuse_writing(error_id::merge_not_removed);
}

bool LibXLSheet::is_range_writeable(Range range) {
    const workbook::Sheet& sheet = library_sheet();
    if (!sheet.protect()) return true;
    for (int row = range.first_row; row <= range.last_row; ++row)
        for (int column = range.first_column; column <= range.last_column; ++column) {
            // A cell that does not exist is locked, as every format is by default (ECMA-376 part 1,
            // 18.8.33).
            const workbook::Format* format = sheet.cell_format(row, column);
            if (!format || format->locked()) return false;
        }
    return true;
}

} // namespace spreadsheet
