// SPDX-License-Identifier: Apache-2.0
//
// A ZIP container that is open for reading. Entries are found by part name in any of its spellings
// (part_name.h); of entries with one name the first counts.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/files.h"
#include "workbook/package/byte_source.h"
#include "workbook/package/zip_directory.h"

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

  private:
    std::unique_ptr<foundation::files::RandomAccessFile> file_;
    std::vector<ZipEntry> entries_;
    std::unordered_map<std::string, std::size_t> by_name_;
    std::uint64_t unpacked_bytes_ = 0;
};

} // namespace workbook
