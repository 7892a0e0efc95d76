// SPDX-License-Identifier: Apache-2.0
//
// A part that lies in memory, handed out in steps of a chosen size.
#pragma once

#include <algorithm>
#include <string>

#include "workbook/io/byte_source.h"

namespace workbook::test {

class MemorySource final : public ByteSource {
  public:
    explicit MemorySource(std::string text, std::size_t step = std::string::npos,
                          std::string name = "xl/worksheets/sheet1.xml")
        : text_(std::move(text)), step_(step), name_(std::move(name)) {}

    std::size_t read(char* buffer, std::size_t capacity) override {
        const std::size_t count = std::min({capacity, step_, text_.size() - used_});
        text_.copy(buffer, count, used_);
        used_ += count;
        return count;
    }
    const std::string& part_name() const override { return name_; }

    /// Bytes handed out so far.
    std::size_t position() const { return used_; }

  private:
    std::string text_;
    std::size_t step_;
    std::string name_;
    std::size_t used_ = 0;
};

/// Everything that a source holds, asked for in pieces of `capacity` bytes.
inline std::string read_all(ByteSource& source, std::size_t capacity = 64u << 10) {
    std::string text, piece(capacity, '\0');
    while (const std::size_t count = source.read(piece.data(), piece.size()))
        text.append(piece, 0, count);
    return text;
}

} // namespace workbook::test
