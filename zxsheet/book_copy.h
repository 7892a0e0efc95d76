// SPDX-License-Identifier: Apache-2.0
//
// The values of sheets, from a book of one format into a book of another.
#pragma once

#include "zxsheet/book_access.h"

namespace zxsheet {

/// Writes the values of the selection to the same places of an empty sheet: numbers, text, booleans
/// and dates, errors as text. Throws `CommandError` when they are beyond the limits of `target`,
/// the book of that sheet.
void copy_values(const Selection& selection, const spreadsheet::IBook& target,
                 spreadsheet::ISheet& sheet);

} // namespace zxsheet
