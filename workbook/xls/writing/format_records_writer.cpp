// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/format_records_writer.h"

#include <array>
#include <cstdint>

#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"
#include "workbook/xls/writing/record_writer.h"

namespace workbook {

namespace {

constexpr std::uint16_t kLocked = 0x0001;
constexpr std::uint8_t kBottomAligned = 0x20;
constexpr std::uint16_t kHasNumberFormat = 0x0400; ///< differs from its style's
constexpr std::uint16_t kDefaultColors = 0x20C0;   ///< automatic foreground and background

// Data of an XFCRC record: header, reserved, number of formats, checksum.
constexpr std::size_t kChecksumBytes = 20, kFormatCount = 14, kChecksum = 16;

/// The checksum of MS-OSHARED 2.4.3.
class Checksum {
  public:
    Checksum() {
        for (std::uint32_t i = 0; i < table_.size(); ++i) {
            std::uint32_t value = i << 24;
            for (int bit = 0; bit < 8; ++bit) {
                constexpr std::uint32_t kHighest = 0x80000000, kPolynomial = 0xAF;
                value = (value & kHighest) != 0 ? value << 1 ^ kPolynomial : value << 1;
            }
            table_[i] = value & 0xFFFF;
        }
    }
    void add(std::string_view bytes) {
        for (const char byte : bytes)
            value_ = value_ << 8 ^ table_[value_ >> 24 ^ static_cast<std::uint8_t>(byte)];
    }
    std::uint32_t value() const { return value_; }

  private:
    std::array<std::uint32_t, 256> table_{};
    std::uint32_t value_ = 0;
};

} // namespace

void append_cell_format(const CellFormat& format, BiffVersion version, std::string& out) {
    RecordWriter writer(out);
    writer.begin(record::kXf);
    writer.u16(0);
    writer.u16(static_cast<std::uint16_t>(format.num_format));
    writer.u16(format.locked ? kLocked : 0);
    writer.u8(kBottomAligned);
    if (version == BiffVersion::Biff8) {
        writer.u8(0);
        writer.u16(kHasNumberFormat);
        writer.u32(0);
        writer.u32(0);
        writer.u16(kDefaultColors);
    } else {
        writer.u8(kHasNumberFormat >> 8);
        writer.u32(kDefaultColors);
        writer.u32(0);
    }
    writer.end();
}

void update_format_checksum(std::string& globals, std::size_t position) {
    Checksum checksum;
    std::uint16_t count = 0;
    RecordStream records(globals, 0);
    while (records.next() && records.record().position < position) {
        if (records.record().id != record::kXf) continue;
        checksum.add(records.record().data);
        ++count;
    }
    RecordStream at(globals, position);
    if (!at.next() || at.record().size() < kChecksumBytes) return;
    RecordWriter writer(globals);
    const std::size_t data = position + RecordStream::kHeaderBytes;
    writer.set_u16(data + kFormatCount, count);
    writer.set_u32(data + kChecksum, checksum.value());
}

} // namespace workbook
