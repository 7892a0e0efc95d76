// SPDX-License-Identifier: Apache-2.0
//
// A book of the Open XML formats.
#pragma once

#include "workbook/file_book.h"

namespace workbook {

class XlsxBook final : public FileBook {
  private:
    std::unique_ptr<LoadedBook> open(std::unique_ptr<foundation::files::RandomAccessFile> file,
                                     std::u16string path, LastError& last_error) override;
    std::unique_ptr<LoadedBook> make_new(LastError& last_error) override;
};

} // namespace workbook
