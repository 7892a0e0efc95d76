// SPDX-License-Identifier: Apache-2.0
//
// A grid sheet of a Google spreadsheet. Made by `GSheetWorkbook`; may be used for as long as the
// sheet is in its spreadsheet.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "spreadsheet/gsheet/google_worksheet.h"
#include "spreadsheet/online.h"
#include "spreadsheet/sheet_extras.h"
#include "spreadsheet/sheet_without_rules.h"

namespace spreadsheet {

/// `cell_types` and `prefetch` fetch a range in one request; reads of cells within the range
/// fetched last send none. Merged-cell rules are refused with `Exception` 43, typed writes without
/// a provider as well; a range that ends 500,001 rows or more behind its beginning with 56.
class GSheetWorksheet : public SheetWithoutRules, public OnlineSheet, public IFormulaWriter {
  public:
    explicit GSheetWorksheet(std::shared_ptr<GoogleSheetWorksheet> sheet);

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
    using SheetWithoutRules::cell_types;
    using SheetWithoutRules::read;
    using SheetWithoutRules::read_cell_array;
    using SheetWithoutRules::readDatesAsDoubles;
    void cell_types(const CellIterator& cells, cell_type* out) const override;
    void cell_types(Range range, cell_type* out) const override;

    std::vector<bool> get_merged_cells_vector() const override;
    std::vector<int> get_omit_rows_vector() const override;
    std::vector<int> get_omit_vars_vector() const override;
    void reset_merged_cells_vector() override;
    void reset_omit_vars_bool() override;
    void set_return_empty_vars_bool(const bool on) override;
    cell_type typeCheck(int row, int column) override;

    void read(Range range, unsigned char* out) const override;
    void read(Range range, bool* out) const override;
    void read(Range range, SerialDatenum* out) const override;
    void read(Range range, double* out) const override;
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

    Range get_data_span(Range range, const MergedCellColumnRule& column_rule,
                        const MergedCellRowRule& row_rule) override;
    void get_types(cell_type* out) override;
    void read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                         const bool dates_as_numbers) const override;
    void readDatesAsDoubles(Range range, double* out) const override;
    void prefetch(Range range, cell_type* out) const override;

    Grid grid() const override;
    bool may_write(const Range& range) const override;
    void write_formulas(Range range, const std::string_view* formulas) override;
    void replace(const Range& range, const cell_type* types, const CellProvider& provider,
                 bool keep_formats) override;
    void set_hidden(bool hidden) override;

  private:
    Exception refused_rules(std::source_location where) const override;

    std::shared_ptr<GoogleSheetWorksheet> sheet_;
};

} // namespace spreadsheet
