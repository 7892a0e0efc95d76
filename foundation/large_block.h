// SPDX-License-Identifier: Apache-2.0
//
// A hint to the system about large blocks of memory.
#pragma once

#include <cstddef>

namespace foundation {

/// Says that a block just allocated, not yet touched, is about to be filled from front to back. The
/// system may then map it in large pages, which takes a fraction of the time. Changes nothing else;
/// blocks below a few megabytes are left alone.
void expect_to_fill(void* block, std::size_t bytes);

} // namespace foundation
