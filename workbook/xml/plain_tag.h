// SPDX-License-Identifier: Apache-2.0
//
// Recognises tags in the one form that a producer writes throughout a part: the same namespace
// prefix, or none, everywhere. For readers that take plain XML off a text window; reads at most
// 8 bytes and the length of the literal after `p`.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace workbook {

class PlainTag {
  public:
    static constexpr std::size_t kLongestPrefix = sizeof(std::uint64_t);

    /// `prefix` is empty or ends with a colon. A longer one than `kLongestPrefix` is never
    /// recognised.
    explicit PlainTag(std::string_view prefix) : prefix_(prefix) {
        if (prefix.size() > kLongestPrefix) {
            mask_ = ~std::uint64_t{0}; // only eight zero bytes would pass, and no tag holds those
            return;
        }
        size_ = prefix.size();
        std::memcpy(&bits_, prefix.data(), size_);
        std::memset(&mask_, 0xFF, size_);
    }

    /// The place after '<', the prefix and `rest`; null when something else is at `p`.
    template <std::size_t Size>
    const char* open(const char* p, const char (&rest)[Size]) const {
        return *p == '<' ? behind_prefix(p + 1, rest) : nullptr;
    }

    /// The same with "</" in front.
    template <std::size_t Size>
    const char* close(const char* p, const char (&rest)[Size]) const {
        return p[0] == '<' && p[1] == '/' ? behind_prefix(p + 2, rest) : nullptr;
    }

    /// What an element's end tag begins with in this part: all but white space and the '>'.
    std::string end_tag(std::string_view name) const { return "</" + prefix_ + std::string(name); }

  private:
    template <std::size_t Size>
    const char* behind_prefix(const char* p, const char (&rest)[Size]) const {
        std::uint64_t text;
        std::memcpy(&text, p, sizeof text);
        if ((text & mask_) != bits_) return nullptr;
        p += size_;
        return std::memcmp(p, rest, Size - 1) == 0 ? p + (Size - 1) : nullptr;
    }

    std::string prefix_;
    std::size_t size_ = 0;
    std::uint64_t bits_ = 0;
    std::uint64_t mask_ = 0;
};

} // namespace workbook
