// SPDX-License-Identifier: Apache-2.0
//
// The errors that tables report themselves. Not for installation.
#pragma once

#include <string>

#include "foundation/unicode.h"
#include "spreadsheet/range.h"
#include "spreadsheet/with_failure.h"

namespace spreadsheet {

inline Exception table_error(error_id id, FailureKind kind, const std::string& cause) {
    Failure failure;
    failure.kind = kind;
    failure.cause = cause;
    return with_failure(Exception(id), failure);
}

/// A value that a cell cannot have; `what` is a clause that ends the sentence.
inline Exception refused_value(const Cell& cell, const std::string& what) {
    const std::u16string place = range_string({cell.row, cell.column, cell.row, cell.column});
    return table_error(error_id::write_failed, FailureKind::Refused,
                       "The value for cell " + foundation::unicode::to_utf8(place) + ' ' + what);
}

inline Exception infinite_number(const Cell& cell) {
    return refused_value(cell,
                         "is infinite, which a cell cannot be. Replace it, for example by NaN "
                         "for a cell without a value.");
}

} // namespace spreadsheet
