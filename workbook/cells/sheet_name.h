// SPDX-License-Identifier: Apache-2.0
//
// Which names a sheet can have in any format. That no two sheets of a book have one name is checked
// by whoever knows the others.
#pragma once

#include <string_view>

namespace workbook {

/// Throws an `Error` unless `name` has 1 to 31 UTF-16 units, none of :\/?*[], no apostrophe at
/// either end and only characters that a file can hold.
void check_sheet_name(std::u16string_view name);

/// Throws the error that says why a sheet cannot have this name.
[[noreturn]] void refuse_sheet_name(std::u16string_view name, std::string_view why);

} // namespace workbook
