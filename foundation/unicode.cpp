// SPDX-License-Identifier: Apache-2.0
//
// Conversions between UTF-8 and UTF-16. Texts of workbooks are mostly ASCII, so runs of it are
// widened and narrowed 16 characters at a time; everything else goes through one decoder and one
// encoder of generalised UTF-8.
#include "foundation/unicode.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "foundation/code_points.h"

#if defined(__SSE2__) || defined(_M_X64)
#define ZX_HAVE_SSE2 1
#include <emmintrin.h>
#endif

namespace foundation::unicode {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

#ifdef ZX_HAVE_SSE2
/// Widens 16 bytes; false, with nothing written, when one of them is not ASCII.
bool widen_16(const char* from, char16_t* to) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    if (_mm_movemask_epi8(bytes) != 0) return false;
    const __m128i zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 8), _mm_unpackhi_epi8(bytes, zero));
    return true;
}

/// Widens 8 bytes; false, with nothing written, when one of them is not ASCII.
bool widen_8(const char* from, char16_t* to) {
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    if (_mm_movemask_epi8(bytes) != 0) return false;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    return true;
}

/// Widens 4 bytes; false, with nothing written, when one of them is not ASCII.
bool widen_4(const char* from, char16_t* to) {
    int four = 0;
    std::memcpy(&four, from, sizeof four);
    const __m128i bytes = _mm_cvtsi32_si128(four);
    if (_mm_movemask_epi8(bytes) != 0) return false;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    return true;
}
#endif

/// Widens the ASCII bytes that the text begins with and returns their number.
std::size_t widen_ascii(const char* from, std::size_t count, char16_t* to) {
    std::size_t done = 0;
#ifdef ZX_HAVE_SSE2
    while (count - done >= 16 && widen_16(from + done, to + done))
        done += 16;
    // The rest is covered by a block that overlaps what is done already.
    if (count >= 16 && count - done < 16 && widen_16(from + count - 16, to + count - 16))
        return count;
    if (count - done >= 8 && widen_8(from + done, to + done)) done += 8;
    if (count >= 8 && count - done < 8 && widen_8(from + count - 8, to + count - 8)) return count;
    if (count - done >= 4 && widen_4(from + done, to + done)) done += 4;
    if (count >= 4 && count - done < 4 && widen_4(from + count - 4, to + count - 4)) return count;
#endif
    while (done < count && static_cast<unsigned char>(from[done]) < 0x80) {
        to[done] = static_cast<char16_t>(from[done]);
        ++done;
    }
    return done;
}

struct Decoded {
    char32_t code_point;
    std::size_t length; ///< 0 when the bytes are not a well-formed sequence
};

/// The smallest code point that needs a sequence of this length; anything below is overlong.
constexpr std::array<char32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};

/// Decodes the sequence of two to four bytes at `from`; surrogates are accepted.
Decoded decode_sequence(const char* from, std::size_t available) {
    const auto byte = [from](std::size_t i) { return static_cast<unsigned char>(from[i]); };
    const unsigned lead = byte(0);
    const std::size_t length = lead < 0xC2   ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > available) return {0, 0};
    char32_t code_point = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0u) != 0x80u) return {0, 0};
        code_point = (code_point << 6) | (byte(i) & 0x3Fu);
    }
    if (code_point < kSmallest[length] || code_point > 0x10FFFF) return {0, 0};
    return {code_point, length};
}

char16_t* put_utf16(char16_t* to, char32_t code_point) {
    if (code_point < 0x10000) {
        *to++ = static_cast<char16_t>(code_point);
        return to;
    }
    *to++ = static_cast<char16_t>(0xD800 + ((code_point - 0x10000) >> 10));
    *to++ = static_cast<char16_t>(0xDC00 + ((code_point - 0x10000) & 0x3FF));
    return to;
}

/// Converts the whole text and returns the number of units, never more than there are bytes.
std::size_t convert(std::string_view text, char16_t* to) {
    const char* from = text.data();
    const char* const end = from + text.size();
    char16_t* out = to;
    while (from != end) {
        const std::size_t ascii = widen_ascii(from, static_cast<std::size_t>(end - from), out);
        from += ascii;
        out += ascii;
        while (from != end && static_cast<unsigned char>(*from) >= 0x80) {
            const Decoded decoded = decode_sequence(from, static_cast<std::size_t>(end - from));
            out = put_utf16(out, decoded.length == 0 ? kReplacement : decoded.code_point);
            from += decoded.length == 0 ? 1 : decoded.length;
        }
    }
    return static_cast<std::size_t>(out - to);
}

