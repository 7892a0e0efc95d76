// SPDX-License-Identifier: Apache-2.0
//
// The Open XML formats keep all they need in `BookContents`.
#include "workbook/xlsx/xlsx_book.h"

#include <chrono>
#include <utility>

#include "workbook/xlsx/book_contents.h"
#include "workbook/xlsx/writing/blank_package.h"

namespace workbook {

std::unique_ptr<LoadedBook>
XlsxBook::open(std::unique_ptr<foundation::files::RandomAccessFile> file, std::u16string path,
               LastError& last_error) {
    return std::make_unique<BookContents>(std::make_unique<OpcPackage>(std::move(file)), path,
                                          last_error);
}

std::unique_ptr<LoadedBook> XlsxBook::make_new(LastError& last_error) {
    auto made = std::make_unique<BookContents>(make_blank_package(std::chrono::system_clock::now()),
                                               u"", last_error);
    made->is_new = true;
    made->load_sheets();
    return made;
}

} // namespace workbook
