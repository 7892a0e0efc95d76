// SPDX-License-Identifier: Apache-2.0
//
// The one place where a failure of the workbook library becomes a log line and an `Exception`. The
// cause travels in the log line; the exception keeps the fixed message of its identifier.
#pragma once

#include <string_view>

#include "spreadsheet/exception.h"
#include "workbook/library.h"

namespace spreadsheet::libxl {

/// Logs `tag` (with its colon), a blank and the library's last error text at severity `error`.
/// Formats nothing when that severity is filtered out.
void log_library_message(std::string_view tag, const workbook::Book& library);

/// Logs as `log_library_message`, then throws `Exception` `id`.
[[noreturn]] void fail(std::string_view tag, const workbook::Book& library, error_id id);

/// Logs `tag` and that memory has run out, then throws `Exception` 9, whose text says the same.
[[noreturn]] void fail_without_memory(std::string_view tag);

/// Logs that this version cannot write workbook files, then throws `Exception` `id`: the end of
/// every operation that changes a workbook, until the library can write.
[[noreturn]] void refuse_writing(error_id id);

} // namespace spreadsheet::libxl
