// SPDX-License-Identifier: Apache-2.0
//
// JSON values (RFC 8259) as text.
#pragma once

#include <string>
#include <string_view>

#include "zxsheet/cell_text.h"

namespace zxsheet {

/// The text in quotes, control characters escaped. `text` is UTF-8.
std::string json_string(std::string_view text);

/// The cell as a JSON value: dates and errors are strings, cells without a value null.
std::string json_value(const CellValue& cell, DateStyle dates);

} // namespace zxsheet
