// SPDX-License-Identifier: Apache-2.0
//
// Column letters are a number system without a zero.
#include "workbook/cells/cell_name.h"

namespace workbook {

std::string cell_name(int row, int column) {
    std::string letters;
    for (int n = column + 1; n > 0; n = (n - 1) / 26)
        letters.insert(letters.begin(), static_cast<char>('A' + (n - 1) % 26));
    return letters + std::to_string(row + 1);
}

} // namespace workbook
