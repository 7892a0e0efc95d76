// SPDX-License-Identifier: Apache-2.0
#include "foundation/base64.h"

#include <cstddef>
#include <cstdint>

namespace foundation {

std::string to_base64url(std::string_view bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::string text;
    text.reserve((bytes.size() * 4 + 2) / 3);
    std::uint32_t bits = 0; // those at the low end that have no digit yet
    int count = 0;
    for (const char byte : bytes) {
        bits = bits << 8 | static_cast<unsigned char>(byte);
        for (count += 8; count >= 6; count -= 6)
            text += kDigits[bits >> (count - 6) & 63];
    }
    if (count > 0) text += kDigits[bits << (6 - count) & 63];
    return text;
}

} // namespace foundation
