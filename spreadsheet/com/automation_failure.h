// SPDX-License-Identifier: Apache-2.0
//
// The one place where a failed automation call becomes a log line and an `Exception` with its
// cause.
#pragma once

#include <string>
#include <string_view>

#include "foundation/automation/automation.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/failure.h"

namespace spreadsheet::com {

/// Logs a line of severity `error`: `tag` (with its colon), a blank, `text`.
void log_line(std::string_view tag, std::string_view text);

/// Logs `tag` (with its colon), a blank and the cause at severity `error`, then throws `Exception`
/// `id`, which carries the cause.
[[noreturn]] void fail(std::string_view tag, error_id id, Failure failure);

/// The cause of a call that ended in `result`: one sentence with the member, the result's number
/// and, where it is known, what it means. `S_OK` means a value of an unexpected type. The kind
/// is unknown unless the application has ended or is out of memory.
Failure cause_of(const OLECHAR* member, HRESULT result);

/// Whether a call ended in `result` because the application's process had ended.
bool says_application_ended(HRESULT result);

/// `fail` for a call that ended in `result`.
[[noreturn]] void fail_call(std::string_view tag, error_id id, const OLECHAR* member,
                            HRESULT result);

/// Logs why no application could be started, then throws `Exception` 18 of kind `NoApplication`.
[[noreturn]] void fail_start(HRESULT result);

} // namespace spreadsheet::com
