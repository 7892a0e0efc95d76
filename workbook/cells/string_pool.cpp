// SPDX-License-Identifier: Apache-2.0
//
// Strings are in chunks that never move, each after its length.
#include "workbook/cells/string_pool.h"

#include <algorithm>

namespace workbook {

namespace {

// Small sheets get by with small chunks; large pools grow by these.
constexpr std::size_t kFirstChunk = 4u << 10;
constexpr std::size_t kLargestChunk = 1u << 20;

} // namespace

StringPool::StringPool(const StringPool& other) {
    entries_.reserve(other.size());
    for (std::size_t i = 0; i < other.size(); ++i)
        add(other[i]);
}

char* StringPool::make_room(std::size_t bytes) {
    const std::size_t doubled = kFirstChunk << std::min<std::size_t>(chunks_.size(), 8);
    const std::size_t chunk = std::max(std::min(doubled, kLargestChunk), bytes);
    chunks_.emplace_back(new char[chunk]);
    free_begin_ = chunks_.back().get();
    free_end_ = free_begin_ + chunk;
    return free_begin_;
}

std::uint32_t StringPool::add(std::string_view text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    const std::size_t bytes = sizeof length + text.size();
    char* place =
        static_cast<std::size_t>(free_end_ - free_begin_) >= bytes ? free_begin_ : make_room(bytes);
    std::memcpy(place, &length, sizeof length);
    std::memcpy(place + sizeof length, text.data(), text.size());
    free_begin_ = place + bytes;
    entries_.push_back(place);
    return static_cast<std::uint32_t>(entries_.size() - 1);
}

} // namespace workbook
