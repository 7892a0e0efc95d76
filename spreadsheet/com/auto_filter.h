// SPDX-License-Identifier: Apache-2.0
//
// A worksheet's active filter, kept while cells are written.
#pragma once

#include <string>
#include <vector>

#include "spreadsheet/com/late_bound_call.h"

namespace spreadsheet {

/// What it takes to switch the same filter on again.
///
///     const auto filter = AutoFilter::capture(sheet);   // before AutoFilterMode is switched off
///     ...
///     filter.apply(sheet);
class AutoFilter {
  public:
    /// Reads the filter of a worksheet whose `AutoFilterMode` is on. `Exception` 37 for a criterion
    /// other than one value or two that are combined, 18 when something cannot be read;
    /// std::bad_alloc where memory runs out.
    static AutoFilter capture(IDispatch* sheet);

    /// Switches filtering on again with the captured criteria. `Exception` 22 when the range cannot
    /// be formed, 18 when the application refuses.
    void apply(IDispatch* sheet) const;
    /// The same after a failure, which must not be hidden by another.
    void try_to_apply(IDispatch* sheet) const noexcept;

  private:
    struct Column {
        LONG field; ///< one-based place within the range
        LONG filter_operator;
        com::Variant first_criterion;
        com::Variant second_criterion;
    };

    com::Variant address_;
    std::vector<Column> columns_;
};

} // namespace spreadsheet
