// SPDX-License-Identifier: Apache-2.0
//
// What a cached cell gives when it is read as a type, its own or another.
#pragma once

#include <string>

#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/gsheet/cell_cache.h"

namespace gsheet {

/// The number or the serial date of a cell, NaN for any other. The service knows no 29 February
/// 1900, which the 1900 system has: serial dates up to 60 are lowered by one.
double number_of(const CachedCell& cell);

/// The serial date of a date cell, 0 for any other.
double serial_of(const CachedCell& cell);

/// The value of a boolean cell, false for any other.
bool boolean_of(const CachedCell& cell);

/// Replaces `out` by the text of a cell: texts as they are, numbers and serial dates as the
/// shortest decimal that gives them back, TRUE and FALSE; empty for empty cells and errors.
void assign_text(std::u16string& out, const CellCache& cells, const CachedCell& cell);

/// One cell at a time for `deliver` (spreadsheet/typed_cells.h). A number is as good as a serial
/// date.
class CachedValue {
  public:
    explicit CachedValue(const CellCache& cells) : cells_(cells) {}

    CachedValue& select(const CachedCell& cell) {
        cell_ = cell;
        return *this;
    }
    double number() const;
    double date() const { return number(); }
    double stored_date() const { return number(); }
    bool boolean() const;
    const std::u16string& text();

  private:
    const CellCache& cells_;
    CachedCell cell_;
    std::u16string text_;
};

} // namespace gsheet
