// SPDX-License-Identifier: Apache-2.0
//
// Decimal numbers as worksheets write them, fast: most have at most 19 digits and a value that one
// division makes exact (Clinger's fast path); the standard library does the rest.
#pragma once

#include <charconv>
#include <cstdint>

namespace workbook {

/// Parses the number at `p` up to the '<' that follows it and returns the place of that '<'; null
/// when what is there is not exactly a finite decimal number and a '<' before `end`.
inline const char* parse_plain_number(const char* p, const char* end, double& out) {
    static constexpr double kPowerOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                             1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                             1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53;
    const auto is_digit = [](char c) { return static_cast<unsigned char>(c - '0') < 10; };
    const auto digit = [](char c) { return static_cast<std::uint64_t>(c - '0'); };

    const char* const begin = p;
    const bool negative = *p == '-';
    p += negative;
    const char* const digits = p;
    std::uint64_t mantissa = 0;
    while (is_digit(*p))
        mantissa = mantissa * 10 + digit(*p++);
    if (p == digits) return nullptr;
    auto count = p - digits;
    std::ptrdiff_t decimals = 0;
    if (*p == '.') {
        const char* const fraction = ++p;
        while (is_digit(*p))
            mantissa = mantissa * 10 + digit(*p++);
        decimals = p - fraction;
        count += decimals;
    }
    if (*p == '<' && count <= 19 && mantissa < kExactIntegers) {
        const double value = static_cast<double>(mantissa) / kPowerOfTen[decimals];
        out = negative ? -value : value;
        return p;
    }
    const auto [stop, error] = std::from_chars(begin, end, out);
    return error == std::errc() && *stop == '<' ? stop : nullptr;
}

} // namespace workbook
