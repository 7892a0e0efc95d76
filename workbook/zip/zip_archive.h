// SPDX-License-Identifier: Apache-2.0
//
// A ZIP container that is open for reading. Entries are found by part name in any of its spellings
// (entry_name.h); of entries with one name the first counts.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/files.h"
#include "workbook/io/byte_source.h"
#include "workbook/zip/inflate.h"
#include "workbook/zip/zip_directory.h"

namespace workbook {

class ZipArchive {
  public:
    /// Reads the directory. Throws `Error`.
    explicit ZipArchive(std::unique_ptr<foundation::files::RandomAccessFile> file);

    const std::vector<ZipEntry>& entries() const { return entries_; }

    /// The entry of a part, null when there is none.
    const ZipEntry* find(std::string_view part_name) const;

    /// The unpacked bytes of an entry; must not outlive the archive. Throws `Error`.
    std::unique_ptr<ByteSource> open(const ZipEntry& entry);

    /// The packed bytes of an entry as the file has them; must not outlive the archive. Throws
    /// `Error`.
    PackedBytes open_packed(const ZipEntry& entry);

    std::uint64_t file_size() const { return file_size_; }

    /// For a file that stays open for long: throws `Error` when it is not what it was. Begins a new
    /// count of the bytes that may be unpacked.
    void verify_unchanged();
    /// Lets go of the file; what was opened from it must be gone. Only `reopen` is left to call.
    void close_file() { file_.reset(); }
    bool is_open() const { return file_ != nullptr; }
    /// Continues with the same file, opened again. Throws `Error` when it is not what it was.
    void reopen(std::unique_ptr<foundation::files::RandomAccessFile> file);

  private:
    std::uint64_t data_position(const ZipEntry& entry);

    std::unique_ptr<foundation::files::RandomAccessFile> file_; ///< null while it is closed
    std::uint64_t file_size_;
    std::vector<ZipEntry> entries_;
    std::unordered_map<std::string, std::size_t> by_name_;
    std::uint64_t unpacked_bytes_ = 0;
};

} // namespace workbook
