// SPDX-License-Identifier: Apache-2.0
//
// Local headers are written with the entry and completed after it, so that no entry needs a data
// descriptor, which some readers cannot handle.
#include "workbook/zip/zip_writer.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "workbook/error.h"
#include "workbook/io/little_endian.h"
#include "workbook/zip/zip_format.h"

namespace workbook {

namespace {

using foundation::files::FileError;
using foundation::files::OutputFile;
using namespace zip;

constexpr std::uint16_t kVersionDeflate = 20;
constexpr std::uint16_t kVersionZip64 = 45;
constexpr std::uint16_t kUtf8Name = 1 << 11;
constexpr std::uint16_t kHasDescriptor = 1 << 3;
constexpr std::uint16_t kFirstDay = 0x21; // 1980-01-01: equal content makes equal files

constexpr std::uint16_t kZip64FieldBytes = 16;
/// Padding in place of a Zip64 field that turned out not to be needed (ECMA-376 part 2, annex C).
constexpr std::uint16_t kGrowthHintField = 0xA220;
constexpr std::uint16_t kGrowthHintSignature = 0xA028;

/// Guesses of sizes may be wrong by half.
constexpr std::uint64_t kMayPass4GiB = std::uint64_t{2} << 30;

constexpr std::size_t kBlockBytes = 64u << 10;

bool needs_64_bits(const ZipEntry& entry) {
    return entry.size >= kIn64Bits || entry.packed_size >= kIn64Bits;
}

bool is_ascii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::uint32_t low_bits(std::uint64_t value) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(value, kIn64Bits));
}

/// Version, flags, method, time, CRC and sizes: what both headers have in common.
void append_common(std::string& out, const ZipEntry& entry, bool sizes_in_64_bits,
                   std::uint16_t version) {
    append_u16(out, version);
    append_u16(out, entry.flags);
    append_u16(out, entry.method);
    append_u16(out, entry.time);
    append_u16(out, entry.date);
    append_u32(out, entry.crc32);
    append_u32(out, sizes_in_64_bits ? kIn64Bits : static_cast<std::uint32_t>(entry.packed_size));
    append_u32(out, sizes_in_64_bits ? kIn64Bits : static_cast<std::uint32_t>(entry.size));
    append_u16(out, static_cast<std::uint16_t>(entry.name.size()));
}

std::uint16_t version_of(const ZipEntry& entry, bool zip64) {
    return std::max(entry.version_needed, zip64 ? kVersionZip64 : kVersionDeflate);
}

/// The local header; `has_room` is whether it has a field for sizes in 64 bits.
std::string local_header(const ZipEntry& entry, bool has_room) {
    const bool zip64 = needs_64_bits(entry);
    std::string header;
    append_u32(header, kLocalSignature);
    append_common(header, entry, zip64, version_of(entry, zip64));
    append_u16(header, has_room ? 4 + kZip64FieldBytes : 0);
    header += entry.name;
    if (!has_room) return header;
    append_u16(header, zip64 ? kZip64Field : kGrowthHintField);
    append_u16(header, kZip64FieldBytes);
    if (zip64) {
        append_u64(header, entry.size);
        append_u64(header, entry.packed_size);
    } else {
        append_u16(header, kGrowthHintSignature);
        header.append(kZip64FieldBytes - 2, '\0');
    }
    return header;
}

/// What does not fit into the 32-bit fields of the directory's header.
std::string directory_zip64_field(const ZipEntry& entry) {
    std::string values;
    if (needs_64_bits(entry)) {
        append_u64(values, entry.size);
        append_u64(values, entry.packed_size);
    }
    if (entry.header_position >= kIn64Bits) append_u64(values, entry.header_position);
    if (values.empty()) return values;
    std::string field;
    append_u16(field, kZip64Field);
    append_u16(field, static_cast<std::uint16_t>(values.size()));
    return field + values;
}

} // namespace

/// The file, its failures as errors of this library.
class ZipWriter::FileSink final : public ByteSink {
  public:
    explicit FileSink(OutputFile& file) : file_(file) {}

    using ByteSink::append;
    void append(const char* bytes, std::size_t count) override {
        try {
            file_.append(bytes, count);
        } catch (const FileError& error) {
            throw Error::file(error);
        }
    }

    void overwrite(std::uint64_t position, std::string_view bytes) {
        try {
            file_.overwrite(position, bytes.data(), bytes.size());
        } catch (const FileError& error) {
            throw Error::file(error);
        }
    }

    std::uint64_t size() const { return file_.size(); }

  private:
    OutputFile& file_;
};

/// Collects small pieces, since every call of an engine has its price.
class ZipWriter::EntrySink final : public ByteSink {
  public:
    EntrySink(FileSink& out, Packer& packer, ZipEntry entry, bool has_room)
        : out_(out), packer_(packer), entry_(std::move(entry)), has_room_(has_room) {
        out_.append(local_header(entry_, has_room_));
        data_position_ = out_.size();
    }

    using ByteSink::append;
    void append(const char* bytes, std::size_t count) override {
        if (count > kBlockBytes - used_) flush();
        if (count >= kBlockBytes) {
            pack(bytes, count);
            return;
        }
        if (count > 0) std::memcpy(block_.get() + used_, bytes, count);
        used_ += count;
    }

