// SPDX-License-Identifier: Apache-2.0
//
// The interface of a sheet, whatever holds its workbook. The order of the virtual functions is part
// of the interface.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/export.h"
#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/range.h"

namespace spreadsheet {

class CellIterator;
class CellTypeIterator;

/// A sheet of a workbook. Rows and columns are zero-based. Arrays hold one element per cell of the
/// range, column after column, and belong to the caller:
///
///     std::vector<cell_type> types = sheet->cell_types(range);
///     std::vector<double> numbers(static_cast<std::size_t>(range.count()));
///     sheet->read(range, numbers.data());
///
/// The variants that take merged-cell rules apply them and return whether a column was left out
/// since `reset_omit_vars_bool`; `Exception` 38 and 39 where a rule is `error` and merged columns
/// or rows are met. Cells without a value under the rules arrive like empty ones. Reads do not
/// check that a cell has the type asked for; `cell_types` tells. Every operation throws
/// `Exception`.
class ZX_API ISheet {
  public:
    virtual void name(const std::u16string& new_name) = 0;
    virtual std::u16string name() const = 0;
    /// `Exception` 19 when the state cannot be set.
    virtual void hidden(sheet::hidden state) = 0;
    virtual sheet::hidden hidden() const = 0;
    virtual bool is_protected() const = 0;
    virtual void set_protected(bool on) = 0;
    /// The rectangle of all cells; last indices of -1 on an empty sheet.
    virtual Range used_range() const = 0;
    /// Empties cells; `Exception` 10 when they cannot be cleared.
    virtual void clear(Cell cell) = 0;
    virtual void clear(Range range) = 0;
    /// The cells of a defined name. `Exception` 23 when the sheet has no such name.
    virtual Range named_range(const std::u16string& name) const = 0;
    /// `out` receives one type per cell of the selection, in its order.
    virtual void cell_types(const CellIterator& cells, cell_type* out) const = 0;
    virtual bool cell_types(Range range, cell_type* out, const MergedCellColumnRule& column_rule,
                            const MergedCellRowRule& row_rule) = 0;
    virtual void cell_types(Range range, cell_type* out) const = 0;

    /// One flag per cell of the last read or `cell_types` with rules, column-major: true inside a
    /// merged region. So are the next two of the last call only.
    virtual std::vector<bool> get_merged_cells_vector() const = 0;
    /// Rows that the row rule left out, zero-based offsets within the range, ascending.
    virtual std::vector<int> get_omit_rows_vector() const = 0;
    /// Columns (variables) that were left out, zero-based offsets within the range, ascending.
    virtual std::vector<int> get_omit_vars_vector() const = 0;
    virtual void reset_merged_cells_vector() = 0;
    virtual void reset_omit_vars_bool() = 0;
    /// Whether columns without any value are kept (the default) or count as left out.
    virtual void set_return_empty_vars_bool(const bool on) = 0;
    /// The type of one cell.
    virtual cell_type typeCheck(int row, int column) = 0;

    /// Logical values as bytes 0 and 1.
    virtual bool read(Range range, unsigned char* out, const MergedCellColumnRule& column_rule,
                      const MergedCellRowRule& row_rule) = 0;
    virtual void read(Range range, unsigned char* out) const = 0;
    virtual bool read(Range range, bool* out, const MergedCellColumnRule& column_rule,
                      const MergedCellRowRule& row_rule) = 0;
    virtual void read(Range range, bool* out) const = 0;
    /// Serial dates of the 1900 system.
    virtual bool read(Range range, SerialDatenum* out, const MergedCellColumnRule& column_rule,
                      const MergedCellRowRule& row_rule) = 0;
    virtual void read(Range range, SerialDatenum* out) const = 0;
    virtual bool read(Range range, double* out, const MergedCellColumnRule& column_rule,
                      const MergedCellRowRule& row_rule) = 0;
    virtual void read(Range range, double* out) const = 0;
    virtual bool read(Range range, const StringBuilder& builder,
                      const MergedCellColumnRule& column_rule,
                      const MergedCellRowRule& row_rule) = 0;
    virtual void read(Range range, const StringBuilder& builder) const = 0;
    /// Every cell as the type that `types` asks for.
    virtual void read(Range range, const cell_type* types, const CellBuilder& builder) const = 0;

    virtual void write(Range range, const unsigned char* values) = 0;
    virtual void write(Range range, const bool* values) = 0;
    virtual void write(Range range, const SerialDatenum* values) = 0;
    virtual void write(Range range, const double* values) = 0;
    virtual void write(Range range, const StringProvider& provider) = 0;
    /// Every cell as the type that `types` gives; with `preserve_format` cells keep their formats.
    virtual void write(Range range, const cell_type* types, const CellProvider& provider,
                       bool preserve_format) = 0;
    virtual void auto_fit_column_widths(Range range) = 0;
    /// Dissolves the merged regions that lie wholly inside the range; `Exception` 27 when one
    /// cannot be.
    virtual void unmerge(Range range) = 0;
    /// False when the sheet's protection locks a cell of the range.
    virtual bool is_range_writeable(Range range) = 0;

    /// The block of content around the range's first cell. The base returns the range unchanged.
    /// In a workbook file, a call with both rules `first` returns the block found last, if there is
    /// one, whatever the range; with another rule, `used_range` leaves formatted blanks out from
    /// then on.
    virtual Range get_data_span(Range range, const MergedCellColumnRule& column_rule,
                                const MergedCellRowRule& row_rule);
    /// The base does nothing.
    virtual void get_types(cell_type* out);
    /// Every cell of the selection as the type that the iterator asks for; with `dates_as_numbers`
    /// date cells arrive as raw serial numbers.
    virtual void read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                                 const bool dates_as_numbers,
                                 const MergedCellColumnRule& column_rule,
                                 const MergedCellRowRule& row_rule) = 0;
    virtual void read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                                 const bool dates_as_numbers) const = 0;
    /// Serial dates as they are stored, in the workbook's own date system.
    virtual bool readDatesAsDoubles(Range range, double* out,
                                    const MergedCellColumnRule& column_rule,
                                    const MergedCellRowRule& row_rule) = 0;
    virtual void readDatesAsDoubles(Range range, double* out) const = 0;
    /// Fetches a range ahead of its reads; Google sheets only, `Exception` 51 elsewhere.
    virtual void prefetch(Range range, cell_type* out) const = 0;

    virtual ~ISheet();

    /// The types of all cells of the range, column after column; empty for an empty range.
    std::vector<cell_type> cell_types(Range range) const;
};

} // namespace spreadsheet
