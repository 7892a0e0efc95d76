// SPDX-License-Identifier: Apache-2.0
//
// Refilling moves the unread text to the front; the bytes after it are zero.
#include "workbook/xml/text_window.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/limits.h"

namespace workbook {

namespace {

// Unpacking in blocks of this size keeps both the block and its cells in the cache.
constexpr std::size_t kBlock = 64u << 10;
constexpr std::size_t kFirstCapacity = 2 * kBlock;

// Windows-1252 at 0x80 to 0x9F; elsewhere it agrees with ISO 8859-1.
constexpr std::array<char32_t, 32> kWindows1252 = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

bool starts_with(const char* text, std::size_t size, std::string_view prefix) {
    return size >= prefix.size() && std::memcmp(text, prefix.data(), prefix.size()) == 0;
}

std::string lower_case(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
}

// The encoding that an XML declaration names, in lower case; empty without one.
std::string declared_encoding(std::string_view text) {
    if (!text.starts_with("<?xml")) return {};
    text = text.substr(0, std::min(text.find("?>"), std::size_t{256}));
    std::size_t at = text.find("encoding");
    if (at == std::string_view::npos) return {};
    at = text.find_first_of("\"'", at);
    if (at == std::string_view::npos) return {};
    const std::size_t end = text.find(text[at], at + 1);
    if (end == std::string_view::npos) return {};
    return lower_case(text.substr(at + 1, end - at - 1));
}

} // namespace

// Turns blocks of another encoding into UTF-8.
class TextWindow::Transcoder {
  public:
    enum class Encoding { Utf16LittleEndian, Utf16BigEndian, SingleByte };

    explicit Transcoder(Encoding encoding) : encoding_(encoding) {}

    void append(std::string& out, const char* bytes, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto byte = static_cast<unsigned char>(bytes[i]);
            if (encoding_ == Encoding::SingleByte)
                foundation::unicode::append_code_point(
                    out, byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80] : byte);
            else
                append_utf16_byte(out, byte);
        }
    }

    // Call at the end of the part.
    void finish(std::string& out) {
        if (high_surrogate_ != 0) foundation::unicode::append_code_point(out, high_surrogate_);
        high_surrogate_ = 0;
    }

  private:
    void append_utf16_byte(std::string& out, unsigned char byte) {
        if (!has_half_) {
            half_ = byte;
            has_half_ = true;
            return;
        }
        has_half_ = false;
        const unsigned high = encoding_ == Encoding::Utf16BigEndian ? half_ : byte;
        const unsigned low = encoding_ == Encoding::Utf16BigEndian ? byte : half_;
        append_unit(out, static_cast<char32_t>(high << 8 | low));
    }

    void append_unit(std::string& out, char32_t unit) {
        if (high_surrogate_ != 0 && unit >= 0xDC00 && unit <= 0xDFFF) {
            foundation::unicode::append_code_point(
                out, 0x10000 + ((high_surrogate_ - 0xD800) << 10) + (unit - 0xDC00));
            high_surrogate_ = 0;
            return;
        }
        finish(out);
        if (unit >= 0xD800 && unit <= 0xDBFF)
            high_surrogate_ = unit;
        else
            foundation::unicode::append_code_point(out, unit);
    }

    Encoding encoding_;
    unsigned char half_ = 0;
    bool has_half_ = false;
    char32_t high_surrogate_ = 0;
};

TextWindow::TextWindow(ByteSource& part)
    : part_(part),
      buffer_(new char[kFirstCapacity + kReadAhead]),
      capacity_(kFirstCapacity),
      cursor_(buffer_.get()),
      end_(buffer_.get()) {
    std::memset(end_, 0, kReadAhead);
    while (end_ - cursor_ < 256 && refill()) {
    }
    detect_encoding();
}

TextWindow::~TextWindow() = default;

