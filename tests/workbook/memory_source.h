// SPDX-License-Identifier: Apache-2.0
//
// A part that lies in memory and is handed out in pieces of a chosen size, so that every boundary
// between two blocks is met.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>

#include "workbook/package/byte_source.h"

namespace workbook::test {

class MemorySource : public ByteSource {
  public:
    explicit MemorySource(std::string text, std::size_t piece = 1u << 20)
        : text_(std::move(text)), piece_(piece) {}

    std::size_t read(char* buffer, std::size_t capacity) override {
        const std::size_t count = std::min({piece_, capacity, text_.size() - position_});
        std::memcpy(buffer, text_.data() + position_, count);
        position_ += count;
        return count;
    }
    const std::string& part_name() const override { return name_; }

    /// Bytes handed out so far.
    std::size_t position() const { return position_; }

  private:
    std::string text_, name_ = "xl/worksheets/sheet1.xml";
    std::size_t piece_, position_ = 0;
};

} // namespace workbook::test
