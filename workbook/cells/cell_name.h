// SPDX-License-Identifier: Apache-2.0
//
// Cells as people name them.
#pragma once

#include <string>

namespace workbook {

/// "B7" for row 6, column 1.
std::string cell_name(int row, int column);

} // namespace workbook
