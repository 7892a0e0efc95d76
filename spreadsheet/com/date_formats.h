// SPDX-License-Identifier: Apache-2.0
//
// Which number formats show dates, in the letters of the application's user.
#pragma once

#include <string>

#include "foundation/automation/automation.h"

namespace spreadsheet {

/// The user's letters of date formats and name of the General format.
class DateFormats {
  public:
    /// Reads them from the application's `International` array. Throws `Exception` 18 when it
    /// cannot be read, std::bad_alloc where memory runs out.
    static DateFormats read_from(IDispatch* application);

    /// `letters` are those of year, month, day, hour, minute and second.
    DateFormats(std::u16string general, std::u16string letters);

    /// Whether one of the letters is in the format outside of square brackets and double
    /// quotes. False for a value that is not text, and for the General format.
    bool is_date(const VARIANT& number_format) const;

  private:
    std::u16string general_;
    std::u16string letters_;
};

} // namespace spreadsheet
