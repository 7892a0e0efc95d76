// SPDX-License-Identifier: Apache-2.0
//
// Log lines of the Google back-end. Credentials never reach a line: wherever one stands in a text,
// it is replaced.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/log.h"

namespace gsheet {

/// `text` with the process's access token and API key replaced by "***".
std::string without_secrets(std::string_view text);

/// Logs one line without secrets; formats nothing when the severity is filtered out.
void log_line(std::uint32_t severity, std::string_view text);

} // namespace gsheet
