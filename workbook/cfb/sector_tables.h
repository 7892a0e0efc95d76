// SPDX-License-Identifier: Apache-2.0
//
// How the sectors of a compound file are chained (MS-CFB 2.2 to 2.5). Counts that the header claims
// are not believed: the file's own size says how many sectors there can be.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/files.h"

namespace workbook {

class SectorTables {
  public:
    /// Reads the header, DIFAT and FAT. Throws `Error`.
    explicit SectorTables(foundation::files::RandomAccessFile& file);

    std::uint32_t sector_bytes() const { return sector_bytes_; }
    std::uint64_t file_size() const { return file_size_; }
    bool is_version_4() const { return is_version_4_; }
    /// Streams of fewer bytes lie in the stream of small streams.
    std::uint32_t small_stream_limit() const { return small_stream_limit_; }

    /// The sectors of a chain from `first` that hold `size` bytes. Throws `Error` for a cycle and
    /// for a chain that ends before.
    std::vector<std::uint32_t> chain(std::uint32_t first, std::uint64_t size) const;
    /// The same for a chain of the small sectors; `read_small_table` first.
    std::vector<std::uint32_t> small_chain(std::uint32_t first, std::uint64_t size) const;

    bool operator==(const SectorTables&) const = default;

  private:
    std::uint32_t sector_bytes_ = 0;
};

} // namespace workbook
