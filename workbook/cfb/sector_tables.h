// SPDX-License-Identifier: Apache-2.0
//
// How the sectors of a compound file are chained (MS-CFB 2.2 to 2.5). Counts that the header claims
// are not believed: the file's own size says how many sectors there can be. The file may end within
// its last sector, but not within the bytes of a stream.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/files.h"

namespace workbook {

/// Bytes of the file that follow each other.
struct Extent {
    std::uint64_t position = 0;
    std::uint64_t count = 0;
};

class SectorTables {
  public:
    /// Reads the header and all tables. Throws `Error`.
    explicit SectorTables(foundation::files::RandomAccessFile& file);

    std::uint32_t sector_bytes() const { return sector_bytes_; }
    std::uint64_t file_size() const { return file_size_; }
    bool is_version_4() const { return is_version_4_; }
    std::uint32_t first_directory_sector() const { return first_directory_sector_; }
    /// Streams of fewer bytes are in the stream of small streams.
    std::uint32_t small_stream_limit() const { return small_stream_limit_; }

    /// Where the `size` bytes of the chain from sector `first` are, all of them within the file;
    /// `what` names it in errors. Throws `Error` for a cycle and for a chain that ends before.
    std::vector<Extent> locate(std::uint32_t first, std::uint64_t size,
                               std::string_view what) const;
    /// The same for a chain of small sectors; `container` has the sectors of the stream of small
    /// streams.
    std::vector<Extent> locate_small(std::uint32_t first, std::uint64_t size,
                                     const std::vector<std::uint32_t>& container,
                                     std::string_view what) const;

    /// The sectors of a chain whose length nothing states, up to where it ends, leads back or
    /// leads out of the file.
    std::vector<std::uint32_t> chain_to_end(std::uint32_t first) const;

    /// All bytes of such a chain.
    std::string read_to_end(foundation::files::RandomAccessFile& file, std::uint32_t first) const;

    bool operator==(const SectorTables&) const = default;

  private:
    void read_header(const std::string& header);
    void read_fat(foundation::files::RandomAccessFile& file, const std::string& header);
    /// Adds bytes to `extents`, as part of the last one where they continue it.
    void append(std::vector<Extent>& extents, const Extent& next, std::string_view what) const;
    std::uint64_t position_of(std::uint32_t sector) const {
        return (std::uint64_t{sector} + 1) * sector_bytes_;
    }

    std::uint64_t file_size_ = 0;
    std::uint32_t sector_bytes_ = 0;
    bool is_version_4_ = false;
    std::uint32_t first_directory_sector_ = 0;
    std::uint32_t first_small_fat_sector_ = 0;
    std::uint32_t small_stream_limit_ = 0;
    std::vector<std::uint32_t> fat_; ///< one link for each sector that the file has
    std::vector<std::uint32_t> small_fat_;
};

} // namespace workbook
