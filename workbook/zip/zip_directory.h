// SPDX-License-Identifier: Apache-2.0
//
// Finds and reads the central directory of a ZIP container (APPNOTE 4.3.12 to 4.3.16), Zip64
// included. Bytes before the first entry and after the end record are tolerated.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/files.h"

namespace workbook {

struct ZipEntry {
    std::string name; ///< as the container has it
    std::uint64_t packed_size = 0;
    std::uint64_t size = 0;
    std::uint64_t header_position = 0; ///< of the local header, from the start of the file
    std::uint32_t crc32 = 0;
    std::uint16_t method = 0;
    bool is_encrypted = false;

    // What a copy of the entry has to repeat.
    std::uint16_t flags = 0;
    std::uint16_t time = 0, date = 0; ///< in the form of MS-DOS
    std::uint16_t made_by = 0;        ///< says what the attributes mean
    std::uint16_t version_needed = 0;
    std::uint32_t attributes = 0; ///< of a file system

    bool operator==(const ZipEntry&) const = default;
};

/// All entries in directory order. Throws `Error` for anything that is not a whole ZIP container.
std::vector<ZipEntry> read_zip_directory(foundation::files::RandomAccessFile& file);

} // namespace workbook
