// SPDX-License-Identifier: Apache-2.0
//
// What a typed write puts into one cell, and how the host's values become it.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/limits.h"

namespace spreadsheet {

/// A value as it goes to the library. Dates are numbers of the workbook's own date system.
struct CellValue {
    enum class Kind : std::uint8_t { Blank = 0, Number = 1, Text = 2, Date = 3, Boolean = 4 };
    std::u16string text{};
    double number = 0.0; ///< 0 or 1 of a boolean
    Kind kind = Kind::Blank;

    /// NaN is no value; an infinity is written as 65535.
    static CellValue of(double value) {
        constexpr double kInfinityInCells = 65535.0;
        if (std::isnan(value)) return {};
        return {{}, std::isinf(value) ? kInfinityInCells : value, Kind::Number};
    }

    /// `offset` is the number of days between the workbook's date system and that of 1900. A date
    /// that is not finite is no value.
    static CellValue of(SerialDatenum date, double offset) {
        if (!std::isfinite(date.value)) return {};
        return {{}, date.value - offset, Kind::Date};
    }

    static CellValue of(bool value) { return {{}, value ? 1.0 : 0.0, Kind::Boolean}; }

    /// An empty text is no value; one that is too long is cut.
    static CellValue of(std::u16string value) {
        if (value.empty()) return {};
        if (value.size() > kMaxCellTextUnits) value.resize(kMaxCellTextUnits);
        return {std::move(value), 0.0, Kind::Text};
    }
};

} // namespace spreadsheet
