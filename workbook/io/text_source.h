// SPDX-License-Identifier: Apache-2.0
//
// A part whose text is in memory.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "workbook/io/byte_source.h"

namespace workbook {

class TextSource final : public ByteSource {
  public:
    /// `text` must outlive this.
    TextSource(std::string part_name, std::string_view text)
        : part_name_(std::move(part_name)), left_(text) {}

    std::size_t read(char* buffer, std::size_t capacity) override {
        const std::size_t count = std::min(capacity, left_.size());
        std::memcpy(buffer, left_.data(), count);
        left_.remove_prefix(count);
        return count;
    }
    const std::string& part_name() const override { return part_name_; }

  private:
    std::string part_name_;
    std::string_view left_;
};

} // namespace workbook
