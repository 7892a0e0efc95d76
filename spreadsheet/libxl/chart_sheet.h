// SPDX-License-Identifier: Apache-2.0
//
// The placeholder that stands for a chart sheet, so that the sheets after it keep their indices.
// Every operation on its data throws `Exception` 31.
#pragma once

#include "spreadsheet/libxl/libxl_sheet.h"

namespace spreadsheet {

class ChartSheet final : public LibXLSheet {
  public:
    void name(const std::u16string& new_name) override;
    std::u16string name() const override;
    void hidden(sheet::hidden state) override;
    sheet::hidden hidden() const override;
    bool is_protected() const override;
    void set_protected(bool on) override;
    Range used_range() const override;
    void clear(Cell cell) override;
    void clear(Range range) override;
    Range named_range(const std::u16string& name) const override;
    using LibXLSheet::cell_types;
    void cell_types(Range range, cell_type* out) const override;

    bool read(Range range, unsigned char* out, const MergedCellColumnRule& column_rule,
              const MergedCellRowRule& row_rule) override;
    void read(Range range, unsigned char* out) const override;
    bool read(Range range, bool* out, const MergedCellColumnRule& column_rule,
              const MergedCellRowRule& row_rule) override;
    void read(Range range, bool* out) const override;
    bool read(Range range, SerialDatenum* out, const MergedCellColumnRule& column_rule,
              const MergedCellRowRule& row_rule) override;
    void read(Range range, SerialDatenum* out) const override;
    bool read(Range range, double* out, const MergedCellColumnRule& column_rule,
              const MergedCellRowRule& row_rule) override;
    void read(Range range, double* out) const override;
    bool read(Range range, const StringBuilder& builder, const MergedCellColumnRule& column_rule,
              const MergedCellRowRule& row_rule) override;
    void read(Range range, const StringBuilder& builder) const override;
    void read(Range range, const cell_type* types, const CellBuilder& builder) const override;

    void write(Range range, const unsigned char* values) override;
    void write(Range range, const bool* values) override;
    void write(Range range, const SerialDatenum* values) override;
    void write(Range range, const double* values) override;
    void write(Range range, const StringProvider& provider) override;
    void write(Range range, const cell_type* types, const CellProvider& provider,
               bool preserve_format) override;
    void auto_fit_column_widths(Range range) override;
    void unmerge(Range range) override;
    bool is_range_writeable(Range range) override;

    void read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                         const bool dates_as_numbers, const MergedCellColumnRule& column_rule,
                         const MergedCellRowRule& row_rule) override;
    void read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                         const bool dates_as_numbers) const override;
    bool readDatesAsDoubles(Range range, double* out, const MergedCellColumnRule& column_rule,
                            const MergedCellRowRule& row_rule) override;
    void readDatesAsDoubles(Range range, double* out) const override;
};

} // namespace spreadsheet
