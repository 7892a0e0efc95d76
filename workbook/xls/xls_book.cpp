// SPDX-License-Identifier: Apache-2.0
//
// The binary formats keep all they need in `XlsContents`.
#include "workbook/xls/xls_book.h"

#include <utility>

#include "workbook/xls/xls_contents.h"

namespace workbook {

std::unique_ptr<LoadedBook> XlsBook::open(std::unique_ptr<foundation::files::RandomAccessFile> file,
                                          std::u16string path, LastError& last_error) {
    return std::make_unique<XlsContents>(read_workbook_stream(std::move(file)), std::move(path),
                                         last_error);
}

std::unique_ptr<LoadedBook> XlsBook::make_new(LastError& last_error) {
    return std::make_unique<XlsContents>(last_error);
}

} // namespace workbook