    /// Completes the local header and returns what the directory has to say.
    const ZipEntry& finish() {
        flush();
        packer_.finish(out_);
        entry_.packed_size = out_.size() - data_position_;
        check_room();
        out_.overwrite(entry_.header_position, local_header(entry_, has_room_));
        return entry_;
    }

  private:
    void flush() {
        if (used_ == 0) return;
        pack(block_.get(), used_);
        used_ = 0;
    }

    void pack(const char* bytes, std::size_t count) {
        entry_.crc32 = update_crc32(kBestInflateEngine, entry_.crc32, bytes, count);
        entry_.size += count;
        check_room();
        packer_.pack(bytes, count, out_);
    }

    void check_room() const {
        if (needs_64_bits(entry_) && !has_room_)
            throw Error::limit(entry_.name, "more than 4 GiB, which was not expected");
    }

    FileSink& out_;
    Packer& packer_;
    ZipEntry entry_;
    bool has_room_;
    std::uint64_t data_position_ = 0;
    std::unique_ptr<char[]> block_{new char[kBlockBytes]};
    std::size_t used_ = 0;
};

ZipWriter::ZipWriter(OutputFile& out) : out_(std::make_unique<FileSink>(out)) {}

ZipWriter::~ZipWriter() = default;

ByteSink& ZipWriter::begin_entry(std::string_view name, std::uint64_t expected_bytes) {
    if (name.size() > std::numeric_limits<std::uint16_t>::max())
        throw Error::limit(name.substr(0, 100), "a part's name of more than 65,535 bytes");
    if (packer_ == nullptr) packer_ = make_packer();
    ZipEntry entry;
    entry.name = name;
    entry.header_position = out_->size();
    entry.method = kMethodDeflated;
    entry.flags = is_ascii(name) ? 0 : kUtf8Name;
    entry.date = kFirstDay;
    entry.made_by = kVersionZip64;
    entry_ = std::make_unique<EntrySink>(*out_, *packer_, std::move(entry),
                                         expected_bytes >= kMayPass4GiB);
    return *entry_;
}

void ZipWriter::end_entry() {
    add_to_directory(entry_->finish());
    entry_.reset();
}

void ZipWriter::copy_entry(ZipArchive& source, const ZipEntry& entry) {
    ZipEntry copy = entry;
    copy.header_position = out_->size();
    copy.flags &= static_cast<std::uint16_t>(~kHasDescriptor);
    out_->append(local_header(copy, needs_64_bits(copy)));
    std::uint64_t left = entry.packed_size;
    try {
        PackedBytes packed = source.open_packed(entry);
        while (left > 0) {
            const PackedBytes::Block block = packed.next();
            if (block.count == 0) throw Error::damaged(entry.name, "it ends too early");
            out_->append(block.bytes, block.count);
            left -= block.count;
        }
    } catch (const FileError& error) {
        throw Error::file(error);
    }
    add_to_directory(copy);
}

void ZipWriter::add_to_directory(const ZipEntry& entry) {
    const std::string zip64 = directory_zip64_field(entry);
    append_u32(directory_, kHeaderSignature);
    append_u16(directory_, entry.made_by);
    append_common(directory_, entry, needs_64_bits(entry), version_of(entry, !zip64.empty()));
    append_u16(directory_, static_cast<std::uint16_t>(zip64.size()));
    append_u16(directory_, 0); // comment
    append_u16(directory_, 0); // disk
    append_u16(directory_, 0); // internal attributes
    append_u32(directory_, entry.attributes);
    append_u32(directory_, low_bits(entry.header_position));
    directory_ += entry.name;
    directory_ += zip64;
    ++entries_;
}

void ZipWriter::finish() {
    const std::uint64_t position = out_->size();
    out_->append(directory_);
    if (entries_ >= kCountIn64Bits || position >= kIn64Bits || directory_.size() >= kIn64Bits)
        finish_zip64(position);
    const auto count =
        static_cast<std::uint16_t>(std::min<std::uint64_t>(entries_, kCountIn64Bits));
    std::string end;
    append_u32(end, kEndSignature);
    append_u32(end, 0); // disks
    append_u16(end, count);
    append_u16(end, count);
    append_u32(end, low_bits(directory_.size()));
    append_u32(end, low_bits(position));
    append_u16(end, 0); // comment
    out_->append(end);
}

void ZipWriter::finish_zip64(std::uint64_t directory_position) {
    constexpr std::uint64_t kRestOfRecordBytes = 44;
    const std::uint64_t record_position = out_->size();
    std::string records;
    append_u32(records, kEnd64Signature);
    append_u64(records, kRestOfRecordBytes);
    append_u16(records, kVersionZip64);
    append_u16(records, kVersionZip64);
    append_u64(records, 0); // disks
    append_u64(records, entries_);
    append_u64(records, entries_);
    append_u64(records, directory_.size());
    append_u64(records, directory_position);
    append_u32(records, kLocator64Signature);
    append_u32(records, 0); // disk
    append_u64(records, record_position);
    append_u32(records, 1); // disks
    out_->append(records);
}

} // namespace workbook
