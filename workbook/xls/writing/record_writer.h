// SPDX-License-Identifier: Apache-2.0
//
// Appends BIFF8 records to a stream in memory (MS-XLS 2.1.4): number, length, data. A record that
// would be longer than a record may be goes on in CONTINUE records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "workbook/io/little_endian.h"

namespace workbook {

/// Most bytes of data in one record (MS-XLS 2.1.4).
inline constexpr std::size_t kMaxRecordBytes = 8224;

class RecordWriter {
  public:
    /// Appends to `stream`, which must outlive this.
    explicit RecordWriter(std::string& stream) : stream_(stream) {}

    /// Where the next byte goes.
    std::size_t position() const { return stream_.size(); }

    /// A record whose data is known. `data` has at most `kMaxRecordBytes`.
    void record(std::uint16_t id, std::string_view data);

    /// A record whose data is appended by the calls below until `end`.
    void begin(std::uint16_t id);
    void u8(std::uint8_t value) { stream_ += static_cast<char>(value); }
    void u16(std::uint16_t value) { append_u16(stream_, value); }
    void u32(std::uint32_t value) { append_u32(stream_, value); }
    void f64(double value) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        append_u64(stream_, bits);
    }
    void bytes(std::string_view data) { stream_.append(data); }
    /// A string without its length: the flag byte, then one byte a character where each has a code
    /// below 256, else two (MS-XLS 2.5.294 XLUnicodeStringNoCch).
    void characters(std::u16string_view text);
    void end();

    /// Bytes that fit into the open record.
    std::size_t room() const { return kMaxRecordBytes - (stream_.size() - data_begin_); }
    /// Opens the last record of the stream again, whose header is at `header`.
    void reopen(std::size_t header);
    /// Ends the open record and begins a CONTINUE record.
    void continue_record();

    /// Replaces integers that were written before.
    void set_u16(std::size_t position, std::uint16_t value);
    void set_u32(std::size_t position, std::uint32_t value);

  private:
    std::string& stream_;
    std::size_t data_begin_ = 0; ///< of the open record
};

/// Whether each character of `text` has a code below 256.
bool is_compressible(std::u16string_view text);

} // namespace workbook
