// SPDX-License-Identifier: Apache-2.0
//
// Blocks of bytes into blocks of UTF-8.
#include "zxsheet/text_input.h"

#include <utility>

#include "foundation/unicode.h"
#include "zxsheet/command_error.h"

namespace zxsheet {
namespace {

constexpr std::size_t kBlockBytes = 1 << 16;

} // namespace

TextInput::TextInput(std::istream& in, std::string name) : in_(in), name_(std::move(name)) {}

std::string_view TextInput::ahead() {
    return has_text() ? std::string_view(text_).substr(position_) : std::string_view();
}

bool TextInput::fill() {
    position_ = 0;
    text_.clear();
    bool is_last = false;
    while (text_.empty() && !is_last) {
        is_last = !read_block();
        if (!std::exchange(started_, true)) find_encoding();
        if (encoding_ != Encoding::Utf8) {
            decode_utf16(is_last);
            continue;
        }
        text_.swap(bytes_);
        bytes_.clear();
    }
    return !text_.empty();
}

bool TextInput::read_block() {
    const std::size_t kept = bytes_.size();
    bytes_.resize(kept + kBlockBytes);
    in_.read(bytes_.data() + kept, static_cast<std::streamsize>(kBlockBytes));
    const auto count = static_cast<std::size_t>(in_.gcount());
    bytes_.resize(kept + count);
    if (in_.bad()) throw CommandError(ExitCode::NotReadable, name_ + ": It cannot be read.");
    return count != 0;
}

void TextInput::find_encoding() {
    if (bytes_.starts_with("\xEF\xBB\xBF"))
        bytes_.erase(0, 3);
    else if (bytes_.starts_with("\xFF\xFE"))
        encoding_ = Encoding::Utf16Little;
    else if (bytes_.starts_with("\xFE\xFF"))
        encoding_ = Encoding::Utf16Big;
    if (encoding_ != Encoding::Utf8) bytes_.erase(0, 2);
}

void TextInput::decode_utf16(bool is_last) {
    const std::size_t high = encoding_ == Encoding::Utf16Big ? 0 : 1;
    std::u16string units;
    units.reserve(bytes_.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes_.size(); i += 2) {
        const auto upper = static_cast<unsigned char>(bytes_[i + high]);
        const auto lower = static_cast<unsigned char>(bytes_[i + 1 - high]);
        units.push_back(static_cast<char16_t>(upper << 8 | lower));
    }
    // The other half of a surrogate pair comes with the next block.
    if (!is_last && !units.empty() && (units.back() & 0xFC00) == 0xD800) units.pop_back();
    text_ = foundation::unicode::to_generalized_utf8(units);
    bytes_.erase(0, units.size() * 2);
    if (is_last && !bytes_.empty())
        throw CommandError(ExitCode::Failed, name_ + ": The UTF-16 text ends within a character.");
}

} // namespace zxsheet
