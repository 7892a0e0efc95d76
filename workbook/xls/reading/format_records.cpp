// SPDX-License-Identifier: Apache-2.0
//
// Up to BIFF4, a FORMAT record has no identifier but its place in the list. BIFF2 lacks the two
// formats of fractions, so that its dates come two places earlier.
#include "workbook/xls/reading/format_records.h"

#include "workbook/xls/record_ids.h"

namespace workbook {

namespace {

constexpr std::uint32_t kFirstAfterFractions = 12;
constexpr std::uint32_t kFractionFormats = 2;
constexpr std::uint32_t kBiff2Formats = 0x80;
constexpr std::uint32_t kBiff2NumberFormat = 0x3F, kBiff2Locked = 0x40;
constexpr unsigned kLocked = 0x01;

/// The identifier of a format that is at `place` of a BIFF2 list.
std::uint32_t from_biff2(std::uint32_t place) {
    return place < kFirstAfterFractions ? place : place + kFractionFormats;
}

} // namespace

bool FormatRecords::read(RecordStream& records, RecordStrings& strings) {
    switch (records.record().id) {
    case record::kFormat2:
    case record::kFormat:
        read_number_format(records, strings);
        return true;
    case record::kXf2:
    case record::kXf3:
    case record::kXf4:
    case record::kXf:
        read_cell_format(records.record());
        return true;
    default:
        return false;
    }
}

void FormatRecords::begin_sheet() {
    sheet_number_formats_ = number_formats_.size();
    sheet_formats_ = formats_.size();
}

void FormatRecords::read_number_format(RecordStream& records, RecordStrings& strings) {
    const auto place = static_cast<std::uint32_t>(number_formats_.size());
    ContinuedRecord record(records);
    std::uint32_t identifier = version_ == BiffVersion::Biff2 ? from_biff2(place) : place;
    if (records.record().id == record::kFormat) {
        const std::uint16_t stated = record.u16(); // meaningless in BIFF4
        if (version_ >= BiffVersion::Biff5) identifier = stated;
    }
    const bool is_long = version_ == BiffVersion::Biff8;
    number_formats_.push_back(
        {identifier, strings.read(record, is_long ? LengthField::TwoBytes : LengthField::OneByte)});
}

void FormatRecords::read_cell_format(const Record& record) {
    constexpr const char* kWhat = "an XF record";
    has_xf_records_ = true;
    const auto base = static_cast<std::uint32_t>(sheet_number_formats_);
    switch (record.id) {
    case record::kXf2: {
        require_size(record, 4, kWhat);
        const std::uint8_t format = record.u8(2);
        formats_.push_back({from_biff2(format & kBiff2NumberFormat), (format & kBiff2Locked) != 0});
        return;
    }
    case record::kXf3:
    case record::kXf4:
        require_size(record, 4, kWhat);
        formats_.push_back({base + record.u8(1), (record.u8(2) & kLocked) != 0});
        return;
    default:
        require_size(record, 6, kWhat);
        formats_.push_back({record.u16(2), (record.u16(4) & kLocked) != 0});
    }
}

void FormatRecords::finish() {
    if (version_ != BiffVersion::Biff2 || has_xf_records_) return;
    for (std::uint32_t i = 0; i < kBiff2Formats; ++i)
        formats_.push_back({from_biff2(i & kBiff2NumberFormat), (i & kBiff2Locked) != 0});
}

} // namespace workbook
