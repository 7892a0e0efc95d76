// SPDX-License-Identifier: Apache-2.0
//
// A book of the binary formats, BIFF2 to BIFF8; new ones are BIFF8.
#pragma once

#include "workbook/file_book.h"

namespace workbook {

class XlsBook final : public FileBook {
  private:
    std::unique_ptr<LoadedBook> open(std::unique_ptr<foundation::files::RandomAccessFile> file,
                                     std::u16string path, LastError& last_error) override;
    std::unique_ptr<LoadedBook> make_new(LastError& last_error) override;
};

} // namespace workbook
