// SPDX-License-Identifier: Apache-2.0
//
// Little-endian integers of containers. The caller has checked that the bytes are there.
#pragma once

#include <cstdint>
#include <string>

namespace workbook {

inline std::uint16_t load_u16(const char* bytes) {
    const auto* p = reinterpret_cast<const unsigned char*>(bytes);
    return static_cast<std::uint16_t>(p[0] | p[1] << 8);
}

inline std::uint32_t load_u32(const char* bytes) {
    return load_u16(bytes) | static_cast<std::uint32_t>(load_u16(bytes + 2)) << 16;
}

inline std::uint64_t load_u64(const char* bytes) {
    return load_u32(bytes) | static_cast<std::uint64_t>(load_u32(bytes + 4)) << 32;
}

inline void append_u16(std::string& out, std::uint16_t value) {
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>(value >> 8);
}

inline void append_u32(std::string& out, std::uint32_t value) {
    append_u16(out, static_cast<std::uint16_t>(value & 0xFFFF));
    append_u16(out, static_cast<std::uint16_t>(value >> 16));
}

inline void append_u64(std::string& out, std::uint64_t value) {
    append_u32(out, static_cast<std::uint32_t>(value & 0xFFFFFFFF));
    append_u32(out, static_cast<std::uint32_t>(value >> 32));
}

} // namespace workbook
