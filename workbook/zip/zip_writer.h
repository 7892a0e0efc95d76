// SPDX-License-Identifier: Apache-2.0
//
// Writes a ZIP container (APPNOTE 4.3), Zip64 where sizes ask for it: entries that are packed here,
// and entries that are copied from another container, still packed.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/output_file.h"
#include "workbook/io/byte_sink.h"
#include "workbook/zip/packer.h"
#include "workbook/zip/zip_archive.h"

namespace workbook {

class ZipWriter {
  public:
    /// `out` must outlive this. Failures of `out` pass as `Error::file`.
    explicit ZipWriter(foundation::files::OutputFile& out);
    ~ZipWriter();

    /// Begins a deflated entry; its content is appended to the sink, which lives until `end_entry`.
    /// `expected_bytes` is a guess of the unpacked size: entries that may pass 4 GiB get room for
    /// larger sizes in their header. Throws `Error` when an entry outgrows its header.
    ByteSink& begin_entry(std::string_view name, std::uint64_t expected_bytes = 0);
    void end_entry();

    /// Copies an entry as it is in `source`: packed bytes, method, CRC, time, name, attributes.
    /// Throws `Error` when the source ends early.
    void copy_entry(ZipArchive& source, const ZipEntry& entry);

    /// Writes the directory. Nothing may follow.
    void finish();

  private:
    class FileSink;
    class EntrySink;

    void add_to_directory(const ZipEntry& entry);
    void finish_zip64(std::uint64_t directory_position);

    std::unique_ptr<FileSink> out_;
    std::unique_ptr<Packer> packer_;
    std::unique_ptr<EntrySink> entry_; ///< the one that was begun and not ended
    std::string directory_;
    std::uint64_t entries_ = 0;
};

} // namespace workbook
