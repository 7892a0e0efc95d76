// SPDX-License-Identifier: Apache-2.0
//
// A part's bytes, read once from front to end.
#pragma once

#include <cstddef>
#include <string>

namespace workbook {

class ByteSource {
  public:
    virtual ~ByteSource() = default;

    /// Fills `buffer` with up to `capacity` bytes and returns how many; 0 only at the end of the
    /// part, and the end is checked (length and CRC-32 as the container has them). Throws `Error`.
    virtual std::size_t read(char* buffer, std::size_t capacity) = 0;

    /// Name of the part, for messages.
    virtual const std::string& part_name() const = 0;
};

} // namespace workbook
