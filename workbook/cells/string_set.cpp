// SPDX-License-Identifier: Apache-2.0
//
// Open addressing with linear probing. A slot holds some bits of its text's hash beside the index,
// so that strings are compared only when they are most likely equal.
#include "workbook/cells/string_set.h"

#include <cstring>

namespace workbook {

namespace {

constexpr std::size_t kFirstSlots = 64;

std::uint64_t load_word(const char* bytes, std::size_t count) {
    std::uint64_t word = 0;
    if (count > 0) std::memcpy(&word, bytes, count);
    return word;
}

/// Moves information from every bit to every other one.
std::uint64_t mixed(std::uint64_t bits) {
    bits ^= bits >> 32;
    bits *= 0xD6E8FEB86659FD93u;
    bits ^= bits >> 32;
    bits *= 0xD6E8FEB86659FD93u;
    return bits ^ bits >> 32;
}

std::uint64_t hash_of(std::string_view text) {
    std::uint64_t hash = text.size() * 0x9E3779B97F4A7C15u;
    while (text.size() > 8) {
        hash = mixed(hash ^ load_word(text.data(), 8));
        text.remove_prefix(8);
    }
    return mixed(hash ^ load_word(text.data(), text.size()));
}

std::uint32_t tag_of(std::uint64_t hash) {
    return static_cast<std::uint32_t>(hash >> 32);
}

} // namespace

std::uint32_t StringSet::add(std::string_view text) {
    // A quarter of the slots stays free.
    if (pool_.size() + 1 > slots_.size() / 4 * 3) grow();
    const std::uint64_t hash = hash_of(text);
    Slot& slot = slots_[slot_of(text, hash)];
    if (slot.number == 0)
        slot = {pool_.add(text.empty() ? std::string_view("") : text) + 1, tag_of(hash)};
    return slot.number - 1;
}

std::optional<std::uint32_t> StringSet::find(std::string_view text) const {
    if (slots_.empty()) return {};
    const Slot& slot = slots_[slot_of(text, hash_of(text))];
    if (slot.number == 0) return {};
    return slot.number - 1;
}

/// The slot that holds `text`, or the free one where it belongs.
std::size_t StringSet::slot_of(std::string_view text, std::uint64_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        const Slot& slot = slots_[i];
        if (slot.number == 0) return i;
        if (slot.tag == tag_of(hash) && pool_[slot.number - 1] == text) return i;
    }
}

void StringSet::grow() {
    const std::size_t count = slots_.empty() ? kFirstSlots : slots_.size() * 2;
    slots_.assign(count, {});
    const std::size_t mask = count - 1;
    for (std::uint32_t index = 0; index < pool_.size(); ++index) {
        const std::uint64_t hash = hash_of(pool_[index]);
        std::size_t i = hash & mask;
        while (slots_[i].number != 0)
            i = (i + 1) & mask;
        slots_[i] = {index + 1, tag_of(hash)};
    }
}

} // namespace workbook
