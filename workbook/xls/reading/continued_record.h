// SPDX-License-Identifier: Apache-2.0
//
// The data of a record with the CONTINUE records after it (MS-XLS 2.4.58), front to back. Where one
// segment ends matters to strings: the next begins with a flag byte if characters are cut there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "workbook/xls/record_stream.h"

namespace workbook {

class ContinuedRecord {
  public:
    /// Starts with `records.record()` and moves `records` forward over CONTINUE records, as far as
    /// it reads. Must not outlive `records`.
    explicit ContinuedRecord(RecordStream& records)
        : records_(records), rest_(records.record().data) {}

    /// What is left of the segment.
    std::string_view rest() const { return rest_; }
    /// `count` must not exceed `rest().size()`.
    void advance(std::size_t count) { rest_.remove_prefix(count); }
    /// Drops the rest of the segment and goes to the next; false when there is none.
    bool next_segment();
    /// Whether no byte is left, in any segment.
    bool at_end();

    // Throw `Error` at the end. Integers may be cut between segments.
    std::uint8_t u8();
    std::uint16_t u16();
    std::uint32_t u32();

    /// Skips bytes over any number of segments; false when there are fewer.
    bool skip(std::uint64_t count);

  private:
    RecordStream& records_;
    std::string_view rest_;
};

} // namespace workbook
