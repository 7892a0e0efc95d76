// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 and UTF-16, and comparison without regard to case.
//
// Texts of workbooks may hold lone surrogates. Inside the library they are kept in generalised
// UTF-8 (a surrogate is three bytes, ED A0..BF xx), so that UTF-16 in gives the same UTF-16 out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "foundation/export.h"

namespace foundation::unicode {

/// Replaces `out` by the UTF-16 form of generalised UTF-8 `text`. Each byte that is not part of a
/// well-formed sequence becomes U+FFFD. Reuses the capacity of `out`.
ZX_API void assign_utf16(std::u16string& out, std::string_view text);

/// The UTF-16 form of generalised UTF-8 `text`; see `assign_utf16`.
ZX_API std::u16string to_utf16(std::string_view text);

/// The generalised UTF-8 form of `text`: lone surrogates are kept. For texts that come back to
/// UTF-16.
ZX_API std::string to_generalized_utf8(std::u16string_view text);

/// The UTF-8 form of `text` for the outside world: each lone surrogate becomes U+FFFD.
ZX_API std::string to_utf8(std::u16string_view text);

/// As `to_utf8`; replaces `out` and reuses its capacity.
ZX_API void assign_utf8(std::string& out, std::u16string_view text);

/// Appends the generalised UTF-8 form of one code point (0 to 0x10FFFF, surrogates included).
ZX_API void append_code_point(std::string& out, char32_t code_point);

/// True when the texts are equal after Unicode simple case folding of every code point. Independent
/// of the locale; no normalisation.
ZX_API bool equal_ignoring_case(std::u16string_view a, std::u16string_view b);

} // namespace foundation::unicode
