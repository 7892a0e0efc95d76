// SPDX-License-Identifier: Apache-2.0
//
// Reads the three tables of a compound file and follows chains of sectors through them.
#include "workbook/cfb/sector_tables.h"

#include <algorithm>

#include "workbook/cfb/compound_format.h"
#include "workbook/error.h"
#include "workbook/io/little_endian.h"

namespace workbook {

namespace {

using foundation::files::RandomAccessFile;
using namespace cfb;

constexpr std::string_view kFile = "the compound file";

/// `count` bytes at `position`; those past the end of the file are 0xFF, which makes free sectors
/// of links and unused entries of a directory's bytes.
std::string read_padded(RandomAccessFile& file, std::uint64_t position, std::size_t count) {
    std::string bytes(count, '\xFF');
    file.read_at(position, bytes.data(), count);
    return bytes;
}

void append_links(std::vector<std::uint32_t>& links, std::string_view sector, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        links.push_back(load_u32(sector.data() + 4 * i));
}

/// Follows a chain for at most `count` links; calls `visit` for each sector. Returns false when the
/// chain ends before or meets a sector again.
template <class Visit>
bool follow(const std::vector<std::uint32_t>& links, std::uint32_t first, std::uint64_t count,
            const Visit& visit) {
    std::vector<bool> seen(links.size());
    std::uint32_t sector = first;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (sector >= links.size() || seen[sector]) return false;
        seen[sector] = true;
        visit(sector);
        sector = links[sector];
    }
    return true;
}

[[noreturn]] void refuse_chain(std::string_view what) {
    throw Error::damaged(kFile, std::string("the sectors of ")
                                    .append(what)
                                    .append(" form a cycle or end before its size is reached"));
}

std::uint64_t divided_up(std::uint64_t count, std::uint64_t by) {
    return count / by + (count % by != 0 ? 1 : 0);
}

} // namespace

SectorTables::SectorTables(RandomAccessFile& file) : file_size_(file.size()) {
    std::string header(kHeaderBytes, '\0');
    header.resize(file.read_at(0, header.data(), header.size()));
    read_header(header);
    read_fat(file, header);
    const std::string small_fat = read_to_end(file, first_small_fat_sector_);
    append_links(small_fat_, small_fat, small_fat.size() / 4);
}

void SectorTables::read_header(const std::string& header) {
    if (!header.starts_with(kSignature)) throw Error::not_a_workbook("it is not a compound file");
    if (header.size() < kHeaderBytes) throw Error::damaged(kFile, "it ends within its header");
    const std::uint16_t shift = load_u16(header.data() + kSectorShiftField);
    if (shift != 9 && shift != 12)
        throw Error::damaged(kFile,
                             "its header states sectors of 2^" + std::to_string(shift) + " bytes");
    if (load_u16(header.data() + kSmallSectorShiftField) != 6)
        throw Error::damaged(kFile, "its header states small sectors of other than 64 bytes");
    sector_bytes_ = 1u << shift;
    is_version_4_ = load_u16(header.data() + kMajorVersionField) == 4;
    first_directory_sector_ = load_u32(header.data() + kFirstDirectorySectorField);
    first_small_fat_sector_ = load_u32(header.data() + kFirstSmallFatSectorField);
    small_stream_limit_ = load_u32(header.data() + kSmallStreamLimitField);
}

void SectorTables::read_fat(RandomAccessFile& file, const std::string& header) {
    if (file_size_ <= sector_bytes_) throw Error::damaged(kFile, "it ends after its header");
    const std::uint64_t sectors = divided_up(file_size_ - sector_bytes_, sector_bytes_);
    if (sectors >= kFirstSpecialSector) throw Error::limit(kFile, std::to_string(file_size_));
    const std::size_t per_sector = sector_bytes_ / 4;
    const auto needed = static_cast<std::size_t>(divided_up(sectors, per_sector));

    // Which sectors hold the FAT. Each turn of the loop adds to the list, so it ends even where
    // the sectors of the DIFAT form a cycle.
    std::vector<std::uint32_t> tables;
    append_links(tables, std::string_view(header).substr(kHeaderDifatField), kHeaderDifatEntries);
    std::uint32_t difat = load_u32(header.data() + kFirstDifatSectorField);
    while (tables.size() < needed && difat < sectors) {
        const std::string sector = read_padded(file, position_of(difat), sector_bytes_);
        append_links(tables, sector, per_sector - 1);
        difat = load_u32(sector.data() + sector_bytes_ - 4);
    }
    tables.resize(needed, kFreeSector);

    fat_.reserve(needed * per_sector);
    for (const std::uint32_t table : tables)
        if (table < sectors)
            append_links(fat_, read_padded(file, position_of(table), sector_bytes_), per_sector);
        else
            fat_.insert(fat_.end(), per_sector, kFreeSector);
    fat_.resize(static_cast<std::size_t>(sectors));
}

void SectorTables::append(std::vector<Extent>& extents, const Extent& next,
                          std::string_view what) const {
    if (next.position > file_size_ || next.count > file_size_ - next.position)
        throw Error::damaged(
            kFile,
            std::string("it ends within ").append(what).append("; the file may be incomplete"));
    if (!extents.empty() && extents.back().position + extents.back().count == next.position)
        extents.back().count += next.count;
    else
        extents.push_back(next);
}

std::vector<Extent> SectorTables::locate(std::uint32_t first, std::uint64_t size,
                                         std::string_view what) const {
    std::vector<Extent> extents;
    std::uint64_t left = size;
    const auto add = [&](std::uint32_t sector) {
        const std::uint64_t count = std::min<std::uint64_t>(left, sector_bytes_);
        append(extents, {position_of(sector), count}, what);
        left -= count;
    };
    if (!follow(fat_, first, divided_up(size, sector_bytes_), add)) refuse_chain(what);
    return extents;
}

std::vector<Extent> SectorTables::locate_small(std::uint32_t first, std::uint64_t size,
                                               const std::vector<std::uint32_t>& container,
                                               std::string_view what) const {
    std::vector<Extent> extents;
    const std::uint32_t per_sector = sector_bytes_ / kSmallSectorBytes;
    std::uint64_t left = size;
    const auto add = [&](std::uint32_t small) {
        if (small / per_sector >= container.size()) refuse_chain(what);
        const std::uint64_t count = std::min<std::uint64_t>(left, kSmallSectorBytes);
        append(extents,
               {position_of(container[small / per_sector]) +
                    std::uint64_t{small % per_sector} * kSmallSectorBytes,
                count},
               what);
        left -= count;
    };
    if (!follow(small_fat_, first, divided_up(size, kSmallSectorBytes), add)) refuse_chain(what);
    return extents;
}

std::vector<std::uint32_t> SectorTables::chain_to_end(std::uint32_t first) const {
    std::vector<std::uint32_t> sectors;
    follow(fat_, first, fat_.size(), [&](std::uint32_t sector) { sectors.push_back(sector); });
    return sectors;
}

std::string SectorTables::read_to_end(RandomAccessFile& file, std::uint32_t first) const {
    std::string bytes;
    for (const std::uint32_t sector : chain_to_end(first))
        bytes += read_padded(file, position_of(sector), sector_bytes_);
    return bytes;
}

} // namespace workbook
