// SPDX-License-Identifier: Apache-2.0
//
// Search for one byte over short distances, where a call of memchr costs more than the search. May
// read up to `kReadAhead` bytes after the end, which the caller has to provide.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace workbook {

inline constexpr std::size_t kReadAhead = 64;

/// The first `wanted` in [p, end), or `end`.
inline const char* find_byte(const char* p, const char* end, char wanted) {
#if defined(__SSE2__)
    const __m128i pattern = _mm_set1_epi8(wanted);
    for (; p < end; p += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const unsigned hits =
            static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, pattern)));
        if (hits != 0) {
            const char* at = p + std::countr_zero(hits);
            return at < end ? at : end;
        }
    }
    return end;
#else
    const void* at = p < end ? std::memchr(p, wanted, static_cast<std::size_t>(end - p)) : nullptr;
    return at != nullptr ? static_cast<const char*>(at) : end;
#endif
}

/// The first '<', '&', '_' or carriage return in [p, end), or `end`: where plain text ends, or
/// where it may be other than it looks.
inline const char* find_text_stop(const char* p, const char* end) {
#if defined(__SSE2__)
    const __m128i less = _mm_set1_epi8('<'), ampersand = _mm_set1_epi8('&');
    const __m128i underscore = _mm_set1_epi8('_'), carriage_return = _mm_set1_epi8('\r');
    for (; p < end; p += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i stops = _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi8(block, less), _mm_cmpeq_epi8(block, ampersand)),
            _mm_or_si128(_mm_cmpeq_epi8(block, underscore),
                         _mm_cmpeq_epi8(block, carriage_return)));
        const unsigned hits = static_cast<unsigned>(_mm_movemask_epi8(stops));
        if (hits != 0) {
            const char* at = p + std::countr_zero(hits);
            return at < end ? at : end;
        }
    }
    return end;
#else
    while (p < end && *p != '<' && *p != '&' && *p != '_' && *p != '\r')
        ++p;
    return p;
#endif
}

/// The '<' that ends the text at `p`; null when there is none before `end`. `is_plain` says
/// whether the text has no references, no carriage returns and no "_x" escapes.
inline const char* find_text_end(const char* p, const char* end, bool& is_plain) {
    is_plain = true;
    for (;; ++p) {
        p = find_text_stop(p, end);
        if (p == end) return nullptr;
        if (*p == '<') return p;
        is_plain &= *p == '_' && p[1] != 'x';
    }
}

} // namespace workbook
