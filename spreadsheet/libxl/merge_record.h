// SPDX-License-Identifier: Apache-2.0
//
// What a read with merged-cell rules finds out besides the values: which cells are merged, which
// rows and columns are left out. Fed with every cell, column after column.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "spreadsheet/libxl/merged_cells.h"

namespace spreadsheet {

class MergeRecord {
  public:
    /// With `omit_empty_columns` a column without any value counts as left out.
    MergeRecord(std::size_t rows, std::size_t columns, bool omit_empty_columns)
        : rows_(rows), omit_empty_columns_(omit_empty_columns), row_omitted_(rows) {
        merged_cells_.reserve(rows * columns);
    }

    /// Whether the next `add` depends on its `has_value`.
    bool needs_value() const { return omit_empty_columns_ && !column_has_value_; }

    void add(bool merged, Omission omission, bool has_value) {
        merged_cells_.push_back(merged);
        column_omitted_ = column_omitted_ || omission == Omission::column;
        column_has_value_ = column_has_value_ || has_value;
        if (omission == Omission::row) row_omitted_[row_] = true;
        if (++row_ == rows_) end_column();
    }

    /// One flag per cell.
    std::vector<bool> take_merged_cells() { return std::move(merged_cells_); }
    /// Offsets within what was read, ascending.
    std::vector<int> take_omitted_columns() { return std::move(omitted_columns_); }
    std::vector<int> omitted_rows() const {
        std::vector<int> rows;
        for (std::size_t row = 0; row < row_omitted_.size(); ++row)
            if (row_omitted_[row]) rows.push_back(static_cast<int>(row));
        return rows;
    }

  private:
    void end_column() {
        if (column_omitted_ || needs_value()) omitted_columns_.push_back(column_);
        ++column_;
        row_ = 0;
        column_omitted_ = column_has_value_ = false;
    }

    std::size_t rows_;
    bool omit_empty_columns_;
    std::vector<bool> row_omitted_;
    std::vector<bool> merged_cells_;
    std::vector<int> omitted_columns_;
    std::size_t row_ = 0;
    int column_ = 0;
    bool column_omitted_ = false;
    bool column_has_value_ = false;
};

} // namespace spreadsheet
