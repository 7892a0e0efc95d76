// SPDX-License-Identifier: Apache-2.0
//
// The one place where a failure of the workbook library becomes a log line and an `Exception`. The
// cause travels in the log line; the exception keeps the fixed message of its identifier.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include <climits>

#include "spreadsheet/exception.h"
#include "workbook/library.h"

namespace spreadsheet::libxl {

/// Logs `tag` (with its colon), a blank and the library's last error text at severity `error`.
/// Formats nothing when that severity is filtered out.
void log_library_message(std::string_view tag, const workbook::Book& library);

/// Logs as `log_library_message`, then throws `Exception` `id`.
[[noreturn]] void fail(std::string_view tag, const workbook::Book& library, error_id id);

/// Logs `tag` and that memory has run out, then throws `Exception` `id`.
[[noreturn]] void fail_without_memory(std::string_view tag, error_id id);

/// The library counts in `int`; what is beyond that is beyond every sheet too.
inline int library_index(std::size_t value) {
    return static_cast<int>(std::min<std::size_t>(value, INT_MAX));
}

} // namespace spreadsheet::libxl
