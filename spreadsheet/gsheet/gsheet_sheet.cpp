// SPDX-License-Identifier: Apache-2.0
//
// Hands the operations of a sheet on, and refuses those that the service has no counterpart for.
#include "spreadsheet/gsheet/gsheet_sheet.h"

#include <string_view>
#include <utility>

#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/trace.h"

namespace spreadsheet {
namespace {

[[noreturn]] void refuse(std::string_view reason) {
    gsheet::log_line(foundation::log::error, reason);
    throw Exception(error_id::google_unsupported);
}

[[noreturn]] void refuse_variables() {
    refuse("Writing individaul variables is currently not a supported workflow.");
}

} // namespace

GSheetWorksheet::GSheetWorksheet(std::shared_ptr<GoogleSheetWorksheet> sheet)
    : sheet_(std::move(sheet)) {}

void GSheetWorksheet::name(const std::u16string& new_name) {
    const Trace trace;
    sheet_->rename(new_name);
}

std::u16string GSheetWorksheet::name() const {
    const Trace trace;
    return sheet_->properties().title;
}

void GSheetWorksheet::hidden(sheet::hidden) {
    const Trace trace;
    // The service has the state, but this back-end only reads it.
}

sheet::hidden GSheetWorksheet::hidden() const {
    const Trace trace;
    return sheet_->properties().hidden ? sheet::hidden::hidden : sheet::hidden::visible;
}

bool GSheetWorksheet::is_protected() const {
    const Trace trace;
    return sheet_->properties().is_protected;
}

void GSheetWorksheet::set_protected(bool on) {
    const Trace trace;
    sheet_->set_protected(on);
}

Range GSheetWorksheet::used_range() const {
    const Trace trace;
    return sheet_->used_range();
}

void GSheetWorksheet::clear(Cell) {
    const Trace trace;
    // Ranges are cleared, single cells are not.
}

void GSheetWorksheet::clear(Range range) {
    const Trace trace;
    sheet_->clear(range);
}

Range GSheetWorksheet::named_range(const std::u16string& name) const {
    const Trace trace;
    return sheet_->named_range(name);
}

void GSheetWorksheet::cell_types(const CellIterator& cells, cell_type* out) const {
    const Trace trace;
    sheet_->cell_types(cells, out);
}

void GSheetWorksheet::cell_types(Range range, cell_type* out) const {
    const Trace trace;
    sheet_->fetch_types(range, out);
}

std::vector<bool> GSheetWorksheet::get_merged_cells_vector() const {
    const Trace trace;
    return {};
}

std::vector<int> GSheetWorksheet::get_omit_rows_vector() const {
    const Trace trace;
    return {};
}

std::vector<int> GSheetWorksheet::get_omit_vars_vector() const {
    const Trace trace;
    return {};
}

void GSheetWorksheet::reset_merged_cells_vector() {
    const Trace trace;
}

void GSheetWorksheet::reset_omit_vars_bool() {
    const Trace trace;
}

void GSheetWorksheet::set_return_empty_vars_bool(const bool) {
    const Trace trace;
}

cell_type GSheetWorksheet::typeCheck(int, int) {
    const Trace trace;
    gsheet::log_line(foundation::log::error, "typeCheck method should never be called");
    return cell_type::error;
}

void GSheetWorksheet::read(Range range, unsigned char* out) const {
    const Trace trace;
    sheet_->read(range, out);
}

void GSheetWorksheet::read(Range range, bool* out) const {
    const Trace trace;
    sheet_->read(range, out);
}

void GSheetWorksheet::read(Range range, SerialDatenum* out) const {
    const Trace trace;
    sheet_->read(range, out);
}

void GSheetWorksheet::read(Range range, double* out) const {
    const Trace trace;
    sheet_->read(range, out);
}

void GSheetWorksheet::read(Range range, const StringBuilder& builder) const {
    const Trace trace;
    sheet_->read(range, builder);
}

void GSheetWorksheet::read(Range range, const cell_type* types, const CellBuilder& builder) const {
    const Trace trace;
    sheet_->read(range, types, builder);
}

void GSheetWorksheet::write(Range, const unsigned char*) {
    const Trace trace;
    refuse_variables();
}

void GSheetWorksheet::write(Range, const bool*) {
    const Trace trace;
    refuse_variables();
}

void GSheetWorksheet::write(Range, const SerialDatenum*) {
    const Trace trace;
    refuse_variables();
}

void GSheetWorksheet::write(Range, const double*) {
    const Trace trace;
    refuse_variables();
}

void GSheetWorksheet::write(Range, const StringProvider&) {
    const Trace trace;
    refuse_variables();
}

void GSheetWorksheet::write(Range range, const cell_type* types, const CellProvider& provider,
                            bool preserve_format) {
    const Trace trace;
    sheet_->write(range, types, provider, preserve_format);
}

void GSheetWorksheet::auto_fit_column_widths(Range range) {
    const Trace trace;
    sheet_->auto_fit_column_widths(range);
}

void GSheetWorksheet::unmerge(Range range) {
    const Trace trace;
    sheet_->unmerge(range);
}

bool GSheetWorksheet::is_range_writeable(Range range) {
    const Trace trace;
    return sheet_->is_range_writeable(range);
}

Range GSheetWorksheet::get_data_span(Range, const MergedCellColumnRule&, const MergedCellRowRule&) {
    const Trace trace;
    return sheet_->used_range();
}

void GSheetWorksheet::get_types(cell_type*) {
    const Trace trace;
}

void GSheetWorksheet::read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                                      const bool dates_as_numbers) const {
    const Trace trace;
    sheet_->read_cell_array(cells, builder, dates_as_numbers);
}

void GSheetWorksheet::readDatesAsDoubles(Range range, double* out) const {
    const Trace trace;
    sheet_->read(range, out);
}

void GSheetWorksheet::prefetch(Range range, cell_type* out) const {
    const Trace trace;
    sheet_->fetch_types(range, out);
}

OnlineSheet::Grid GSheetWorksheet::grid() const {
    const Trace trace;
    return {sheet_->properties().row_count, sheet_->properties().column_count};
}

bool GSheetWorksheet::may_write(const Range& range) const {
    const Trace trace;
    return sheet_->may_write(range);
}

void GSheetWorksheet::replace(const Range& range, const cell_type* types,
                              const CellProvider& provider, bool keep_formats) {
    const Trace trace;
    sheet_->replace(range, types, provider, keep_formats);
}

void GSheetWorksheet::write_formulas(Range range, const std::string_view* formulas) {
    const Trace trace;
    sheet_->write_formulas(range, formulas);
}

void GSheetWorksheet::set_hidden(bool hidden) {
    const Trace trace;
    sheet_->set_hidden(hidden);
}

Exception GSheetWorksheet::refused_rules(std::source_location where) const {
    const Trace trace(where, "gsheet/gsheet_sheet");
    refuse("MergedCellColumnRule and MergedCellRowRule are not supported with Google Sheets.");
}

} // namespace spreadsheet
