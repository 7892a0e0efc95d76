// SPDX-License-Identifier: Apache-2.0
//
// Lays streams out in sectors and writes the tables that chain them (MS-CFB 2.2 to 2.5). Every
// stream takes sectors that follow each other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/output_file.h"
#include "workbook/cfb/compound_directory.h"
#include "workbook/io/byte_sink.h"

namespace workbook {

class SectorWriter {
  public:
    /// `out` must be empty and outlive this; `sector_bytes` is 512 (version 3) or 4096 (version 4).
    SectorWriter(foundation::files::OutputFile& out, std::uint32_t sector_bytes);

    /// Takes the bytes of the next stream until `end_stream`, which says where it came to lie.
    /// Throws `Error` (`Limit`) where the file would reach 2 GiB.
    ByteSink& begin_stream();
    void end_stream(std::uint32_t& first_sector, std::uint64_t& size);

    /// Writes the stream of small streams, whose place it enters in the root `entries[0]`, the
    /// directory, the tables and the header. Nothing may follow.
    void finish(std::vector<CompoundEntry>& entries);

  private:
    class StreamSink final : public ByteSink {
      public:
        explicit StreamSink(SectorWriter& writer) : writer_(writer) {}
        void append(const char* bytes, std::size_t count) override;
        using ByteSink::append;

        SectorWriter& writer_;
        std::string start_; ///< of a stream that is still small
        std::uint64_t size_ = 0;
    };

    struct Header {
        std::uint32_t directory = 0, directory_sectors = 0;
        std::uint32_t small_fat = 0, small_fat_sectors = 0;
    };

    void write(std::string_view bytes);
    /// Fills the last sector up and chains the sectors that no chain has; returns the first of
    /// them.
    std::uint32_t close_chain(char padding);
    std::uint32_t write_chain(std::string_view bytes, char padding);
    void write_tables(const Header& header);
    void write_header(const Header& header, const std::vector<std::uint32_t>& fat_sectors,
                      std::uint32_t first_difat, std::uint32_t difat_sectors);

    foundation::files::OutputFile& out_;
    std::uint32_t sector_bytes_;
    StreamSink sink_{*this};
    std::vector<std::uint32_t> fat_; ///< of the sectors that belong to a chain
    std::string small_streams_;
    std::vector<std::uint32_t> small_fat_;
};

} // namespace workbook
