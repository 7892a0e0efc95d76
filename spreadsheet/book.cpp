// SPDX-License-Identifier: Apache-2.0
//
// What every book has without doing anything for it.
#include "spreadsheet/book.h"

namespace spreadsheet {

const std::u16string IBook::get_file_name(bool) {
    return {};
}

IBook::~IBook() = default;

} // namespace spreadsheet