/// Room for the UTF-8 form of one code point.
constexpr std::size_t kMaxSequence = 4;

char* put_utf8(char* to, char32_t code_point) {
    const auto tail = [code_point](unsigned shift) {
        return static_cast<char>(0x80u | ((code_point >> shift) & 0x3Fu));
    };
    if (code_point < 0x80) {
        *to++ = static_cast<char>(code_point);
    } else if (code_point < 0x800) {
        *to++ = static_cast<char>(0xC0u | (code_point >> 6));
        *to++ = tail(0);
    } else if (code_point < 0x10000) {
        *to++ = static_cast<char>(0xE0u | (code_point >> 12));
        *to++ = tail(6);
        *to++ = tail(0);
    } else {
        *to++ = static_cast<char>(0xF0u | (code_point >> 18));
        *to++ = tail(12);
        *to++ = tail(6);
        *to++ = tail(0);
    }
    return to;
}

#ifdef ZX_HAVE_SSE2
/// Narrows 8 units; false, with nothing written, when one of them is not ASCII.
bool narrow_8(const char16_t* from, char* to) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const __m128i others = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xFF80)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(others, _mm_setzero_si128())) != 0xFFFF) return false;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(units, units));
    return true;
}
#endif

/// Narrows the ASCII units that the text begins with and returns their number.
std::size_t narrow_ascii(const char16_t* from, std::size_t count, char* to) {
    std::size_t done = 0;
#ifdef ZX_HAVE_SSE2
    while (count - done >= 8 && narrow_8(from + done, to + done))
        done += 8;
    // The rest is covered by a block that overlaps what is done already.
    if (count >= 8 && count - done < 8 && narrow_8(from + count - 8, to + count - 8)) return count;
#endif
    while (done < count && from[done] < 0x80) {
        to[done] = static_cast<char>(from[done]);
        ++done;
    }
    return done;
}

/// Appends `change(code_point)` of every code point. The bytes go over the stack: growing a string
/// in place would fill it with zeros first.
template <class Change>
void append_utf8(std::string& out, std::u16string_view text, Change change) {
    constexpr std::size_t kPieceUnits = 256;
    // A unit needs three bytes at most; the last one may be the first of two, which need four.
    char bytes[(kPieceUnits - 1) * 3 + kMaxSequence];
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t piece_end = std::min(text.size(), position + kPieceUnits);
        char* to = bytes;
        while (position < piece_end) {
            const std::size_t ascii =
                narrow_ascii(text.data() + position, piece_end - position, to);
            position += ascii;
            to += ascii;
            while (position < piece_end && text[position] >= 0x80)
                to = put_utf8(to, change(next_code_point(text, position)));
        }
        out.append(bytes, to);
    }
}

} // namespace

void assign_utf16(std::u16string& out, std::string_view text) {
    // Short texts go over the stack: growing a string in place would fill it with zeros first.
    constexpr std::size_t kShort = 256;
    if (text.size() <= kShort) {
        char16_t units[kShort];
        out.assign(units, convert(text, units));
        return;
    }
    out.resize(text.size());
    out.resize(convert(text, out.data()));
}

std::u16string to_utf16(std::string_view text) {
    std::u16string out;
    assign_utf16(out, text);
    return out;
}

void append_code_point(std::string& out, char32_t code_point) {
    char bytes[kMaxSequence];
    out.append(bytes, put_utf8(bytes, code_point));
}

std::string to_generalized_utf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    append_utf8(out, text, [](char32_t code_point) { return code_point; });
    return out;
}

void assign_utf8(std::string& out, std::u16string_view text) {
    out.clear();
    append_utf8(out, text, [](char32_t code_point) {
        const bool lone = is_high_surrogate(code_point) || is_low_surrogate(code_point);
        return lone ? char32_t{kReplacement} : code_point;
    });
}

std::string to_utf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    assign_utf8(out, text);
    return out;
}

} // namespace foundation::unicode
