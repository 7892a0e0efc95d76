// SPDX-License-Identifier: Apache-2.0
//
// Which sheet a caller's index is.
#include "workbook/loaded_book.h"

#include "workbook/error.h"

namespace workbook {

std::size_t LoadedBook::checked_index(int index, std::size_t end) const {
    if (index >= 0 && static_cast<std::size_t>(index) < end) return static_cast<std::size_t>(index);
    throw Error::missing("the workbook has no sheet " + std::to_string(index + std::int64_t{1}) +
                         ", it has " + std::to_string(sheet_count()));
}

std::size_t LoadedBook::wanted_sheet(int index) const {
    return sheet_count() == 1 ? 0 : checked_index(index, sheet_count());
}

} // namespace workbook
