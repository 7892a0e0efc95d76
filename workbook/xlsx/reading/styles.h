// SPDX-License-Identifier: Apache-2.0
//
// The cell formats of a book (styles part, ECMA-376 part 1, 18.8.39), as far as reading cells needs
// them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "workbook/io/byte_source.h"

namespace workbook {

class Styles {
  public:
    struct CellFormat {
        std::uint32_t num_format = 0;
        bool locked = true;
    };

    /// Of a book without a styles part: no formats.
    Styles() = default;

    /// Throws `Error`.
    explicit Styles(ByteSource& part);

    std::size_t size() const { return formats_.size(); }
    const CellFormat& format(std::size_t index) const { return formats_[index]; }

    /// Whether cells with format `index` show a date or a time; false for an index out of range.
    bool is_date(std::size_t index) const {
        return index < is_date_.size() && is_date_[index] != 0;
    }

    /// Appends a format with number format 0 and returns its index.
    std::size_t add_format();
    void set_num_format(std::size_t index, std::uint32_t identifier);

  private:
    bool shows_date(std::uint32_t identifier) const;

    std::vector<CellFormat> formats_;
    std::vector<std::uint8_t> is_date_; ///< beside `formats_`: one byte a format for the cell reads
    std::unordered_map<std::uint32_t, bool>
        own_formats_; ///< identifier of the file's own: is it a date
};

} // namespace workbook
