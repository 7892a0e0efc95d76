// SPDX-License-Identifier: Apache-2.0
//
// Signatures, and a look into the directory of a compound file (MS-CFB 2.6) for an encrypted
// package.
#include "workbook/detect/file_kind.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "workbook/error.h"
#include "workbook/io/little_endian.h"

namespace workbook {

namespace {

using foundation::files::RandomAccessFile;

constexpr std::string_view kCompoundSignature{"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8};
constexpr std::size_t kCompoundHeaderBytes = 512;
constexpr std::size_t kDirectoryEntryBytes = 128;
constexpr std::size_t kEntryNameBytes = 64;
constexpr std::uint32_t kLastRegularSector = 0xFFFFFFFA;
/// The first sectors of the directory hold the entries that matter.
constexpr int kMaxDirectorySectors = 64;
constexpr std::size_t kHeaderTableSectors = 109;

std::string read_bytes(RandomAccessFile& file, std::uint64_t position, std::size_t count) {
    std::string bytes(count, '\0');
    bytes.resize(file.read_at(position, bytes.data(), count));
    return bytes;
}

/// The name of a directory entry as far as it is ASCII.
std::string entry_name(std::string_view entry) {
    std::string name;
    for (std::size_t i = 0; i + 1 < kEntryNameBytes; i += 2) {
        const std::uint16_t unit = load_u16(entry.data() + i);
        if (unit == 0) break;
        name += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return name;
}

/// Walks the sectors of a compound file's directory. Every sector number comes from the file and is
/// followed only to bytes that exist, for a bounded number of steps.
class CompoundDirectory {
  public:
    CompoundDirectory(RandomAccessFile& file, std::string header)
        : file_(file), header_(std::move(header)) {
        const std::uint16_t shift = load_u16(header_.data() + 30);
        sector_bytes_ = shift == 12 ? 4096 : 512;
    }

    bool has_entry(std::string_view wanted) {
        std::uint32_t sector = load_u32(header_.data() + 48);
        for (int i = 0; i < kMaxDirectorySectors && sector <= kLastRegularSector; ++i) {
            const std::string entries = read_bytes(file_, sector_position(sector), sector_bytes_);
            for (std::size_t at = 0; at + kDirectoryEntryBytes <= entries.size();
                 at += kDirectoryEntryBytes)
                if (entry_name(std::string_view(entries).substr(at)) == wanted) return true;
            sector = next_sector(sector);
        }
        return false;
    }

  private:
    std::uint64_t sector_position(std::uint32_t sector) const {
        return (std::uint64_t{sector} + 1) * sector_bytes_;
    }

    /// Only tables that the header lists are looked at: enough for the first 7 MB of a file.
    std::uint32_t next_sector(std::uint32_t sector) {
        constexpr std::uint32_t kNone = 0xFFFFFFFE;
        const std::size_t per_table = sector_bytes_ / 4;
        const std::size_t table = sector / per_table;
        if (table >= kHeaderTableSectors) return kNone;
        const std::uint32_t table_sector = load_u32(header_.data() + 76 + 4 * table);
        if (table_sector > kLastRegularSector) return kNone;
        const std::string link =
            read_bytes(file_, sector_position(table_sector) + 4 * (sector % per_table), 4);
        return link.size() == 4 ? load_u32(link.data()) : kNone;
    }

    RandomAccessFile& file_;
    std::string header_;
    std::size_t sector_bytes_;
};

[[noreturn]] void refuse_compound_file(RandomAccessFile& file) {
    std::string header = read_bytes(file, 0, kCompoundHeaderBytes);
    if (header.size() == kCompoundHeaderBytes) {
        CompoundDirectory directory(file, std::move(header));
        if (directory.has_entry("EncryptedPackage") || directory.has_entry("EncryptionInfo"))
            throw Error::encrypted();
    }
    throw Error::not_a_workbook("it is a compound file, as XLS workbooks are");
}

bool looks_like_text(std::string_view bytes) {
    return std::none_of(bytes.begin(), bytes.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r';
    });
}

} // namespace

void require_zip_container(RandomAccessFile& file) {
    constexpr std::size_t kLookBytes = 512;
    const std::string start = read_bytes(file, 0, kLookBytes);
    if (start.empty()) throw Error::not_a_workbook("it is empty");
    if (start.starts_with("PK")) return;
    if (start.starts_with(kCompoundSignature)) refuse_compound_file(file);
    if (looks_like_text(start)) throw Error::not_a_workbook("it is a text file");
    // Other bytes may precede a container; the search for its directory decides.
}

} // namespace workbook
