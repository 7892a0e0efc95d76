// SPDX-License-Identifier: Apache-2.0
//
// JSON values (RFC 8259) as text.
#pragma once

#include <string>
#include <string_view>

#include "zxsheet/cell_text.h"

namespace zxsheet {

/// The text in quotes, control characters escaped. `text` is UTF-8.
void append_json_string(std::string& out, std::string_view text);
std::string json_string(std::string_view text);

/// Appends the cell as a JSON value: dates and errors are strings, times of day and elapsed times
/// numbers, cells without a value null.
void append_json(std::string& out, const CellValue& cell, const TextStyle& style);

} // namespace zxsheet
