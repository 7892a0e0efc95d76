// SPDX-License-Identifier: Apache-2.0
//
// Gets the stream of records out of a file: of a compound file, or, up to BIFF4, the file itself.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/files.h"
#include "workbook/cfb/compound_file.h"
#include "workbook/xls/decryption.h"

namespace workbook {

struct WorkbookStream {
    std::string bytes;                          ///< decrypted
    std::optional<StreamEncryption> encryption; ///< that the file has
    std::unique_ptr<CompoundFile> container;    ///< null for a file without one
    std::u16string name;                        ///< of the stream in its container
    /// `hash_of_stream` of what a save has put in the file in place of `bytes`; nullopt before.
    std::optional<std::size_t> saved_hash;
};

/// Reads the book's stream, not one that is embedded in a storage. Of a book that was written for
/// old and new applications at once, the newer one. Throws `Error`: `Encrypted` for a book with a
/// password.
WorkbookStream read_workbook_stream(std::unique_ptr<foundation::files::RandomAccessFile> file);

/// Of a stream as a file has it. The same within a process only.
std::size_t hash_of_stream(std::string_view bytes);

/// Throws `Error` unless the file still has the stream that was read from it or saved to it last.
/// `file` is that file when it has no container; an open container is used otherwise.
void verify_same_stream(const WorkbookStream& stream,
                        std::unique_ptr<foundation::files::RandomAccessFile> file);

} // namespace workbook
