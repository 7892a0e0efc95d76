// SPDX-License-Identifier: Apache-2.0
//
// Numbers of the ZIP format (APPNOTE 4.3 and 4.5) that reading and writing share.
#pragma once

#include <cstddef>
#include <cstdint>

namespace workbook::zip {

inline constexpr std::uint32_t kLocalSignature = 0x04034b50;
inline constexpr std::uint32_t kHeaderSignature = 0x02014b50;
inline constexpr std::uint32_t kEndSignature = 0x06054b50;
inline constexpr std::uint32_t kEnd64Signature = 0x06064b50;
inline constexpr std::uint32_t kLocator64Signature = 0x07064b50;

/// Bytes of the records without names, extra fields and comments.
inline constexpr std::size_t kLocalBytes = 30;
inline constexpr std::size_t kHeaderBytes = 46;
inline constexpr std::size_t kEndBytes = 22;
inline constexpr std::size_t kEnd64Bytes = 56;
inline constexpr std::size_t kLocator64Bytes = 20;

inline constexpr std::uint16_t kZip64Field = 1; ///< identifier of the extra field
/// The value of a field of 32 or 16 bits whose number is in the Zip64 field or record.
inline constexpr std::uint32_t kIn64Bits = 0xFFFFFFFF;
inline constexpr std::uint16_t kCountIn64Bits = 0xFFFF;

} // namespace workbook::zip
