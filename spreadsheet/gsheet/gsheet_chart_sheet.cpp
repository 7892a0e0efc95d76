// SPDX-License-Identifier: Apache-2.0
//
// Object sheets have no cells.
#include "spreadsheet/gsheet/gsheet_chart_sheet.h"

#include <utility>

#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/trace.h"

namespace spreadsheet {
namespace {

[[noreturn]] void refuse(const char* function, int line) {
    const gsheet::Trace trace("gsheet/gsheet_chart_sheet", function, line);
    throw Exception(error_id::chart_sheet_unsupported);
}

} // namespace

GSheetChartSheet::GSheetChartSheet(std::shared_ptr<GoogleSheetWorksheet> sheet)
    : sheet_(std::move(sheet)) {}

bool GSheetChartSheet::operator==(const GSheetChartSheet&) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

std::shared_ptr<GoogleSheetWorksheet> GSheetChartSheet::get_sheet() const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::name(const std::u16string&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

std::u16string GSheetChartSheet::name() const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::hidden(sheet::hidden) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

sheet::hidden GSheetChartSheet::hidden() const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

bool GSheetChartSheet::is_protected() const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::set_protected(bool) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

Range GSheetChartSheet::used_range() const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::clear(Cell) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::clear(Range) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

Range GSheetChartSheet::named_range(const std::u16string&) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::cell_types(const CellIterator&, cell_type*) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

bool GSheetChartSheet::cell_types(Range, cell_type*, const MergedCellColumnRule&,
                                  const MergedCellRowRule&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::cell_types(Range, cell_type*) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

std::vector<bool> GSheetChartSheet::get_merged_cells_vector() const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

std::vector<int> GSheetChartSheet::get_omit_rows_vector() const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

std::vector<int> GSheetChartSheet::get_omit_vars_vector() const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::reset_merged_cells_vector() {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::reset_omit_vars_bool() {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::set_return_empty_vars_bool(const bool) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

cell_type GSheetChartSheet::typeCheck(int, int) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

bool GSheetChartSheet::read(Range, unsigned char*, const MergedCellColumnRule&,
                            const MergedCellRowRule&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::read(Range, unsigned char*) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

bool GSheetChartSheet::read(Range, bool*, const MergedCellColumnRule&, const MergedCellRowRule&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::read(Range, bool*) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

bool GSheetChartSheet::read(Range, SerialDatenum*, const MergedCellColumnRule&,
                            const MergedCellRowRule&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::read(Range, SerialDatenum*) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

bool GSheetChartSheet::read(Range, double*, const MergedCellColumnRule&, const MergedCellRowRule&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::read(Range, double*) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

bool GSheetChartSheet::read(Range, const StringBuilder&, const MergedCellColumnRule&,
                            const MergedCellRowRule&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::read(Range, const StringBuilder&) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::read(Range, const cell_type*, const CellBuilder&) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::write(Range, const unsigned char*) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::write(Range, const bool*) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::write(Range, const SerialDatenum*) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::write(Range, const double*) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::write(Range, const StringProvider&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::write(Range, const cell_type*, const CellProvider&, bool) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::auto_fit_column_widths(Range) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::unmerge(Range) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

bool GSheetChartSheet::is_range_writeable(Range) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

Range GSheetChartSheet::get_data_span(Range, const MergedCellColumnRule&,
                                      const MergedCellRowRule&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::get_types(cell_type*) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::read_cell_array(CellTypeIterator&, output::CellOutputBuilder&, const bool,
                                       const MergedCellColumnRule&, const MergedCellRowRule&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::read_cell_array(CellTypeIterator&, output::CellOutputBuilder&,
                                       const bool) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

bool GSheetChartSheet::readDatesAsDoubles(Range, double*, const MergedCellColumnRule&,
                                          const MergedCellRowRule&) {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::readDatesAsDoubles(Range, double*) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

void GSheetChartSheet::prefetch(Range, cell_type*) const {
    refuse(__PRETTY_FUNCTION__, __LINE__);
}

} // namespace spreadsheet
