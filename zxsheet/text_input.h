// SPDX-License-Identifier: Apache-2.0
//
// The characters of a text file one after the other, as UTF-8, read in blocks: UTF-16 is detected
// by its byte order mark, and marks are left out.
#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <string_view>

namespace zxsheet {

class TextInput {
  public:
    static constexpr int kEnd = -1;

    /// `name` is what failures call the input.
    TextInput(std::istream& in, std::string name);

    /// The next byte, 0 to 255, or `kEnd`. Throws `CommandError` when the input cannot be read.
    int peek() { return has_text() ? static_cast<unsigned char>(text_[position_]) : kEnd; }
    /// As `peek`; moves to the next byte.
    int next() { return has_text() ? static_cast<unsigned char>(text_[position_++]) : kEnd; }
    /// Some of the text that comes next; empty at the end only.
    std::string_view ahead();
    /// Goes on by `count` bytes of what `ahead` returned.
    void skip(std::size_t count) { position_ += count; }

    const std::string& name() const { return name_; }

  private:
    enum class Encoding { Utf8, Utf16Little, Utf16Big };

    bool has_text() { return position_ < text_.size() || fill(); }
    bool fill();
    /// Appends a block to `bytes_`; false at the end.
    bool read_block();
    void find_encoding();
    void decode_utf16(bool is_last);

    std::istream& in_;
    std::string name_;
    Encoding encoding_ = Encoding::Utf8;
    bool started_ = false;
    std::string bytes_; ///< read, not yet decoded
    std::string text_;
    std::size_t position_ = 0; ///< in `text_`
};

} // namespace zxsheet
