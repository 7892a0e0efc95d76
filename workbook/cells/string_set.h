// SPDX-License-Identifier: Apache-2.0
//
// A pool in which each text stands once: the strings that were written to a book's cells.
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

  private:
    void grow();
    std::size_t slot_of(std::string_view text) const;

    StringPool pool_;
    std::vector<std::uint32_t> slots_; ///< open addressing; index + 1, 0 for a free slot
};

} // namespace workbook
