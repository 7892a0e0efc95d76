// SPDX-License-Identifier: Apache-2.0
//
// A worksheet of a workbook file. Made by `LibXLBook` only, which must outlive it: the sheet holds
// plain handles of the workbook library.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "spreadsheet/exception.h"
#include "spreadsheet/libxl/library_failure.h"
#include "spreadsheet/libxl/merged_cells.h"
#include "spreadsheet/sheet.h"
#include "spreadsheet/sheet_extras.h"
#include "workbook/library.h"

namespace spreadsheet {

class MergeRecord;

class LibXLSheet : public ISheet, public ISheetExtras, public IFormulaWriter {
  public:
    /// A sheet without a handle, for `ChartSheet`: whatever would ask the library throws
    /// `Exception` 31.
    LibXLSheet() = default;
    /// What the sheets of a book have in common.
    struct Common {
        const workbook::Format* date_format = nullptr;    ///< that dates are written with
        const workbook::Format* default_format = nullptr; ///< of cells that have no other
        bool dates_1904 = false;
        libxl::FailureReporter* reporter = nullptr; ///< without it failures are not logged
    };
    LibXLSheet(workbook::Sheet& sheet, const Common& common);

    /// The library's sheet, null for a chart sheet and a removed one.
    workbook::Sheet* handle() const { return sheet_; }
    /// The sheet has been removed from its book: every operation throws `Exception` 6 from now on.
    void detach();

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
    using ISheet::cell_types;
    void cell_types(const CellIterator& cells, cell_type* out) const override;
    bool cell_types(Range range, cell_type* out, const MergedCellColumnRule& column_rule,
                    const MergedCellRowRule& row_rule) override;
    void cell_types(Range range, cell_type* out) const override;

    std::vector<bool> get_merged_cells_vector() const override;
    std::vector<int> get_omit_rows_vector() const override;
    std::vector<int> get_omit_vars_vector() const override;
    void reset_merged_cells_vector() override;
    void reset_omit_vars_bool() override;
    void set_return_empty_vars_bool(const bool on) override;
    cell_type typeCheck(int row, int column) override;

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

    Range get_data_span(Range range, const MergedCellColumnRule& column_rule,
                        const MergedCellRowRule& row_rule) override;
    void read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                         const bool dates_as_numbers, const MergedCellColumnRule& column_rule,
                         const MergedCellRowRule& row_rule) override;
    void read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                         const bool dates_as_numbers) const override;
    bool readDatesAsDoubles(Range range, double* out, const MergedCellColumnRule& column_rule,
                            const MergedCellRowRule& row_rule) override;
    void readDatesAsDoubles(Range range, double* out) const override;
    void prefetch(Range range, cell_type* out) const override;

    Range filled_range() const override;
    std::optional<Range> next_row_of_cells(int row) const override;
    void number_styles(Range range, number_style* out) const override;
    std::vector<Range> merged_ranges() const override;
    std::uint64_t formulas_without_result() const override;
    bool read_formulas(int first_row, int last_row, const FormulaBuilder& builder) const override;
    void write_formulas(Range range, const std::string_view* formulas) override;

  private:
    /// Where a typed read puts its cells; the alternative decides how a cell is read.
    using Destination = std::variant<double*, SerialDatenum*, bool*, unsigned char*, StringBuilder>;

    /// The library's sheet; `Exception` 31 without one, 6 when it was removed.
    const workbook::Sheet& library_sheet() const;
    /// The same for an operation that changes it, which makes spans found before invalid.
    workbook::Sheet& changeable_sheet();
    /// The library's sheet, with rows `first_row` to `last_row` (inclusive) or what follows the
    /// cells (merged regions, protection) read if a load of other rows left them out. `Exception` 9
    /// when they cannot be read.
    const workbook::Sheet& sheet_with_rows(int first_row, int last_row) const;
    const workbook::Sheet& sheet_with_tail() const;
    /// Writes the values of `next_value()`, one per cell, column after column, without formats.
    template <class NextValue>
    void write_all(const Range& range, NextValue next_value);
    class CellWriter;
    /// Calls `write_cell(writer, row, column)` for every cell, column after column.
    template <class WriteCell>
    void write_cells(const Range& range, WriteCell write_cell);
    void note_dates(const Range& range);
    /// Reports that an operation failed, with the library's reason, and throws `Exception` `id`.
    [[noreturn]] void fail(std::string_view tag, error_id id) const;
    /// Reports a failure that the operation's interface has no way to return.
    void note_failure(std::string_view tag) const;
    void read_all(const Range& range, const Destination& destination) const;
    bool read_with_rules(const Range& range, const Destination& destination,
                         const MergeRules& rules);

    /// Reads the merged regions on first use.
    MergedCells& merged_cells_of_sheet();
    /// Resolves the cells of `range` column after column and hands each source to `per_cell`.
    template <class PerCell>
    bool walk_with_rules(const Range& range, const MergeRules& rules, PerCell per_cell);
    /// Resolves one cell and enters the outcome into `record`.
    MergeSource resolve_and_record(Cell cell, const MergeRules& rules, MergeRecord& record) const;
    /// Takes over what a walk with rules has found.
    void keep(MergeRecord record);

    workbook::Sheet* sheet_ = nullptr;
    libxl::FailureReporter* reporter_ = nullptr;
    const workbook::Format* date_format_ = nullptr;
    const workbook::Format* default_format_ = nullptr;
    double date_offset_ = 0.0; ///< days, added to every date read, taken from every date written
    bool data_span_cached_ = false;
    Range data_span_;
    std::optional<MergedCells> merge_map_; ///< empty until the first read with rules
    bool use_filled_bounds_ = false;
    std::vector<bool> merged_cells_;
    std::vector<int> omit_rows_;
    std::vector<int> omit_vars_;
    bool omitted_vars_ = false;
    bool return_empty_vars_ = true;
    bool removed_ = false;
    std::set<int> date_columns_; ///< columns that dates were written to
};

} // namespace spreadsheet
