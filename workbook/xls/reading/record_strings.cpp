// SPDX-License-Identifier: Apache-2.0
//
// Most strings of BIFF8 are ASCII in one segment and are copied. The others become UTF-8 character
// by character; a CONTINUE record may cut a surrogate pair.
#include "workbook/xls/reading/record_strings.h"

#include <algorithm>
#include <string_view>

namespace workbook {

namespace {

// What else the flags of a string say (MS-XLS 2.5.293 XLUnicodeRichExtendedString).
constexpr std::uint8_t kHasPhonetic = 0x04, kHasRuns = 0x08;
constexpr std::uint64_t kRunBytes = 4;

struct StringHeader {
    bool is_wide = false;
    std::uint64_t attached_bytes = 0; ///< after the characters
};

StringHeader read_header(ContinuedRecord& record) {
    const std::uint8_t flags = record.u8();
    const std::uint64_t runs = (flags & kHasRuns) != 0 ? record.u16() : 0;
    const std::uint64_t phonetic_bytes = (flags & kHasPhonetic) != 0 ? record.u32() : 0;
    return {(flags & kWideCharacters) != 0, runs * kRunBytes + phonetic_bytes};
}

/// Calls `take(bytes, is_wide)` for the characters of each segment and moves `record` past them.
template <class Take>
void for_characters(ContinuedRecord& record, std::size_t length, bool is_wide, const Take& take) {
    for (std::size_t left = length;;) {
        const std::size_t width = is_wide ? 2 : 1;
        const std::size_t count = std::min(left, record.rest().size() / width);
        take(record.rest().substr(0, count * width), is_wide);
        record.advance(count * width);
        left -= count;
        if (left == 0) return;
        do {
            if (!record.next_segment()) return;
        } while (record.rest().empty());
        is_wide = (record.u8() & kWideCharacters) != 0;
    }
}

bool is_ascii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Makes generalised UTF-8 of characters that come in pieces.
class CharacterEncoder {
  public:
    explicit CharacterEncoder(std::string& text) : text_(text) {}

    void append(std::string_view bytes, bool is_wide) {
        const std::size_t width = is_wide ? 2 : 1;
        // Three bytes for each unit, those that wait included.
        const std::size_t begin = text_.size();
        text_.resize(begin + 3 * (bytes.size() / width + 1));
        out_ = text_.data() + begin;
        for (std::size_t i = 0; i < bytes.size(); i += width)
            put(is_wide ? load_u16(bytes.data() + i) : static_cast<unsigned char>(bytes[i]));
        text_.resize(static_cast<std::size_t>(out_ - text_.data()));
    }

    /// Once, after the last piece.
    void finish() {
        if (high_ == 0) return;
        text_.resize(text_.size() + 3);
        out_ = text_.data() + text_.size() - 3;
        flush();
    }

  private:
    static char tail(std::uint32_t bits) { return static_cast<char>(0x80u | (bits & 0x3Fu)); }

    void put(std::uint32_t unit) {
        if (high_ != 0 && (unit & 0xFC00u) == 0xDC00u) {
            const std::uint32_t point = 0x10000u + ((high_ & 0x3FFu) << 10) + (unit & 0x3FFu);
            high_ = 0;
            *out_++ = static_cast<char>(0xF0u | point >> 18);
            *out_++ = tail(point >> 12);
            *out_++ = tail(point >> 6);
            *out_++ = tail(point);
            return;
        }
        flush();
        if (unit < 0x80) {
            *out_++ = static_cast<char>(unit);
        } else if (unit < 0x800) {
            *out_++ = static_cast<char>(0xC0u | unit >> 6);
            *out_++ = tail(unit);
        } else if ((unit & 0xFC00u) == 0xD800u) {
            high_ = unit;
        } else {
            put_three_bytes(unit);
        }
    }

    void flush() {
        if (high_ != 0) put_three_bytes(high_);
        high_ = 0;
    }

    void put_three_bytes(std::uint32_t unit) {
        *out_++ = static_cast<char>(0xE0u | unit >> 12);
        *out_++ = tail(unit >> 6);
        *out_++ = tail(unit);
    }

    std::string& text_;
    char* out_ = nullptr;
    std::uint32_t high_ = 0; ///< a high surrogate that waits for its other half
};

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
    const StringHeader header = read_header(record);
    const std::string_view rest = record.rest();
    if (!header.is_wide && length <= rest.size() && is_ascii(rest.substr(0, length))) {
        text_.assign(rest.substr(0, length));
        record.advance(length);
    } else {
        CharacterEncoder encoder(text_);
        for_characters(record, length, header.is_wide, [&](std::string_view bytes, bool is_wide) {
            encoder.append(bytes, is_wide);
        });
        encoder.finish();
    }
    record.skip(header.attached_bytes);
    return text_;
}

void RecordStrings::skip_unicode(ContinuedRecord& record) {
    const std::size_t length = record.u16();
    if (length == 0 && record.rest().empty()) return;
    const StringHeader header = read_header(record);
    for_characters(record, length, header.is_wide, [](std::string_view, bool) {});
    record.skip(header.attached_bytes);
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

} // namespace workbook
