// SPDX-License-Identifier: Apache-2.0
#include "workbook/cfb/sector_writer.h"

#include <algorithm>

#include "workbook/cfb/compound_format.h"
#include "workbook/cfb/directory_writer.h"
#include "workbook/error.h"
#include "workbook/io/little_endian.h"

namespace workbook {

namespace {

using namespace cfb;

/// From here on files need a sector that locks ranges (MS-CFB 2.7), and version 3 ends.
constexpr std::uint64_t kMaxFileBytes = 0x7FFFFF00;

std::string table_bytes(const std::vector<std::uint32_t>& links) {
    std::string bytes;
    bytes.reserve(4 * links.size());
    for (const std::uint32_t link : links)
        append_u32(bytes, link);
    return bytes;
}

std::uint32_t divided_up(std::size_t count, std::size_t by) {
    return static_cast<std::uint32_t>((count + by - 1) / by);
}

void store_u16(std::string& bytes, std::size_t position, std::uint16_t value) {
    bytes[position] = static_cast<char>(value & 0xFF);
    bytes[position + 1] = static_cast<char>(value >> 8);
}

void store_u32(std::string& bytes, std::size_t position, std::uint32_t value) {
    store_u16(bytes, position, static_cast<std::uint16_t>(value & 0xFFFF));
    store_u16(bytes, position + 2, static_cast<std::uint16_t>(value >> 16));
}

} // namespace

SectorWriter::SectorWriter(foundation::files::OutputFile& out, std::uint32_t sector_bytes)
    : out_(out), sector_bytes_(sector_bytes) {
    write(std::string(sector_bytes, '\0')); // the header's room
}

void SectorWriter::StreamSink::append(const char* bytes, std::size_t count) {
    const bool was_small = size_ < kSmallStreamLimit;
    size_ += count;
    if (size_ < kSmallStreamLimit) {
        start_.append(bytes, count);
        return;
    }
    if (was_small) writer_.write(start_);
    writer_.write({bytes, count});
}

ByteSink& SectorWriter::begin_stream() {
    sink_.start_.clear();
    sink_.size_ = 0;
    return sink_;
}

void SectorWriter::end_stream(std::uint32_t& first_sector, std::uint64_t& size) {
    size = sink_.size_;
    if (size >= kSmallStreamLimit) {
        first_sector = close_chain('\0');
        return;
    }
    first_sector = size == 0 ? kEndOfChain : static_cast<std::uint32_t>(small_fat_.size());
    for (std::size_t at = 0; at < size; at += kSmallSectorBytes)
        small_fat_.push_back(at + kSmallSectorBytes >= size
                                 ? kEndOfChain
                                 : static_cast<std::uint32_t>(small_fat_.size() + 1));
    small_streams_ += sink_.start_;
    small_streams_.resize(small_fat_.size() * kSmallSectorBytes);
}

void SectorWriter::finish(std::vector<CompoundEntry>& entries) {
    CompoundEntry& root = entries.front();
    root.size = small_streams_.size();
    root.first_sector = write_chain(small_streams_, '\0');
    Header header;
    header.small_fat_sectors = divided_up(4 * small_fat_.size(), sector_bytes_);
    header.small_fat = write_chain(table_bytes(small_fat_), '\xFF');

    std::string directory = compound_directory_bytes(entries);
    while (directory.size() % sector_bytes_ != 0)
        directory += unused_compound_entry();
    header.directory_sectors = divided_up(directory.size(), sector_bytes_);
    header.directory = write_chain(directory, '\0');
    write_tables(header);
}

void SectorWriter::write(std::string_view bytes) {
    if (bytes.size() > kMaxFileBytes || out_.size() > kMaxFileBytes - bytes.size())
        throw Error::limit("the compound file", "2 GiB");
    out_.append(bytes.data(), bytes.size());
}

std::uint32_t SectorWriter::close_chain(char padding) {
    const std::uint64_t partial = out_.size() % sector_bytes_;
    if (partial != 0) write(std::string(sector_bytes_ - partial, padding));
    const auto first = static_cast<std::uint32_t>(fat_.size());
    const auto end = static_cast<std::uint32_t>(out_.size() / sector_bytes_ - 1);
    if (first == end) return kEndOfChain;
    for (std::uint32_t sector = first + 1; sector < end; ++sector)
        fat_.push_back(sector);
    fat_.push_back(kEndOfChain);
    return first;
}

std::uint32_t SectorWriter::write_chain(std::string_view bytes, char padding) {
    write(bytes);
    return close_chain(padding);
}

void SectorWriter::write_tables(const Header& header) {
    const std::size_t per_sector = sector_bytes_ / 4;
    // Both tables list their own sectors too; more of them may make more of them necessary.
    std::uint32_t fat_count = 0;
    std::uint32_t difat_count = 0;
    for (std::uint32_t wanted = 1; wanted != fat_count;) {
        fat_count = wanted;
        difat_count = fat_count <= kHeaderDifatEntries
                          ? 0
                          : divided_up(fat_count - kHeaderDifatEntries, per_sector - 1);
        wanted = divided_up(fat_.size() + fat_count + difat_count, per_sector);
    }
    std::vector<std::uint32_t> fat_sectors;
    for (std::uint32_t i = 0; i < fat_count; ++i)
        fat_sectors.push_back(static_cast<std::uint32_t>(fat_.size()) + i);
    const std::uint32_t first_difat =
        difat_count == 0 ? kEndOfChain : static_cast<std::uint32_t>(fat_.size()) + fat_count;
    fat_.insert(fat_.end(), fat_count, kFatSector);
    fat_.insert(fat_.end(), difat_count, kDifatSector);
    fat_.resize(fat_count * per_sector, kFreeSector);
    write(table_bytes(fat_));

    std::vector<std::uint32_t> difat;
    for (std::uint32_t i = 0; i < difat_count; ++i) {
        const std::size_t begin = kHeaderDifatEntries + i * (per_sector - 1);
        for (std::size_t at = begin; at < begin + per_sector - 1; ++at)
            difat.push_back(at < fat_sectors.size() ? fat_sectors[at] : kFreeSector);
        difat.push_back(i + 1 < difat_count ? first_difat + i + 1 : kEndOfChain);
    }
    write(table_bytes(difat));
    write_header(header, fat_sectors, first_difat, difat_count);
}

void SectorWriter::write_header(const Header& header, const std::vector<std::uint32_t>& fat_sectors,
                                std::uint32_t first_difat, std::uint32_t difat_sectors) {
    constexpr std::uint16_t kMinorVersion = 0x3E;
    const bool is_version_4 = sector_bytes_ == 4096;
    std::string bytes{kSignature};
    bytes.resize(kHeaderBytes);
    store_u16(bytes, kMinorVersionField, kMinorVersion);
    store_u16(bytes, kMajorVersionField, is_version_4 ? 4 : 3);
    store_u16(bytes, kByteOrderField, 0xFFFE);
    store_u16(bytes, kSectorShiftField, is_version_4 ? 12 : 9);
    store_u16(bytes, kSmallSectorShiftField, 6);
    store_u32(bytes, kDirectorySectorsField, is_version_4 ? header.directory_sectors : 0);
    store_u32(bytes, kFatSectorsField, static_cast<std::uint32_t>(fat_sectors.size()));
    store_u32(bytes, kFirstDirectorySectorField, header.directory);
    store_u32(bytes, kSmallStreamLimitField, kSmallStreamLimit);
    store_u32(bytes, kFirstSmallFatSectorField, header.small_fat);
    store_u32(bytes, kSmallFatSectorsField, header.small_fat_sectors);
    store_u32(bytes, kFirstDifatSectorField, first_difat);
    store_u32(bytes, kDifatSectorsField, difat_sectors);
    for (std::size_t i = 0; i < kHeaderDifatEntries; ++i)
        store_u32(bytes, kHeaderDifatField + 4 * i,
                  i < fat_sectors.size() ? fat_sectors[i] : kFreeSector);
    out_.overwrite(0, bytes.data(), bytes.size());
}

} // namespace workbook
