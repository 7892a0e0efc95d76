// SPDX-License-Identifier: Apache-2.0
//
// The cell formats of a book, as far as reading and writing cells needs them. Cells refer to them
// by index.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "workbook/library.h"

namespace workbook {

/// One cell format (ECMA-376 part 1, 18.8.45 xf; MS-XLS 2.4.353 XF).
struct CellFormat {
    std::uint32_t num_format = 0; ///< identifier of the number format
    bool locked = true;           ///< while the sheet is protected
};

class CellFormats {
  public:
    /// A number format of the file's own. It counts before the built-in of the same identifier, and
    /// for formats that are added afterwards.
    void define_number_format(std::uint32_t identifier, std::string_view code);

    /// Appends a format and returns its index.
    std::size_t add(CellFormat format = {});
    void set_num_format(std::size_t index, std::uint32_t identifier);

    std::size_t size() const { return formats_.size(); }
    /// `index` must be below `size()`.
    const CellFormat& operator[](std::size_t index) const { return formats_[index]; }

    /// Whether cells with format `index` show a date or a time; false for an index out of range.
    bool is_date(std::size_t index) const { return style(index) != NumberStyle::Number; }
    /// How cells with format `index` show a number; `Number` for an index out of range.
    NumberStyle style(std::size_t index) const {
        return index < styles_.size() ? static_cast<NumberStyle>(styles_[index])
                                      : NumberStyle::Number;
    }

  private:
    std::uint8_t style_of(std::uint32_t identifier) const;

    std::vector<CellFormat> formats_;
    std::vector<std::uint8_t> styles_; ///< beside `formats_`: one byte a format for the cell reads
    std::unordered_map<std::uint32_t, NumberStyle> own_formats_; ///< by identifier
};

/// The handle of one of a book's formats.
class StoredFormat final : public Format {
  public:
    /// `formats` must outlive this.
    StoredFormat(CellFormats& formats, std::size_t index) : formats_(formats), index_(index) {}

    int num_format() const override { return static_cast<int>(formats_[index_].num_format); }
    void set_num_format(int identifier) override {
        formats_.set_num_format(index_, static_cast<std::uint32_t>(identifier));
    }
    bool locked() const override { return formats_[index_].locked; }
    std::size_t index() const { return index_; }

  private:
    CellFormats& formats_;
    std::size_t index_;
};

} // namespace workbook
