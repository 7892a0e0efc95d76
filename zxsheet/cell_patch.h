// SPDX-License-Identifier: Apache-2.0
//
// A rectangle of cells on its way into a sheet. Where it has no value the sheet has no cell
// afterwards, rather than a blank one: sparse data stays sparse.
#pragma once

#include <cstddef>
#include <vector>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/cell_grid.h"

namespace zxsheet {

/// The type that a cell is written as: a text that is empty leaves no value, errors become text.
inline spreadsheet::cell_type written_type(const CellValue& cell) {
    using spreadsheet::cell_type;
    const bool has_value = cell.type == cell_type::number || cell.type == cell_type::date ||
                           cell.type == cell_type::boolean;
    return has_value ? cell.type : cell_type::text;
}

class CellPatch {
  public:
    explicit CellPatch(const spreadsheet::Range& range);

    /// Offsets within the range; the cell must live until `write`.
    void set(std::size_t row, std::size_t column, const CellValue& cell) {
        cells_[row * columns_ + column] = &cell;
    }

    /// Puts the cells into the sheet, whose cells lie within `used`. With `keep_format` cells that
    /// are there keep their formats, also where they lose their values.
    void write(spreadsheet::ISheet& sheet, const spreadsheet::Range& used, bool keep_format);

  private:
    void mark_formatted(const spreadsheet::ISheet& sheet, const spreadsheet::Range& overlap);
    bool are_alike(std::size_t row, std::size_t other) const;
    void write_rows(spreadsheet::ISheet& sheet, std::size_t first, std::size_t end,
                    bool keep_format);
    void write_block(spreadsheet::ISheet& sheet, const spreadsheet::Range& offsets,
                     bool keep_format);

    static void give_date_formats(spreadsheet::ISheet& sheet, const spreadsheet::Range& range,
                                  const std::vector<spreadsheet::cell_type>& types,
                                  const std::vector<const CellValue*>& cells);

    spreadsheet::Range range_;
    std::size_t rows_;
    std::size_t columns_;
    std::vector<const CellValue*> cells_; ///< row after row; null for none
};

} // namespace zxsheet
