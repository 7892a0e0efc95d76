// SPDX-License-Identifier: Apache-2.0
//
// The creators.
#include <new>

#include "workbook/library.h"
#include "workbook/xlsx/xlsx_book.h"

namespace workbook {

std::unique_ptr<Book> xlCreateBookW() {
    return nullptr;
}

std::unique_ptr<Book> xlCreateXMLBookW() {
    try {
        return std::make_unique<XlsxBook>();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace workbook
