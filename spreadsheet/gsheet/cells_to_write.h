// SPDX-License-Identifier: Apache-2.0
//
// The cells of a write, taken from the host's provider, and their JSON in the two shapes that the
// service wants. The text is built directly: a tree of a million cells would take ten times their
// memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/range.h"
#include "spreadsheet/typed_cells.h"

namespace spreadsheet {

class CellsToWrite {
  public:
    /// Asks the provider once for each cell, column after column.
    CellsToWrite(const Range& range, const cell_type* types, const CellProvider& provider);

    /// For "updateCells": `[{"values":[{...},...]},...]`, one element for each row. A cell without
    /// a value is an empty object; `trimmed` leaves those out that end a row, and rows that end the
    /// block, which the service clears all the same.
    std::string rows_text(bool trimmed = false) const;
    /// For "values": `[[...],...]`, one array for each column. A cell without a value is "".
    std::string columns_text() const;
    /// The dates, each run of neighbours in a column as one range.
    std::vector<Range> date_runs() const;
    /// The smallest range with all cells that have a value.
    std::optional<Range> filled() const;

  private:
    struct Cell {
        cell_type type = cell_type::empty; ///< empty for every cell without a value
        double number = 0.0;               ///< also of a date and a boolean
        std::uint32_t text = 0;            ///< index in `texts_`
    };

    // Each appends the next cell.
    void append(double number);
    void append(SerialDatenum date);
    void append(bool value);
    void append(const std::u16string& text);
    void append(NoValue);
    void add(cell_type type, double number);

    const Cell& at(std::size_t row, std::size_t column) const {
        return cells_[column * rows_ + row];
    }
    bool has_value(const Cell& cell) const;
    /// Columns up to the row's last cell with a value.
    std::size_t filled_columns(std::size_t row) const;
    void append_object(std::string& json, const Cell& cell) const;
    void append_value(std::string& json, const Cell& cell) const;

    Range range_;
    std::size_t rows_;
    std::size_t columns_;
    std::vector<Cell> cells_;
    std::vector<std::string> texts_;
};

} // namespace spreadsheet
