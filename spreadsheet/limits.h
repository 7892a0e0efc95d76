// SPDX-License-Identifier: Apache-2.0
//
// What sheets and cells can hold, each rule in one place. Row and column limits depend on the
// format: spreadsheet/book_format.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace spreadsheet {

/// UTF-16 units of a cell's text; longer texts are cut when they are written.
inline constexpr std::size_t kMaxCellTextUnits = 32'767;

/// UTF-16 units of a sheet's name, and the characters that it cannot have. Google Sheets forbids
/// none.
inline constexpr std::size_t kMaxSheetNameUnits = 31;
inline constexpr std::size_t kMaxGoogleSheetNameUnits = 100;
inline constexpr std::u16string_view kForbiddenInSheetNames = u":\\/?*[]";

/// Cells of a Google spreadsheet, and so rows or columns of one of its sheets.
inline constexpr std::int64_t kMaxGoogleCells = 10'000'000;

/// Days between the epochs of the 1900 and the 1904 date system (ECMA-376 part 1, 18.17.4.1).
inline constexpr double kDateSystemOffsetDays = 1462.0;

} // namespace spreadsheet
