// SPDX-License-Identifier: Apache-2.0
//
// Gathers short pieces of XML into blocks for a sink. What is gathered last reaches the sink
// with `flush` only.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

#include "workbook/io/byte_sink.h"

namespace workbook {

class MarkupWriter {
  public:
    /// `room` gives at most this much.
    static constexpr std::size_t kMaxRoom = 4096;

    /// `out` must outlive this.
    explicit MarkupWriter(ByteSink& out)
        : out_(out), block_(new char[kBlock]), end_(block_.get()), limit_(end_ + kBlock) {}

    void append(std::string_view text) {
        if (text.empty()) return; // perhaps a null view
        if (static_cast<std::size_t>(limit_ - end_) < text.size()) {
            flush();
            if (text.size() > kBlock / 2) {
                out_.append(text);
                return;
            }
        }
        std::memcpy(end_, text.data(), text.size());
        end_ += text.size();
    }

    /// Where at least `bytes` can be written; `set_end` says where they end.
    char* room(std::size_t bytes) {
        if (static_cast<std::size_t>(limit_ - end_) < bytes) flush();
        return end_;
    }
    void set_end(char* end) { end_ = end; }

    void flush() {
        const char* const begin = block_.get();
        if (end_ != begin) out_.append(begin, static_cast<std::size_t>(end_ - begin));
        end_ = block_.get();
    }

  private:
    static constexpr std::size_t kBlock = 32u << 10;

    ByteSink& out_;
    std::unique_ptr<char[]> block_;
    char* end_;
    char* limit_;
};

} // namespace workbook
