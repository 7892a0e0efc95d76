// SPDX-License-Identifier: Apache-2.0
//
// Files and paths. Paths are UTF-16 in the library's interface; they reach the system as wide
// strings on Windows and as UTF-8 elsewhere. This is the only place that talks to the file system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace foundation::files {

/// Why a file could not be used.
enum class FileProblem {
    NotFound,
    NotAFile,
    AccessDenied,
    InUse,
    PathTooLong,
    ReadFailed,
    ReadOnly, ///< the file or its drive is write-protected
    DiskFull,
    WriteFailed
};

/// A failed operation on a file; `what()` is one sentence in English without the path.
class FileError : public std::runtime_error {
  public:
    FileError(FileProblem problem, const std::string& text)
        : std::runtime_error(text), problem_(problem) {}
    FileProblem problem() const noexcept { return problem_; }

  private:
    FileProblem problem_;
};

/// Bytes that can be read at any position; one thread at a time.
class RandomAccessFile {
  public:
    virtual ~RandomAccessFile() = default;

    /// Number of bytes in the file when it was opened.
    virtual std::uint64_t size() const = 0;

    /// Reads up to `count` bytes at byte `position` into `buffer` and returns how many were read;
    /// fewer only at the end of the file. Throws `FileError` when the system cannot read.
    virtual std::size_t read_at(std::uint64_t position, char* buffer, std::size_t count) = 0;
};

/// Opens a file for reading, shared with every other reader, writer and remover. Throws
/// `FileError`; a folder is `NotAFile`.
std::unique_ptr<RandomAccessFile> open_for_reading(std::u16string_view path);

/// A file that lies in memory; copies `bytes`.
std::unique_ptr<RandomAccessFile> memory_file(std::string bytes);

/// The path in the platform's own form.
std::filesystem::path native_path(std::u16string_view path);

/// The last component of the path: what follows the last separator ('/', and on Windows '\\' too).
std::u16string file_name(std::u16string_view path);

/// The text after the last dot of the last component, without the dot; empty when there is none.
std::u16string extension(std::u16string_view path);

} // namespace foundation::files
