// SPDX-License-Identifier: Apache-2.0
//
// What a sheet of this library can do beyond `ISheet`, whose slots are fixed. The free functions of
// sheet_contents.h find it by a cast. Not for installation.
#pragma once

#include <optional>
#include <vector>

#include "spreadsheet/sheet_contents.h"

namespace spreadsheet {

/// A sheet that takes formulas.
class IFormulaWriter {
  public:
    /// As `spreadsheet::write_formulas`.
    virtual void write_formulas(Range range, const std::string_view* formulas) = 0;

  protected:
    IFormulaWriter() = default;
    IFormulaWriter(const IFormulaWriter&) = default;
    IFormulaWriter& operator=(const IFormulaWriter&) = default;
    ~IFormulaWriter() = default;
};

/// Each function as the one of that name in sheet_contents.h.
class ISheetExtras {
  public:
    virtual Range filled_range() const = 0;
    virtual std::optional<Range> next_row_of_cells(int row) const = 0;
    virtual void number_styles(Range range, number_style* out) const = 0;
    virtual std::vector<Range> merged_ranges() const = 0;
    virtual std::uint64_t formulas_without_result() const = 0;
    virtual bool read_formulas(int first_row, int last_row,
                               const FormulaBuilder& builder) const = 0;

  protected:
    ISheetExtras() = default;
    ISheetExtras(const ISheetExtras&) = default;
    ISheetExtras& operator=(const ISheetExtras&) = default;
    ~ISheetExtras() = default;
};

} // namespace spreadsheet
