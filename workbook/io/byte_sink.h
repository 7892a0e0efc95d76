// SPDX-License-Identifier: Apache-2.0
//
// Where the bytes of a part go, front to back.
#pragma once

#include <cstddef>
#include <string_view>

namespace workbook {

class ByteSink {
  public:
    virtual ~ByteSink() = default;

    /// Throws `Error` when the bytes cannot be taken.
    virtual void append(const char* bytes, std::size_t count) = 0;
    void append(std::string_view text) { append(text.data(), text.size()); }
};

} // namespace workbook
