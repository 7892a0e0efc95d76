// SPDX-License-Identifier: Apache-2.0
//
// To be called after every call into ISA-L. Its AVX-512 code leaves the upper halves of the vector
// registers in use, and then every plain SSE instruction that follows, which is most of a reader's
// work, runs at a fraction of its speed.
#pragma once

namespace workbook {

#if defined(__x86_64__) && defined(__GNUC__)
__attribute__((target("avx"))) inline void clear_upper_vector_halves() {
    __builtin_ia32_vzeroupper();
}
inline void end_vector_work() {
    if (__builtin_cpu_supports("avx")) clear_upper_vector_halves();
}
#else
inline void end_vector_work() {}
#endif

} // namespace workbook
