// SPDX-License-Identifier: Apache-2.0
//
// What a file is, by its first bytes. Its name plays no part.
#pragma once

#include "foundation/files.h"

namespace workbook {

enum class FileKind {
    ZipContainer, ///< as Open XML books are
    CompoundFile, ///< as XLS books since BIFF5 are, and encrypted Open XML books
    RecordStream, ///< an XLS book up to BIFF4, without a container
    Empty,
    Text,
    Other ///< perhaps a ZIP container with other bytes before it
};

/// Throws `FileError` when the file cannot be read.
FileKind detect_file_kind(foundation::files::RandomAccessFile& file);

/// Throws the `Error` that says what a file is that no reader is for.
[[noreturn]] void refuse_file_kind(FileKind kind);

} // namespace workbook
