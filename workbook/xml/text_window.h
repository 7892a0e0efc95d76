// SPDX-License-Identifier: Apache-2.0
//
// A moving window of UTF-8 text over a part: the part is unpacked block by block and never held
// whole. Finds out the part's encoding and turns UTF-16 and single-byte text into UTF-8 on the way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "workbook/io/byte_source.h"
#include "workbook/xml/find_byte.h"

namespace workbook {

class TextWindow {
  public:
    /// `part` must outlive the window. Reads the first block.
    explicit TextWindow(ByteSource& part);
    ~TextWindow();
    TextWindow(const TextWindow&) = delete;
    TextWindow& operator=(const TextWindow&) = delete;

    /// The unread text is [cursor, end); `kReadAhead` zero bytes follow it.
    const char* cursor() const { return cursor_; }
    const char* end() const { return end_; }
    void set_cursor(const char* cursor) { cursor_ = cursor; }

    /// Moves the unread text to the front and appends the next block; every pointer into the window
    /// is invalid afterwards. False when the part has no more text. Throws `Error`, also when the
    /// unread text is longer than `kMaxTokenBytes`.
    bool refill();
    /// For readers that take plain elements off the window: `refill`, if the element at the cursor
    /// may be cut off by the window's end.
    bool refill_if_short() { return end_ - cursor_ < kShort && refill(); }
    /// Whether `refill` can bring more.
    bool at_part_end() const { return at_part_end_; }

    /// Byte position of `at` within the part's UTF-8 text.
    std::uint64_t position(const char* at) const {
        return base_position_ + static_cast<std::uint64_t>(at - buffer_.get());
    }
    const std::string& part_name() const { return part_.part_name(); }

  private:
    class Transcoder;
    static constexpr std::ptrdiff_t kShort = 4096;

    void make_room();
    void detect_encoding();
    void declare(const std::string& encoding);

    ByteSource& part_;
    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_;
    const char* cursor_;
    char* end_;
    std::uint64_t base_position_ = 0;
    bool at_part_end_ = false;
    std::unique_ptr<Transcoder> transcoder_; ///< null for UTF-8
};

} // namespace workbook
