// SPDX-License-Identifier: Apache-2.0
//
// The creators.
#include <new>

#include "workbook/detecting_book.h"

namespace workbook {

namespace {

std::unique_ptr<Book> create(BookFamily family) {
    try {
        return std::make_unique<DetectingBook>(family);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace

std::unique_ptr<Book> xlCreateBookW() {
    return create(BookFamily::Xls);
}

std::unique_ptr<Book> xlCreateXMLBookW() {
    return create(BookFamily::OpenXml);
}

} // namespace workbook
