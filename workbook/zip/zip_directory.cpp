// SPDX-License-Identifier: Apache-2.0
//
// End record search, Zip64 records and the walk over the directory headers.
#include "workbook/zip/zip_directory.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "workbook/error.h"
#include "workbook/io/little_endian.h"
#include "workbook/limits.h"
#include "workbook/zip/zip_format.h"

namespace workbook {

namespace {

using foundation::files::RandomAccessFile;
using namespace zip;

constexpr std::string_view kContainer = "the ZIP container";

/// After the end record there is a comment of at most 64 KiB; some writers append more.
constexpr std::uint64_t kNearTailBytes = 1024;
constexpr std::uint64_t kFarTailBytes = 256u << 10;

/// Where the directory is and how many entries it claims.
struct DirectoryPlace {
    std::uint64_t position = 0;
    std::uint64_t size = 0;
    std::uint64_t entries = 0;
    std::uint64_t shift = 0; ///< added to every position that the container states
};

/// Contiguous bytes of a file at rising positions, read in blocks.
class DirectoryWindow {
  public:
    DirectoryWindow(RandomAccessFile& file, std::uint64_t position)
        : file_(file), next_(position) {}

    /// The next `count` bytes, null when the file ends before. Valid until the next call.
    const char* take(std::size_t count) {
        if (filled_ - used_ < count && !refill(count)) return nullptr;
        const char* bytes = block_.data() + used_;
        used_ += count;
        return bytes;
    }

  private:
    bool refill(std::size_t count) {
        constexpr std::size_t kBlockBytes = 64u << 10;
        block_.erase(0, used_);
        filled_ -= used_;
        used_ = 0;
        block_.resize(std::max(kBlockBytes, count));
        const std::size_t got =
            file_.read_at(next_, block_.data() + filled_, block_.size() - filled_);
        next_ += got;
        filled_ += got;
        return filled_ >= count;
    }

