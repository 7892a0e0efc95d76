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

/// `text` with the process's access token, its API key and the keys that the host stored replaced
/// by
/// "***", percent-encoded ones as well.
std::string without_secrets(std::string_view text);

/// Logs one line without secrets; formats nothing when the severity is filtered out.
void log_line(std::uint32_t severity, std::string_view text);

} // namespace gsheet
