// SPDX-License-Identifier: Apache-2.0
//
// The records of a workbook stream (MS-XLS 2.1.4): number, length, data. Views into the stream,
// which must outlive whatever is made here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "workbook/io/little_endian.h"

namespace workbook {

struct Record {
    std::uint16_t id = 0;
    std::string_view data;
    std::size_t position = 0; ///< of the record's header in the stream

    std::size_t size() const { return data.size(); }
    /// The caller has checked that the bytes are there.
    std::uint8_t u8(std::size_t at) const { return static_cast<std::uint8_t>(data[at]); }
    std::uint16_t u16(std::size_t at) const { return load_u16(data.data() + at); }
    std::uint32_t u32(std::size_t at) const { return load_u32(data.data() + at); }
};

/// Walks the records from a position on.
class RecordStream {
  public:
    static constexpr std::size_t kHeaderBytes = 4;

    /// A `position` past the end is one without records.
    RecordStream(std::string_view stream, std::size_t position)
        : stream_(stream), next_(position < stream.size() ? position : stream.size()) {}

    /// Goes to the next record; false when the stream has no more. Throws `Error` for a record that
    /// ends past the stream.
    bool next() {
        if (stream_.size() - next_ < kHeaderBytes) return false;
        const char* header = stream_.data() + next_;
        const std::size_t size = load_u16(header + 2);
        if (size > stream_.size() - next_ - kHeaderBytes) refuse_cut_record();
        record_ = {load_u16(header), {header + kHeaderBytes, size}, next_};
        next_ += kHeaderBytes + size;
        return true;
    }
    /// The number of the record that `next` would go to; 0 at the end.
    std::uint16_t next_id() const {
        return stream_.size() - next_ < kHeaderBytes ? std::uint16_t{0}
                                                     : load_u16(stream_.data() + next_);
    }
    const Record& record() const { return record_; }
    /// Of the record that `next` would go to.
    std::size_t position() const { return next_; }

    std::string_view stream() const { return stream_; }

  private:
    [[noreturn]] void refuse_cut_record() const;

    std::string_view stream_;
    std::size_t next_;
    Record record_;
};

/// Throws `Error` unless `record` has at least `size` bytes; `what` names it ("a FORMAT record").
void require_size(const Record& record, std::size_t size, const char* what);

/// Throws `Error` for a record that breaks the format; `what` says how.
[[noreturn]] void refuse_record(const Record& record, const char* what);

} // namespace workbook
