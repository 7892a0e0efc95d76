// SPDX-License-Identifier: Apache-2.0
//
// Numbers and layouts of a compound file (MS-CFB 2.1 to 2.6), as far as reader and writer share
// them. All fields are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace workbook::cfb {

inline constexpr std::string_view kSignature{"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8};
inline constexpr std::size_t kHeaderBytes = 512; ///< a sector is taken up whatever its size

/// Sector numbers from here on have a meaning of their own (MS-CFB 2.1).
inline constexpr std::uint32_t kFirstSpecialSector = 0xFFFFFFFA;
inline constexpr std::uint32_t kDifatSector = 0xFFFFFFFC;
inline constexpr std::uint32_t kFatSector = 0xFFFFFFFD;
inline constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
inline constexpr std::uint32_t kFreeSector = 0xFFFFFFFF;

/// Offsets in the header (MS-CFB 2.2).
inline constexpr std::size_t kMinorVersionField = 24;
inline constexpr std::size_t kMajorVersionField = 26;
inline constexpr std::size_t kByteOrderField = 28;
inline constexpr std::size_t kSectorShiftField = 30;
inline constexpr std::size_t kSmallSectorShiftField = 32;
inline constexpr std::size_t kDirectorySectorsField = 40;
inline constexpr std::size_t kFatSectorsField = 44;
inline constexpr std::size_t kFirstDirectorySectorField = 48;
inline constexpr std::size_t kSmallStreamLimitField = 56;
inline constexpr std::size_t kFirstSmallFatSectorField = 60;
inline constexpr std::size_t kSmallFatSectorsField = 64;
inline constexpr std::size_t kFirstDifatSectorField = 68;
inline constexpr std::size_t kDifatSectorsField = 72;
inline constexpr std::size_t kHeaderDifatField = 76;
inline constexpr std::size_t kHeaderDifatEntries = 109;

inline constexpr std::uint32_t kSmallSectorBytes = 64;
inline constexpr std::uint32_t kSmallStreamLimit = 4096;

/// Offsets in a directory entry (MS-CFB 2.6.1).
inline constexpr std::size_t kEntryBytes = 128;
inline constexpr std::size_t kNameBytes = 64; ///< UTF-16 with a zero at the end
inline constexpr std::size_t kNameLengthField = 64;
inline constexpr std::size_t kTypeField = 66;
inline constexpr std::size_t kColourField = 67;
inline constexpr std::size_t kLeftField = 68;
inline constexpr std::size_t kRightField = 72;
inline constexpr std::size_t kChildField = 76;
inline constexpr std::size_t kClassIdField = 80;
inline constexpr std::size_t kStateBitsField = 96;
inline constexpr std::size_t kCreatedField = 100;
inline constexpr std::size_t kModifiedField = 108;
inline constexpr std::size_t kFirstSectorField = 116;
inline constexpr std::size_t kSizeField = 120;

inline constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;
enum EntryType : unsigned char {
    kUnusedEntry = 0,
    kStorageEntry = 1,
    kStreamEntry = 2,
    kRootEntry = 5
};

} // namespace workbook::cfb
