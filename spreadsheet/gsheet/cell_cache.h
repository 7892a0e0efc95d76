// SPDX-License-Identifier: Apache-2.0
//
// The cells of one fetched range. Rows are kept one behind the other, each as long as the service
// sent it, so that nothing is allocated for a claimed extent; a cell is found in constant time by
// its row's beginning.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/range.h"

namespace gsheet {

/// One cell in 16 bytes. Which value it has follows from its type: a number for numbers and dates
/// (serial, as the service has it), a text for texts, a boolean for booleans.
class CachedCell {
  public:
    CachedCell() = default;
    CachedCell(spreadsheet::cell_type type, double number)
        : payload_(std::bit_cast<std::uint64_t>(number)), type_(type) {}
    explicit CachedCell(bool value)
        : payload_(value ? 1 : 0), type_(spreadsheet::cell_type::boolean) {}
    /// A cell without a value, such as an error.
    explicit CachedCell(spreadsheet::cell_type type) : type_(type) {}

    spreadsheet::cell_type type() const { return type_; }
    double number() const { return std::bit_cast<double>(payload_); }
    bool boolean() const { return payload_ != 0; }

  private:
    friend class CellCache;
    std::uint64_t payload_ = 0; ///< of a text: where it begins among all texts
    std::uint32_t text_bytes_ = 0;
    spreadsheet::cell_type type_ = spreadsheet::cell_type::empty;
};

class CellCache {
  public:
    /// Holds nothing.
    CellCache() = default;
    /// For the cells of `range`, to be filled row by row.
    explicit CellCache(const spreadsheet::Range& range) : range_(range), is_filled_(true) {}

    bool holds(const spreadsheet::Range& range) const;
    /// An empty cell where the service sent none.
    CachedCell at(int row, int column) const;
    /// UTF-8, of a text cell of this cache; lives as long as the cache.
    std::string_view text(const CachedCell& cell) const;

    void begin_row();
    /// The next cells of the row; what lies outside the range is dropped. False when there are more
    /// cells than a spreadsheet can have.
    bool add(const CachedCell& cell);
    bool add_text(std::string_view text);

  private:
    std::size_t row_count() const;
    bool takes_next() const;

    spreadsheet::Range range_;
    bool is_filled_ = false;
    std::vector<std::uint32_t> row_begins_;
    std::vector<CachedCell> cells_;
    std::string texts_;
};

} // namespace gsheet