void TextWindow::detect_encoding() {
    using Encoding = Transcoder::Encoding;
    const auto size = static_cast<std::size_t>(end_ - cursor_);
    const char* text = cursor_;
    std::size_t mark = 0;
    if (starts_with(text, size, "\xEF\xBB\xBF")) {
        cursor_ += 3;
        return;
    }
    if (starts_with(text, size, "\xFF\xFE") ||
        starts_with(text, size, std::string_view("<\0", 2))) {
        transcoder_ = std::make_unique<Transcoder>(Encoding::Utf16LittleEndian);
        mark = text[0] == '<' ? 0 : 2;
    } else if (starts_with(text, size, "\xFE\xFF") ||
               starts_with(text, size, std::string_view("\0<", 2))) {
        transcoder_ = std::make_unique<Transcoder>(Encoding::Utf16BigEndian);
        mark = text[1] == '<' ? 0 : 2;
    } else {
        declare(declared_encoding({text, size}));
    }
    if (!transcoder_) return;

    const std::string raw(text + mark, size - mark);
    std::string utf8;
    transcoder_->append(utf8, raw.data(), raw.size());
    if (at_part_end_) transcoder_->finish(utf8);
    cursor_ = end_ = buffer_.get();
    while (capacity_ < utf8.size())
        make_room();
    std::memcpy(end_, utf8.data(), utf8.size());
    end_ += utf8.size();
    std::memset(end_, 0, kReadAhead);
}

void TextWindow::declare(const std::string& encoding) {
    // A part that says UTF-16 but is readable byte by byte says so wrongly.
    static constexpr std::string_view kUtf8[] = {"",         "utf-8", "utf8",
                                                 "us-ascii", "ascii", "utf-16"};
    static constexpr std::string_view kSingleByte[] = {"iso-8859-1", "latin1", "iso8859-1",
                                                       "windows-1252", "cp1252"};
    if (std::find(std::begin(kUtf8), std::end(kUtf8), encoding) != std::end(kUtf8)) return;
    if (std::find(std::begin(kSingleByte), std::end(kSingleByte), encoding) ==
        std::end(kSingleByte))
        throw Error::damaged(part_name(), "its text encoding \"" + encoding + "\" is not read");
    transcoder_ = std::make_unique<Transcoder>(Transcoder::Encoding::SingleByte);
}

// Doubles the buffer. The unread text must be at its front.
void TextWindow::make_room() {
    if (capacity_ > kMaxTokenBytes + kBlock)
        throw Error::limit(part_name(), "it has a tag or a run of text longer than " +
                                            std::to_string(kMaxTokenBytes >> 20) + " MiB");
    const auto used = static_cast<std::size_t>(end_ - cursor_);
    std::unique_ptr<char[]> larger(new char[2 * capacity_ + kReadAhead]);
    std::memcpy(larger.get(), cursor_, used);
    buffer_ = std::move(larger);
    capacity_ *= 2;
    cursor_ = buffer_.get();
    end_ = buffer_.get() + used;
}

bool TextWindow::refill() {
    if (at_part_end_) return false;
    const auto unread = static_cast<std::size_t>(end_ - cursor_);
    base_position_ += static_cast<std::uint64_t>(cursor_ - buffer_.get());
    // A long token stays at the front over many blocks.
    if (cursor_ != buffer_.get()) std::memmove(buffer_.get(), cursor_, unread);
    cursor_ = buffer_.get();
    end_ = buffer_.get() + unread;
    if (capacity_ - unread < kBlock) make_room();

    if (!transcoder_) {
        const std::size_t got = part_.read(end_, kBlock);
        at_part_end_ = got == 0;
        end_ += got;
    } else {
        std::array<char, kBlock / 4> raw; // one byte can become three
        const std::size_t got = part_.read(raw.data(), raw.size());
        at_part_end_ = got == 0;
        std::string utf8;
        transcoder_->append(utf8, raw.data(), got);
        if (at_part_end_) transcoder_->finish(utf8);
        std::memcpy(end_, utf8.data(), utf8.size());
        end_ += utf8.size();
    }
    std::memset(end_, 0, kReadAhead);
    return !at_part_end_ || static_cast<std::size_t>(end_ - cursor_) > unread;
}

} // namespace workbook
