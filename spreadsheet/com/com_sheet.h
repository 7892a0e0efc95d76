// SPDX-License-Identifier: Apache-2.0
//
// A worksheet of a workbook that is open in a spreadsheet application. Made by `COMBook`, which it
// must not outlive; used on that thread.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "spreadsheet/book_format.h"
#include "spreadsheet/com/late_bound_call.h"
#include "spreadsheet/sheet_extras.h"
#include "spreadsheet/sheet_without_rules.h"

namespace spreadsheet {

class excel_application;
class RangeValues;

/// Values travel as one block for each range. Every read sees the application's values of that
/// moment. `Exception` 22 for a range that the application cannot form, 40 for every operation with
/// merged-cell rules.
///
/// Conversions: a number is read as a date by its serial number, a date as a number by its raw
/// serial number; numbers and dates as text in the shortest form, booleans as TRUE and FALSE,
/// errors as "#DIV/0!" and the like. What cannot be converted is NaN, false or the empty text.
class COMSheet : public SheetWithoutRules, public IFormulaWriter {
  public:
    /// `format` gives the limits of ranges.
    COMSheet(std::shared_ptr<excel_application> application, std::shared_ptr<IDispatch> sheet,
             book::format format);

    /// The worksheet, owned by this object.
    IDispatch* object() const { return sheet_.get(); }

    void name(const std::u16string& new_name) override;
    /// Empty when the name cannot be read.
    std::u16string name() const override;
    void hidden(sheet::hidden state) override;
    sheet::hidden hidden() const override;
    /// Always false: whether cells may be written says `is_range_writeable`.
    bool is_protected() const override;
    void set_protected(bool on) override;
    Range used_range() const override;
    void clear(Cell cell) override;
    void clear(Range range) override;
    /// Names of the sheet come before names of the workbook that refer to this sheet.
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
    /// Takes the sheet's active filter off for the write and puts it back; `Exception` 37 for one
    /// that could not be put back.
    void write(Range range, const cell_type* types, const CellProvider& provider,
               bool preserve_format) override;
    void write_formulas(Range range, const std::string_view* formulas) override;
    void auto_fit_column_widths(Range range) override;
    void unmerge(Range range) override;
    /// Throws nothing: false where the application fails.
    bool is_range_writeable(Range range) override;

    void read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                         const bool dates_as_numbers) const override;
    void readDatesAsDoubles(Range range, double* out) const override;
    void prefetch(Range range, cell_type* out) const override;

  private:
    /// The range object that `cell_types` leaves for the read that follows it.
    struct KeptRange {
        Range range;
        std::shared_ptr<IDispatch> object;
    };

    Exception refused_rules(std::source_location where) const override;
    /// `Exception` 22 for a range that is not within the limits of the format.
    void check_limits(const Range& range) const;
    /// The application's object of a range; `Exception` 22 when it cannot be formed.
    std::shared_ptr<IDispatch> range_object(const Range& range) const;
    /// The values of a range, one for each cell; `Exception` 18 when they cannot be read.
    RangeValues values_of(const Range& range, const OLECHAR* member) const;
    template <class Use>
    void read_cells(const Range& range, const OLECHAR* member, Use use) const;
    /// The area of a range object in this sheet; nullopt when it is not a rectangle.
    std::optional<Range> area_of(IDispatch* range_object) const;
    /// The object of a defined name's cells; null when there is none.
    std::shared_ptr<IDispatch> find_name(IDispatch* owner, const std::u16string& name) const;
    /// Days between the workbook's date system and that of 1900.
    double date_offset_days() const;

    template <class Next>
    void write_cells(const Range& range, Next next);
    /// Writes a block of values of the range's shape; `Exception` 28 when it is refused.
    void put_values(const Range& range, const com::Variant& block);

    std::shared_ptr<excel_application> application_;
    std::shared_ptr<IDispatch> sheet_;
    book::format format_;
    mutable std::optional<KeptRange> kept_range_;
};

} // namespace spreadsheet
