// SPDX-License-Identifier: Apache-2.0
//
// Strings one after another in generalised UTF-8 (foundation/unicode.h), addressed by index. A
// string costs its own bytes and 12 more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace workbook {

class StringPool {
  public:
    StringPool() = default;
    StringPool(const StringPool& other);
    StringPool(StringPool&&) = default;
    StringPool& operator=(StringPool&&) = default;

    /// Appends a string and returns its index.
    std::uint32_t add(std::string_view text);
    std::size_t size() const { return entries_.size(); }
    /// `index` must be below `size()`. The view lives as long as the pool.
    std::string_view operator[](std::size_t index) const {
        std::uint32_t length;
        std::memcpy(&length, entries_[index], sizeof length);
        return {entries_[index] + sizeof length, length};
    }

  private:
    char* make_room(std::size_t bytes);

    std::vector<std::unique_ptr<char[]>> chunks_;
    std::vector<const char*> entries_; ///< each a length and the string after it
    char* free_begin_ = nullptr;
    char* free_end_ = nullptr;
};

} // namespace workbook
