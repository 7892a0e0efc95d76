// SPDX-License-Identifier: Apache-2.0
//
// Finding the bytes that need something else than copying: one look into a table for each.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zxsheet {

class ByteSet {
  public:
    constexpr explicit ByteSet(std::string_view bytes) {
        for (const char byte : bytes)
            add(static_cast<unsigned char>(byte), static_cast<unsigned char>(byte));
    }
    /// Adds `first` to `last`, inclusive.
    constexpr ByteSet& add(unsigned char first, unsigned char last) {
        for (std::size_t byte = first; byte <= last; ++byte)
            has_[byte] = true;
        return *this;
    }

    constexpr bool has(char byte) const { return has_[static_cast<unsigned char>(byte)]; }
    /// The position of the first byte of the text that is in the set; the text's size without one.
    constexpr std::size_t find_in(std::string_view text) const {
        std::size_t i = 0;
        while (i < text.size() && !has(text[i]))
            ++i;
        return i;
    }

  private:
    std::array<bool, 256> has_{};
};

} // namespace zxsheet
