// SPDX-License-Identifier: Apache-2.0
//
// Files that are written. A file on disk is written beside its target and takes the target's place
// only when it is whole, so that no moment shows half a file; one that is never committed leaves no
// trace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/files.h"

namespace foundation::files {

/// One thread at a time. Every operation throws `FileError`; after that only destruction is left.
class OutputFile {
  public:
    /// Removes what was written unless it was committed.
    virtual ~OutputFile() = default;

    virtual void append(const char* bytes, std::size_t count) = 0;
    /// Replaces bytes that were appended before; `position + count` must not exceed `size()`.
    virtual void overwrite(std::uint64_t position, const char* bytes, std::size_t count) = 0;
    /// Bytes appended so far.
    virtual std::uint64_t size() const = 0;
    /// Brings everything to the disk and takes the target's place. Once.
    virtual void commit() = 0;
};

/// A file that will replace `path`. It has no name before it is whole where the system has such
/// files; elsewhere it is ".NAME.0123abcd.tmp" beside its target, and what a process that was
/// killed leaves is removed by the next replacement of the same target. A symbolic link is followed
/// and stays; an existing target's permissions are taken over, and a target that may not be written
/// to is refused. Further hard links to the target keep the old content. On Windows nobody may have
/// the target open without sharing its deletion. A target that is not what it was here when the
/// file is committed is left alone. Throws `FileError`.
std::unique_ptr<OutputFile> replace_file(std::u16string_view path);

/// Collects into `bytes`, which must outlive it; `commit` does nothing.
std::unique_ptr<OutputFile> memory_output(std::string& bytes);

/// Whether both paths lead to the same existing file.
bool is_same_file(std::u16string_view one, std::u16string_view other);

} // namespace foundation::files
