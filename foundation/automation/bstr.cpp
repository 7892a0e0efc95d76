// SPDX-License-Identifier: Apache-2.0
//
// Text with its length before it: a count of bytes in 32 bits, the units, a null unit (MS-OAUT
// 2.2.23). The count is directly before the units, which malloc's alignment leaves room for.
#include <cstdlib>
#include <cstring>
#include <limits>

#include "foundation/automation/com_types.h"

namespace {

/// Keeps the units aligned as malloc aligns.
constexpr std::size_t kHeader = alignof(std::max_align_t);

} // namespace

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
    constexpr std::size_t kMostUnits = std::numeric_limits<std::int32_t>::max() / sizeof(OLECHAR);
    if (length >= kMostUnits) return nullptr;
    const std::size_t bytes = length * sizeof(OLECHAR);
    auto* const memory = static_cast<char*>(std::malloc(kHeader + bytes + sizeof(OLECHAR)));
    if (memory == nullptr) return nullptr;
    const auto count = static_cast<std::uint32_t>(bytes);
    std::memcpy(memory + kHeader - sizeof count, &count, sizeof count);
    auto* const units = reinterpret_cast<OLECHAR*>(memory + kHeader);
    if (text != nullptr)
        std::memcpy(units, text, bytes);
    else
        std::memset(units, 0, bytes);
    units[length] = 0;
    return units;
}

BSTR SysAllocString(const OLECHAR* text) {
    if (text == nullptr) return nullptr;
    std::size_t length = 0;
    while (text[length] != 0)
        ++length;
    if (length > std::numeric_limits<UINT>::max()) return nullptr;
    return SysAllocStringLen(text, static_cast<UINT>(length));
}

UINT SysStringByteLen(BSTR text) {
    if (text == nullptr) return 0;
    std::uint32_t count = 0;
    std::memcpy(&count, reinterpret_cast<const char*>(text) - sizeof count, sizeof count);
    return count;
}

UINT SysStringLen(BSTR text) {
    return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR));
}

void SysFreeString(BSTR text) {
    if (text != nullptr) std::free(reinterpret_cast<char*>(text) - kHeader);
}
