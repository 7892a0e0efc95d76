// SPDX-License-Identifier: Apache-2.0
//
// Gets the stream of records out of a file: of a compound file, or, up to BIFF4, the file itself.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "foundation/files.h"
#include "workbook/cfb/compound_file.h"
#include "workbook/xls/decryption.h"

namespace workbook {

struct WorkbookStream {
    std::string bytes;                          ///< decrypted
    std::optional<StreamEncryption> encryption; ///< that the file has
    std::unique_ptr<CompoundFile> container;    ///< null for a file without one
    std::u16string name;                        ///< of the stream in its container
};

/// Reads the book's stream, not one that is embedded in a storage. Of a book that was written for
/// old and new applications at once, the newer one. Throws `Error`: `Encrypted` for a book with a
/// password.
WorkbookStream read_workbook_stream(std::unique_ptr<foundation::files::RandomAccessFile> file);

} // namespace workbook
