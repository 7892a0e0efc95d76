// SPDX-License-Identifier: Apache-2.0
//
// Chart sheets have no cells.
#include "spreadsheet/libxl/chart_sheet.h"

#include "spreadsheet/exception.h"

namespace spreadsheet {
namespace {

[[noreturn]] void refuse() {
    throw Exception(error_id::chart_sheet_unsupported);
}

} // namespace

void ChartSheet::name(const std::u16string&) {
    refuse();
}

std::u16string ChartSheet::name() const {
    refuse();
}

void ChartSheet::hidden(sheet::hidden) {
    refuse();
}

sheet::hidden ChartSheet::hidden() const {
    refuse();
}

bool ChartSheet::is_protected() const {
    refuse();
}

void ChartSheet::set_protected(bool) {
    refuse();
}
Range ChartSheet::used_range() const {
    refuse();
}

void ChartSheet::clear(Cell) {
    refuse();
}

void ChartSheet::clear(Range) {
    refuse();
}
Range ChartSheet::named_range(const std::u16string&) const {
    refuse();
}

void ChartSheet::cell_types(Range, cell_type*) const {
    refuse();
}

bool ChartSheet::read(Range, unsigned char*, const MergedCellColumnRule&,
                      const MergedCellRowRule&) {
    refuse();
}

void ChartSheet::read(Range, unsigned char*) const {
    refuse();
}

bool ChartSheet::read(Range, bool*, const MergedCellColumnRule&, const MergedCellRowRule&) {
    refuse();
}

void ChartSheet::read(Range, bool*) const {
    refuse();
}

bool ChartSheet::read(Range, SerialDatenum*, const MergedCellColumnRule&,
                      const MergedCellRowRule&) {
    refuse();
}

void ChartSheet::read(Range, SerialDatenum*) const {
    refuse();
}

bool ChartSheet::read(Range, double*, const MergedCellColumnRule&, const MergedCellRowRule&) {
    refuse();
}

void ChartSheet::read(Range, double*) const {
    refuse();
}

bool ChartSheet::read(Range, const StringBuilder&, const MergedCellColumnRule&,
                      const MergedCellRowRule&) {
    refuse();
}

void ChartSheet::read(Range, const StringBuilder&) const {
    refuse();
}

void ChartSheet::read(Range, const cell_type*, const CellBuilder&) const {
    refuse();
}

void ChartSheet::write(Range, const unsigned char*) {
    refuse();
}

void ChartSheet::write(Range, const bool*) {
    refuse();
}

void ChartSheet::write(Range, const SerialDatenum*) {
    refuse();
}

void ChartSheet::write(Range, const double*) {
    refuse();
}

void ChartSheet::write(Range, const StringProvider&) {
    refuse();
}

void ChartSheet::write(Range, const cell_type*, const CellProvider&, bool) {
    refuse();
}

void ChartSheet::auto_fit_column_widths(Range) {
    refuse();
}

void ChartSheet::unmerge(Range) {
    refuse();
}

bool ChartSheet::is_range_writeable(Range) {
    refuse();
}

void ChartSheet::read_cell_array(CellTypeIterator&, output::CellOutputBuilder&, const bool,
                                 const MergedCellColumnRule&, const MergedCellRowRule&) {
    refuse();
}

void ChartSheet::read_cell_array(CellTypeIterator&, output::CellOutputBuilder&, const bool) const {
    refuse();
}

bool ChartSheet::readDatesAsDoubles(Range, double*, const MergedCellColumnRule&,
                                    const MergedCellRowRule&) {
    refuse();
}

void ChartSheet::readDatesAsDoubles(Range, double*) const {
    refuse();
}

} // namespace spreadsheet
