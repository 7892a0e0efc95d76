// SPDX-License-Identifier: Apache-2.0
//
// Fields that CONTINUE records may cut.
#include "workbook/xls/reading/continued_record.h"

#include "workbook/xls/record_ids.h"

namespace workbook {

bool ContinuedRecord::next_segment() {
    rest_ = {};
    if (records_.next_id() != record::kContinue || !records_.next()) return false;
    rest_ = records_.record().data;
    return true;
}

bool ContinuedRecord::at_end() {
    while (rest_.empty())
        if (!next_segment()) return true;
    return false;
}

std::uint8_t ContinuedRecord::u8() {
    if (at_end()) refuse_record(records_.record(), "a record ends within a field");
    const auto byte = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
}

std::uint16_t ContinuedRecord::u16() {
    const std::uint8_t low = u8();
    return static_cast<std::uint16_t>(low | u8() << 8);
}

std::uint32_t ContinuedRecord::u32() {
    const std::uint32_t low = u16();
    return low | static_cast<std::uint32_t>(u16()) << 16;
}

bool ContinuedRecord::skip(std::uint64_t count) {
    while (count > rest_.size()) {
        count -= rest_.size();
        if (!next_segment()) return false;
    }
    rest_.remove_prefix(static_cast<std::size_t>(count));
    return true;
}

} // namespace workbook
