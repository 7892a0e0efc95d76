// SPDX-License-Identifier: Apache-2.0
//
// Object sheets have no cells.
#include "spreadsheet/gsheet/gsheet_chart_sheet.h"

#include <source_location>
#include <utility>

#include "spreadsheet/exception.h"
#include "spreadsheet/trace.h"

namespace spreadsheet {
namespace {

[[noreturn]] void refuse(std::source_location where = std::source_location::current()) {
    const Trace trace(where);
    throw Exception(error_id::chart_sheet_unsupported);
}

} // namespace

GSheetChartSheet::GSheetChartSheet(std::shared_ptr<GoogleSheetWorksheet> sheet)
    : sheet_(std::move(sheet)) {}

bool GSheetChartSheet::operator==(const GSheetChartSheet&) const {
    refuse();
}

std::shared_ptr<GoogleSheetWorksheet> GSheetChartSheet::get_sheet() const {
    refuse();
}

void GSheetChartSheet::name(const std::u16string&) {
    refuse();
}

std::u16string GSheetChartSheet::name() const {
    refuse();
}

void GSheetChartSheet::hidden(sheet::hidden) {
    refuse();
}

sheet::hidden GSheetChartSheet::hidden() const {
    refuse();
}

bool GSheetChartSheet::is_protected() const {
    refuse();
}

void GSheetChartSheet::set_protected(bool) {
    refuse();
}

Range GSheetChartSheet::used_range() const {
    refuse();
}

void GSheetChartSheet::clear(Cell) {
    refuse();
}

void GSheetChartSheet::clear(Range) {
    refuse();
}

Range GSheetChartSheet::named_range(const std::u16string&) const {
    refuse();
}

void GSheetChartSheet::cell_types(const CellIterator&, cell_type*) const {
    refuse();
}

bool GSheetChartSheet::cell_types(Range, cell_type*, const MergedCellColumnRule&,
                                  const MergedCellRowRule&) {
    refuse();
}

void GSheetChartSheet::cell_types(Range, cell_type*) const {
    refuse();
}

std::vector<bool> GSheetChartSheet::get_merged_cells_vector() const {
    refuse();
}

std::vector<int> GSheetChartSheet::get_omit_rows_vector() const {
    refuse();
}

std::vector<int> GSheetChartSheet::get_omit_vars_vector() const {
    refuse();
}

void GSheetChartSheet::reset_merged_cells_vector() {
    refuse();
}

void GSheetChartSheet::reset_omit_vars_bool() {
    refuse();
}

void GSheetChartSheet::set_return_empty_vars_bool(const bool) {
    refuse();
}

cell_type GSheetChartSheet::typeCheck(int, int) {
    refuse();
}

bool GSheetChartSheet::read(Range, unsigned char*, const MergedCellColumnRule&,
                            const MergedCellRowRule&) {
    refuse();
}

void GSheetChartSheet::read(Range, unsigned char*) const {
    refuse();
}

bool GSheetChartSheet::read(Range, bool*, const MergedCellColumnRule&, const MergedCellRowRule&) {
    refuse();
}

void GSheetChartSheet::read(Range, bool*) const {
    refuse();
}

bool GSheetChartSheet::read(Range, SerialDatenum*, const MergedCellColumnRule&,
                            const MergedCellRowRule&) {
    refuse();
}

void GSheetChartSheet::read(Range, SerialDatenum*) const {
    refuse();
}

bool GSheetChartSheet::read(Range, double*, const MergedCellColumnRule&, const MergedCellRowRule&) {
    refuse();
}

void GSheetChartSheet::read(Range, double*) const {
    refuse();
}

bool GSheetChartSheet::read(Range, const StringBuilder&, const MergedCellColumnRule&,
                            const MergedCellRowRule&) {
    refuse();
}

void GSheetChartSheet::read(Range, const StringBuilder&) const {
    refuse();
}

void GSheetChartSheet::read(Range, const cell_type*, const CellBuilder&) const {
    refuse();
}

void GSheetChartSheet::write(Range, const unsigned char*) {
    refuse();
}

void GSheetChartSheet::write(Range, const bool*) {
    refuse();
}

void GSheetChartSheet::write(Range, const SerialDatenum*) {
    refuse();
}

void GSheetChartSheet::write(Range, const double*) {
    refuse();
}

void GSheetChartSheet::write(Range, const StringProvider&) {
    refuse();
}

void GSheetChartSheet::write(Range, const cell_type*, const CellProvider&, bool) {
    refuse();
}

void GSheetChartSheet::auto_fit_column_widths(Range) {
    refuse();
}

void GSheetChartSheet::unmerge(Range) {
    refuse();
}

bool GSheetChartSheet::is_range_writeable(Range) {
    refuse();
}

Range GSheetChartSheet::get_data_span(Range, const MergedCellColumnRule&,
                                      const MergedCellRowRule&) {
    refuse();
}

void GSheetChartSheet::get_types(cell_type*) {
    refuse();
}

void GSheetChartSheet::read_cell_array(CellTypeIterator&, output::CellOutputBuilder&, const bool,
                                       const MergedCellColumnRule&, const MergedCellRowRule&) {
    refuse();
}

void GSheetChartSheet::read_cell_array(CellTypeIterator&, output::CellOutputBuilder&,
                                       const bool) const {
    refuse();
}

bool GSheetChartSheet::readDatesAsDoubles(Range, double*, const MergedCellColumnRule&,
                                          const MergedCellRowRule&) {
    refuse();
}

void GSheetChartSheet::readDatesAsDoubles(Range, double*) const {
    refuse();
}

void GSheetChartSheet::prefetch(Range, cell_type*) const {
    refuse();
}

} // namespace spreadsheet
