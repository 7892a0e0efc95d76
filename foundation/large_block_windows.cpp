// SPDX-License-Identifier: Apache-2.0
//
// Large pages need a privilege here that users do not have.
#include "foundation/large_block.h"

namespace foundation {

void expect_to_fill(void*, std::size_t) {}

} // namespace foundation
