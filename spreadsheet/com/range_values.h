// SPDX-License-Identifier: Apache-2.0
//
// The values of a range as they came from the application, and what they give when they are read.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "foundation/automation/owners.h"
#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/range.h"

namespace spreadsheet {

/// One VARIANT per cell, column after column.
class RangeValues {
  public:
    /// Takes over a block of the range's shape, or for one cell its value. A value of any other
    /// shape gives an object that is false.
    RangeValues(foundation::automation::Variant value, const Range& range);

    explicit operator bool() const { return cells_ != nullptr; }
    const VARIANT* cells() const { return cells_; }

  private:
    std::unique_ptr<foundation::automation::Variant> value_; ///< stays where it is
    std::unique_ptr<foundation::automation::BlockView> view_;
    const VARIANT* cells_ = nullptr;
};

/// The kind of content; every double is a number here.
cell_type type_of(const VARIANT& cell);

/// One cell at a time for `deliver` (spreadsheet/typed_cells.h). `date_offset_days` is asked at
/// most once, and only when a date system matters: it returns the days from the workbook's system
/// to that of 1900.
class ApplicationCell {
  public:
    explicit ApplicationCell(std::function<double()> date_offset_days)
        : date_offset_days_(std::move(date_offset_days)) {}

    /// The cell must outlive the calls that follow.
    ApplicationCell& select(const VARIANT& cell) {
        cell_ = &cell;
        return *this;
    }
    /// A date gives its raw serial number; NaN for what is neither a number nor a date.
    double number();
    double stored_date() { return number(); }
    /// The serial date of the 1900 system; a double is a raw serial date of the workbook. NaN for
    /// anything else.
    double date();
    bool boolean() const;
    /// Lives until the next call.
    const std::u16string& text();

  private:
    double offset();

    std::function<double()> date_offset_days_;
    std::optional<double> offset_;
    const VARIANT* cell_ = nullptr;
    std::u16string text_;
};

} // namespace spreadsheet
