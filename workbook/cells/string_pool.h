// SPDX-License-Identifier: Apache-2.0
//
// Texts one after another in generalised UTF-8 (foundation/unicode.h), addressed by index.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace workbook {

class StringPool {
  public:
    /// Appends a text and returns its index.
    std::uint32_t add(std::string_view text);
    std::size_t size() const { return entries_.size(); }
    /// `index` must be below `size()`. The view lives as long as the pool.
    std::string_view operator[](std::size_t index) const {
        const Entry& entry = entries_[index];
        return {entry.text, entry.length};
    }

  private:
    struct Entry {
        const char* text;
        std::uint32_t length;
    };
    std::vector<std::unique_ptr<char[]>> chunks_;
    char* free_begin_ = nullptr;
    char* free_end_ = nullptr;
    std::vector<Entry> entries_;
};

} // namespace workbook
