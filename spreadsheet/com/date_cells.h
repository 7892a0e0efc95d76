// SPDX-License-Identifier: Apache-2.0
//
// Finds the numbers of a range that are formatted as dates.
#pragma once

#include <cstddef>

#include "foundation/automation/automation.h"
#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/com/date_formats.h"
#include "spreadsheet/range.h"

namespace spreadsheet {

/// Whether a value may be a date: a double of 1.0 or more. Below the first day of the date system
/// no date is recognised.
bool is_date_candidate(const VARIANT& cell);
bool has_date_candidates(const VARIANT* cells, std::size_t count);

/// Sets `out` to `date` for the candidates among `cells` that have a date format. `format` is what
/// the range's `NumberFormat` gave: one that is not text means that formats differ, and then they
/// are asked for. `cells` and `out` have one element per cell of `range`, column after column.
/// `Exception` 18 when a format cannot be read.
void mark_dates(const DateFormats& formats, IDispatch* sheet, const Range& range,
                const VARIANT& format, const VARIANT* cells, cell_type* out);

} // namespace spreadsheet