    RandomAccessFile& file_;
    std::uint64_t next_;
    std::string block_;
    std::size_t filled_ = 0;
    std::size_t used_ = 0;
};

std::string read_exactly(RandomAccessFile& file, std::uint64_t position, std::size_t count) {
    std::string bytes(count, '\0');
    bytes.resize(file.read_at(position, bytes.data(), count));
    return bytes;
}

bool has_signature(RandomAccessFile& file, std::uint64_t position, std::uint32_t signature) {
    const std::string bytes = read_exactly(file, position, 4);
    return bytes.size() == 4 && load_u32(bytes.data()) == signature;
}

/// The place that a Zip64 end record at `position` states.
std::optional<DirectoryPlace> read_end64(RandomAccessFile& file, std::uint64_t position) {
    const std::string record = read_exactly(file, position, kEnd64Bytes);
    if (record.size() < kEnd64Bytes || load_u32(record.data()) != kEnd64Signature) return {};
    DirectoryPlace place;
    place.entries = load_u64(record.data() + 32);
    place.size = load_u64(record.data() + 40);
    place.position = load_u64(record.data() + 48);
    return place;
}

/// Sets `place.shift` so that a directory header is found; `end` is where the directory ends.
bool settle_shift(RandomAccessFile& file, DirectoryPlace& place, std::uint64_t end) {
    if (place.entries == 0 && place.size == 0) return true;
    if (place.size > end) return false;
    if (place.position < end && has_signature(file, place.position, kHeaderSignature)) return true;
    const std::uint64_t actual = end - place.size;
    if (actual < place.position || !has_signature(file, actual, kHeaderSignature)) return false;
    place.shift = actual - place.position;
    return true;
}

/// The directory's place when `tail[offset]` starts a believable end record.
std::optional<DirectoryPlace> read_end(RandomAccessFile& file, std::string_view tail,
                                       std::size_t offset, std::uint64_t position) {
    const char* record = tail.data() + offset;
    if (tail.size() - offset < kEndBytes || load_u32(record) != kEndSignature) return {};
    DirectoryPlace place;
    place.entries = load_u16(record + 10);
    place.size = load_u32(record + 12);
    place.position = load_u32(record + 16);
    if (position >= kLocator64Bytes) {
        const std::string locator = read_exactly(file, position - kLocator64Bytes, kLocator64Bytes);
        if (locator.size() == kLocator64Bytes && load_u32(locator.data()) == kLocator64Signature) {
            const std::uint64_t stated = load_u64(locator.data() + 8);
            // Without an extensible sector the record is right before its locator.
            for (const std::uint64_t at : {stated, position - kLocator64Bytes - kEnd64Bytes})
                if (at < position)
                    if (auto place64 = read_end64(file, at);
                        place64 && settle_shift(file, *place64, at))
                        return place64;
        }
    }
    if (!settle_shift(file, place, position)) return {};
    return place;
}

std::optional<DirectoryPlace> find_directory(RandomAccessFile& file) {
    for (const std::uint64_t reach : {kNearTailBytes, kFarTailBytes}) {
        const std::uint64_t tail_bytes = std::min(reach, file.size());
        const std::uint64_t start = file.size() - tail_bytes;
        const std::string tail = read_exactly(file, start, static_cast<std::size_t>(tail_bytes));
        for (std::size_t i = tail.size(); i-- > 0;)
            if (tail[i] == 'P')
                if (auto place = read_end(file, tail, i, start + i)) return place;
        if (tail_bytes == file.size()) break;
    }
    return {};
}

/// Replaces the 32-bit fields that overflowed by those of the Zip64 extra field (APPNOTE 4.5.3).
bool apply_zip64(ZipEntry& entry, std::string_view extra) {
    while (extra.size() >= 4) {
        const std::uint16_t id = load_u16(extra.data());
        const std::size_t length = load_u16(extra.data() + 2);
        extra.remove_prefix(4);
        if (length > extra.size()) return false;
        if (id == kZip64Field) {
            std::string_view fields = extra.substr(0, length);
            for (std::uint64_t* field : {&entry.size, &entry.packed_size, &entry.header_position}) {
                if (*field != kIn64Bits) continue;
                if (fields.size() < 8) return false;
                *field = load_u64(fields.data());
                fields.remove_prefix(8);
            }
            return true;
        }
        extra.remove_prefix(length);
    }
    return true;
}

/// The next entry of the directory; nullopt when its bytes are not a directory header.
std::optional<ZipEntry> read_entry(DirectoryWindow& window) {
    const char* header = window.take(kHeaderBytes);
    if (header == nullptr || load_u32(header) != kHeaderSignature) return {};
    ZipEntry entry;
    constexpr std::uint16_t kEncryptedFlags = 1 | 1 << 6 | 1 << 13;
    entry.made_by = load_u16(header + 4);
    entry.version_needed = load_u16(header + 6);
    entry.flags = load_u16(header + 8);
    entry.is_encrypted = (entry.flags & kEncryptedFlags) != 0;
    entry.method = load_u16(header + 10);
    entry.time = load_u16(header + 12);
    entry.date = load_u16(header + 14);
    entry.crc32 = load_u32(header + 16);
    entry.packed_size = load_u32(header + 20);
    entry.size = load_u32(header + 24);
    entry.attributes = load_u32(header + 38);
    entry.header_position = load_u32(header + 42);
    const std::size_t name_bytes = load_u16(header + 28);
    const std::size_t extra_bytes = load_u16(header + 30);
    const std::size_t comment_bytes = load_u16(header + 32);
    const char* rest = window.take(name_bytes + extra_bytes + comment_bytes);
    if (rest == nullptr) return {};
    entry.name.assign(rest, name_bytes);
    if (!apply_zip64(entry, {rest + name_bytes, extra_bytes})) return {};
    return entry;
}

} // namespace

std::vector<ZipEntry> read_zip_directory(RandomAccessFile& file) {
    const std::optional<DirectoryPlace> place = find_directory(file);
    if (!place)
        throw Error::damaged(kContainer,
                             "it has no directory at its end, the file may be truncated");
    if (place->entries > kMaxEntries)
        throw Error::limit(kContainer, std::to_string(place->entries) + " entries of at most " +
                                           std::to_string(kMaxEntries));
    std::vector<ZipEntry> entries;
    DirectoryWindow window(file, place->position + place->shift);
    for (std::uint64_t i = 0; i < place->entries; ++i) {
        std::optional<ZipEntry> entry = read_entry(window);
        if (!entry)
            throw Error::damaged(kContainer, "entry " + std::to_string(i + 1) + " of " +
                                                 std::to_string(place->entries) +
                                                 " is missing from its directory");
        entry->header_position += place->shift;
        entries.push_back(std::move(*entry));
    }
    return entries;
}

} // namespace workbook
