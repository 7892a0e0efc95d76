// SPDX-License-Identifier: Apache-2.0
//
// A pool that has each string once: the strings that were written to a book's cells.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "workbook/cells/string_pool.h"

namespace workbook {

class StringSet {
  public:
    /// The index of `text`, which is appended when it is new.
    std::uint32_t add(std::string_view text);
    std::optional<std::uint32_t> find(std::string_view text) const;
    std::size_t size() const { return pool_.size(); }
    std::string_view operator[](std::size_t index) const { return pool_[index]; }
    const StringPool& pool() const { return pool_; }

  private:
    struct Slot {
        std::uint32_t number = 0; ///< index + 1, 0 for a free slot
        std::uint32_t tag = 0;    ///< the upper half of the text's hash
    };

    void grow();
    std::size_t slot_of(std::string_view text, std::uint64_t hash) const;

    StringPool pool_;
    std::vector<Slot> slots_; ///< a power of two
};

} // namespace workbook
