// SPDX-License-Identifier: Apache-2.0
//
// A hint to the system about large blocks of memory.
#pragma once

#include <cstddef>
#include <string>

namespace foundation {

/// Says that a block just allocated, not yet touched, is about to be filled from front to back. The
/// system may then map it in large pages, which takes a fraction of the time. Changes nothing else;
/// blocks below a few megabytes are left alone.
void expect_to_fill(void* block, std::size_t bytes);

/// Makes room for `bytes` in `text`, whose bytes that are there stay, and says the same of the
/// rest.
inline void reserve_to_fill(std::string& text, std::size_t bytes) {
    if (bytes <= text.capacity()) return;
    text.reserve(bytes);
    expect_to_fill(text.data(), text.capacity());
}

} // namespace foundation
