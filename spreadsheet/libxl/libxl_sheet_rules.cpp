// SPDX-License-Identifier: Apache-2.0
//
// Reads that take merged-cell rules: each cell is resolved to the cell that gives it its value,
// then read like any other.
#include <cstddef>
#include <utility>

#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/libxl/cell_readers.h"
#include "spreadsheet/libxl/libxl_sheet.h"
#include "spreadsheet/libxl/merge_record.h"
#include "spreadsheet/range_walk.h"
#include "spreadsheet/typed_cells.h"

namespace spreadsheet {
namespace {

bool cell_has_value(const workbook::Sheet& sheet, const MergeSource& source) {
    if (!source.has_value()) return false;
    const workbook::CellKind kind = sheet.cell_type(source.row, source.column);
    return kind != workbook::CellKind::Empty && kind != workbook::CellKind::Blank;
}

} // namespace

MergedCells& LibXLSheet::merged_cells_of_sheet() {
    if (!merge_map_) {
        const workbook::Sheet& sheet = sheet_with_tail();
        std::vector<Range> regions;
        for (int index = 0; index < sheet.merge_size(); ++index) {
            Range region;
            if (sheet.merge(index, region.first_row, region.last_row, region.first_column,
                            region.last_column))
                regions.push_back(region);
        }
        merge_map_.emplace(std::move(regions));
    }
    return *merge_map_;
}

MergeSource LibXLSheet::resolve_and_record(Cell cell, const MergeRules& rules,
                                           MergeRecord& record) const {
    const Range* region = merge_map_->region(cell);
    const MergeSource source = region ? resolve_merged_cell(*region, cell, rules)
                                      : MergeSource{cell.row, cell.column, MergeOrientation::none};
    record.add(region != nullptr, source.omission,
               record.needs_value() && cell_has_value(*sheet_, source));
    return source;
}

template <class PerCell>
bool LibXLSheet::walk_with_rules(const Range& range, const MergeRules& rules, PerCell per_cell) {
    merged_cells_of_sheet().map_cells(range);
    MergeRecord record(extent(range.first_row, range.last_row),
                       extent(range.first_column, range.last_column), !return_empty_vars_);
    for_each_cell(range, [&](int row, int column) {
        per_cell(resolve_and_record({row, column}, rules, record));
    });
    keep(std::move(record));
    return omitted_vars_;
}

void LibXLSheet::keep(MergeRecord record) {
    merged_cells_ = record.take_merged_cells();
    omit_rows_ = record.omitted_rows();
    omit_vars_ = record.take_omitted_columns();
    omitted_vars_ = omitted_vars_ || !omit_vars_.empty();
}

bool LibXLSheet::cell_types(Range range, cell_type* out, const MergedCellColumnRule& column_rule,
                            const MergedCellRowRule& row_rule) {
    const workbook::Sheet& sheet = sheet_with_rows(range.first_row, range.last_row);
    return walk_with_rules(range, {column_rule, row_rule}, [&](const MergeSource& source) {
        *out++ = source.has_value() ? classify(sheet, source.row, source.column) : cell_type::empty;
    });
}

bool LibXLSheet::read_with_rules(const Range& range, const Destination& destination,
                                 const MergeRules& rules) {
    const workbook::Sheet& sheet = sheet_with_rows(range.first_row, range.last_row);
    return std::visit(
        [&](const auto& out) {
            auto reader = make_reader(sheet, out, date_offset_);
            std::size_t index = 0;
            return walk_with_rules(range, rules, [&](const MergeSource& source) {
                if (source.has_value())
                    reader.cell(index, source.row, source.column);
                else
                    reader.absent(index);
                ++index;
            });
        },
        destination);
}

bool LibXLSheet::read(Range range, unsigned char* out, const MergedCellColumnRule& column_rule,
                      const MergedCellRowRule& row_rule) {
    return read_with_rules(range, out, {column_rule, row_rule});
}

bool LibXLSheet::read(Range range, bool* out, const MergedCellColumnRule& column_rule,
                      const MergedCellRowRule& row_rule) {
    return read_with_rules(range, out, {column_rule, row_rule});
}

bool LibXLSheet::read(Range range, SerialDatenum* out, const MergedCellColumnRule& column_rule,
                      const MergedCellRowRule& row_rule) {
    return read_with_rules(range, out, {column_rule, row_rule});
}

bool LibXLSheet::read(Range range, double* out, const MergedCellColumnRule& column_rule,
                      const MergedCellRowRule& row_rule) {
    return read_with_rules(range, out, {column_rule, row_rule});
}

bool LibXLSheet::readDatesAsDoubles(Range range, double* out,
                                    const MergedCellColumnRule& column_rule,
                                    const MergedCellRowRule& row_rule) {
    return read_with_rules(range, out, {column_rule, row_rule});
}

bool LibXLSheet::read(Range range, const StringBuilder& builder,
                      const MergedCellColumnRule& column_rule, const MergedCellRowRule& row_rule) {
    return read_with_rules(range, builder, {column_rule, row_rule});
}

void LibXLSheet::read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                                 const bool dates_as_numbers,
                                 const MergedCellColumnRule& column_rule,
                                 const MergedCellRowRule& row_rule) {
    LibraryCell cell(library_sheet(), date_offset_);
    merged_cells_of_sheet().map_cells(cells.row_blocks(), cells.column_indices());
    MergeRecord record(cells.rows(), cells.columns(), !return_empty_vars_);
    builder.begin(cells.rows(), cells.columns());
    for (cells.rewind(); !cells.at_end(); ++cells) {
        const CellIterator::Indices at = *cells;
        const MergeSource source =
            resolve_and_record({at.row, at.column}, {column_rule, row_rule}, record);
        if (source.has_value())
            deliver(builder, cells.type(), dates_as_numbers,
                    cell.select(source.row, source.column));
        else
            builder.add_empty();
    }
    keep(std::move(record));
}

std::vector<bool> LibXLSheet::get_merged_cells_vector() const {
    return merged_cells_;
}

std::vector<int> LibXLSheet::get_omit_rows_vector() const {
    return omit_rows_;
}

std::vector<int> LibXLSheet::get_omit_vars_vector() const {
    return omit_vars_;
}

void LibXLSheet::reset_merged_cells_vector() {
    merged_cells_.clear();
}

void LibXLSheet::reset_omit_vars_bool() {
    omitted_vars_ = false;
}

void LibXLSheet::set_return_empty_vars_bool(const bool on) {
    return_empty_vars_ = on;
}

} // namespace spreadsheet
