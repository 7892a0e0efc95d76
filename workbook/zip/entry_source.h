// SPDX-License-Identifier: Apache-2.0
//
// The unpacked bytes of one container entry, checked while they pass: size and CRC-32 as the
// directory has them, and the limits on how much a part may unpack to.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "workbook/io/byte_source.h"
#include "workbook/zip/inflate.h"
#include "workbook/zip/zip_directory.h"

namespace workbook {

class EntrySource final : public ByteSource {
  public:
    /// `position` is where the entry's packed bytes start; `total_bytes` counts what is unpacked
    /// over all entries of a package. `file` and `total_bytes` must outlive this. Throws `Error`
    /// for a method that is not known.
    EntrySource(foundation::files::RandomAccessFile& file, const ZipEntry& entry,
                std::uint64_t position, std::uint64_t& total_bytes,
                InflateEngine engine = kBestInflateEngine);

    std::size_t read(char* buffer, std::size_t capacity) override;
    const std::string& part_name() const override { return name_; }

  private:
    void check_limits() const;
    void check_end() const;

    std::string name_;
    PackedBytes packed_;
    std::uint64_t packed_size_;
    std::uint64_t file_size_;
    std::uint64_t size_;
    std::uint64_t produced_ = 0;
    std::uint64_t& total_bytes_;
    std::uint32_t expected_crc_;
    std::uint32_t crc_ = 0;
    InflateEngine engine_;
    bool finished_ = false;
    std::unique_ptr<Unpacker> unpacker_;
};

} // namespace workbook
