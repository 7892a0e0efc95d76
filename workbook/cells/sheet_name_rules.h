// SPDX-License-Identifier: Apache-2.0
//
// What a sheet of a workbook file may be named, whatever the file format.
#pragma once

#include <string_view>

namespace workbook {

/// Throws `Error` unless `name` has 1 to 31 UTF-16 units, none of :\/?*[], no apostrophe at either
/// end and only characters that every file format can hold.
void check_sheet_name(std::u16string_view name);

/// Refuses a name; `why` says why. Throws `Error`.
[[noreturn]] void refuse_sheet_name(std::u16string_view name, std::string_view why);

} // namespace workbook
