// SPDX-License-Identifier: Apache-2.0
//
// Most strings of BIFF8 are ASCII in one segment; the rest is collected as UTF-16 first, since a
// surrogate pair may be cut by a CONTINUE record.
#include "workbook/xls/reading/record_strings.h"

#include <algorithm>
#include <string_view>

#include "foundation/unicode.h"

namespace workbook {

namespace {

// The flags of a string (MS-XLS 2.5.293 XLUnicodeRichExtendedString).
constexpr std::uint8_t kWide = 0x01, kHasPhonetic = 0x04, kHasRuns = 0x08;
constexpr std::uint64_t kRunBytes = 4;

bool is_ascii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Goes to the next segment with a byte, the first of which says how wide its characters are; false
/// when there is none.
bool next_characters(ContinuedRecord& record, bool& is_wide) {
    while (record.next_segment()) {
        if (record.rest().empty()) continue;
        is_wide = (record.u8() & kWide) != 0;
        return true;
    }
    return false;
}

} // namespace

const std::string& RecordStrings::read(ContinuedRecord& record, LengthField length_field) {
    const std::size_t length = length_field == LengthField::OneByte ? record.u8() : record.u16();
    return read_characters(record, length);
}

const std::string& RecordStrings::read_characters(ContinuedRecord& record, std::size_t length) {
    if (version_ == BiffVersion::Biff8) return read_unicode(record, length);
    text_.clear();
    append_bytes(record, length);
    return text_;
}

const std::string& RecordStrings::read_unicode(ContinuedRecord& record, std::size_t length) {
    text_.clear();
    if (length == 0 && record.rest().empty()) return text_; // some writers leave the flags out
    const std::uint8_t flags = record.u8();
    const std::uint64_t runs = (flags & kHasRuns) != 0 ? record.u16() : 0;
    const std::uint64_t phonetic_bytes = (flags & kHasPhonetic) != 0 ? record.u32() : 0;
    const bool is_wide = (flags & kWide) != 0;
    if (!is_wide && length <= record.rest().size() && is_ascii(record.rest().substr(0, length))) {
        text_.assign(record.rest().substr(0, length));
        record.advance(length);
    } else {
        append_units(record, length, is_wide);
    }
    record.skip(runs * kRunBytes + phonetic_bytes);
    return text_;
}

void RecordStrings::append_bytes(ContinuedRecord& record, std::size_t length) {
    if (length <= record.rest().size()) {
        byte_text_.append_utf8(record.rest().substr(0, length), text_);
        record.advance(length);
        return;
    }
    std::string bytes;
    while (bytes.size() < length && !record.at_end()) {
        const std::string_view piece = record.rest().substr(0, length - bytes.size());
        bytes.append(piece);
        record.advance(piece.size());
    }
    byte_text_.append_utf8(bytes, text_);
}

void RecordStrings::append_units(ContinuedRecord& record, std::size_t length, bool is_wide) {
    units_.clear();
    do {
        const std::string_view rest = record.rest();
        const std::size_t width = is_wide ? 2 : 1;
        const std::size_t count = std::min(length - units_.size(), rest.size() / width);
        for (std::size_t i = 0; i < count; ++i)
            units_ += is_wide ? static_cast<char16_t>(load_u16(rest.data() + 2 * i))
                              : static_cast<char16_t>(static_cast<unsigned char>(rest[i]));
        record.advance(count * width);
    } while (units_.size() < length && next_characters(record, is_wide));
    text_ = foundation::unicode::to_generalized_utf8(units_);
}

} // namespace workbook
