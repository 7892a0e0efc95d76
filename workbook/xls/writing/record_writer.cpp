// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/record_writer.h"

#include <algorithm>
#include <cassert>

#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"

namespace workbook {

bool is_compressible(std::u16string_view text) {
    return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 256; });
}

void RecordWriter::record(std::uint16_t id, std::string_view data) {
    assert(data.size() <= kMaxRecordBytes);
    append_u16(stream_, id);
    append_u16(stream_, static_cast<std::uint16_t>(data.size()));
    stream_.append(data);
}

void RecordWriter::begin(std::uint16_t id) {
    append_u16(stream_, id);
    append_u16(stream_, 0);
    data_begin_ = stream_.size();
}

void RecordWriter::end() {
    const std::size_t size = stream_.size() - data_begin_;
    assert(size <= kMaxRecordBytes);
    set_u16(data_begin_ - 2, static_cast<std::uint16_t>(size));
}

void RecordWriter::reopen(std::size_t header) {
    data_begin_ = header + RecordStream::kHeaderBytes;
}

void RecordWriter::continue_record() {
    end();
    begin(record::kContinue);
}

void RecordWriter::characters(std::u16string_view text) {
    const bool is_wide = !is_compressible(text);
    u8(is_wide ? 1 : 0);
    for (const char16_t unit : text)
        if (is_wide)
            u16(unit);
        else
            u8(static_cast<std::uint8_t>(unit));
}

void RecordWriter::set_u16(std::size_t position, std::uint16_t value) {
    stream_[position] = static_cast<char>(value & 0xFF);
    stream_[position + 1] = static_cast<char>(value >> 8);
}

void RecordWriter::set_u32(std::size_t position, std::uint32_t value) {
    set_u16(position, static_cast<std::uint16_t>(value & 0xFFFF));
    set_u16(position + 2, static_cast<std::uint16_t>(value >> 16));
}

} // namespace workbook
