// SPDX-License-Identifier: Apache-2.0
//
// How signing in fails.
#pragma once

#include <string>

#include "spreadsheet/failure.h"

namespace gsheet {

/// Throws `spreadsheet::Exception` 45 with that cause, without secrets, and logs it.
[[noreturn]] void throw_sign_in_failure(const std::string& cause,
                                        spreadsheet::ServiceReason reason = {});

} // namespace gsheet
