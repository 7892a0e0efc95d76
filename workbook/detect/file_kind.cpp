// SPDX-License-Identifier: Apache-2.0
#include "workbook/detect/file_kind.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "workbook/error.h"
#include "workbook/io/little_endian.h"

namespace workbook {

namespace {

constexpr std::string_view kCompoundSignature{"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8};

/// A BOF record of any version (MS-XLS 2.4.21): number, length, version, kind of substream.
bool starts_with_bof(std::string_view bytes) {
    constexpr std::size_t kLeastBytes = 8, kLongestData = 16;
    if (bytes.size() < kLeastBytes) return false;
    const std::uint16_t id = load_u16(bytes.data());
    const std::size_t size = load_u16(bytes.data() + 2);
    const std::uint16_t kind = load_u16(bytes.data() + 6);
    const bool is_bof = id == 0x0009 || id == 0x0209 || id == 0x0409 || id == 0x0809;
    const bool is_kind =
        kind == 0x05 || kind == 0x10 || kind == 0x20 || kind == 0x40 || kind == 0x100;
    return is_bof && size >= 4 && size <= kLongestData && is_kind;
}

bool looks_like_text(std::string_view bytes) {
    return std::none_of(bytes.begin(), bytes.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r';
    });
}

} // namespace

FileKind detect_file_kind(foundation::files::RandomAccessFile& file) {
    std::array<char, 512> buffer;
    const std::string_view start(buffer.data(), file.read_at(0, buffer.data(), buffer.size()));
    if (start.empty()) return FileKind::Empty;
    if (start.starts_with("PK")) return FileKind::ZipContainer;
    if (start.starts_with(kCompoundSignature)) return FileKind::CompoundFile;
    if (starts_with_bof(start)) return FileKind::RecordStream;
    return looks_like_text(start) ? FileKind::Text : FileKind::Other;
}

void refuse_file_kind(FileKind kind) {
    switch (kind) {
    case FileKind::CompoundFile:
    case FileKind::RecordStream:
        throw Error::not_a_workbook("it is an XLS workbook or another compound file");
    case FileKind::Empty:
        throw Error::not_a_workbook("it is empty");
    case FileKind::Text:
        throw Error::not_a_workbook("it is a text file");
    default:
        throw Error::not_a_workbook("it is neither a ZIP container nor a compound file");
    }
}

} // namespace workbook
