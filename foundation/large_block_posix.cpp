// SPDX-License-Identifier: Apache-2.0
#include <cstdint>

#include <sys/mman.h>

#include "foundation/large_block.h"

namespace foundation {

void expect_to_fill(void* block, std::size_t bytes) {
#ifdef MADV_HUGEPAGE
    constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20;
    if (bytes < 2 * kLargePage) return;
    const auto begin = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (begin + kLargePage - 1) / kLargePage * kLargePage;
    const std::uintptr_t end = (begin + bytes) / kLargePage * kLargePage;
    // Only whole large pages of the block, so that no other memory is concerned. A refusal is fine.
    if (first < end) ::madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#else
    static_cast<void>(block), static_cast<void>(bytes);
#endif
}

} // namespace foundation
