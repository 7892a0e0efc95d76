// SPDX-License-Identifier: Apache-2.0
//
// References to cells as formulas write them in A1 style: "$A1", "A1:B2", "A:C", "1:3".
#pragma once

#include <string>
#include <string_view>

namespace workbook {

/// Length of the longest reference that `text` begins with; 0 when it begins with none, or with
/// something longer that is not one ("A1B", "LOG10(", "B2!").
std::size_t reference_length(std::string_view text);

/// Whether the whole text is one cell, "A1" or "$A$1".
bool is_cell_corner(std::string_view text);

/// The reference moved by rows and columns where it has no '$'; "#REF!" when it leaves the sheet.
std::string moved_reference(std::string_view reference, int rows, int columns);

} // namespace workbook
