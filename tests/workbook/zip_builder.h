// SPDX-License-Identifier: Apache-2.0
//
// Builds small ZIP containers in memory, whole or broken in one chosen way.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace workbook::testing {

/// One entry; what is not set is written as the content has it.
struct ZipItem {
    std::string name = {};
    std::string content = {};
    bool stored = false;           ///< method 0 instead of 8
    bool descriptor = false;       ///< sizes and CRC-32 behind the data, zero in the local header
    bool zip64 = false;            ///< sizes and position in the Zip64 extra field
    std::uint16_t flags = 0;       ///< further general purpose flags
    int method = -1;               ///< stated method when not negative
    std::int64_t stated_size = -1; ///< stated unpacked size when not negative
    std::int64_t stated_packed_size = -1; ///< stated packed size when not negative
    bool wrong_crc = false;
};

struct ZipShape {
    std::string prefix = {};          ///< bytes before the first entry, unknown to all positions
    std::string comment = {};         ///< of the container
    std::string suffix = {};          ///< bytes behind the end record
    bool zip64 = false;               ///< with Zip64 end record and locator
    std::int64_t stated_entries = -1; ///< stated number of entries when not negative
};

/// The container's bytes.
std::string build_zip(const std::vector<ZipItem>& items, const ZipShape& shape = {});

/// Raw deflate data of a text.
std::string deflate_text(std::string_view text);

} // namespace workbook::testing
