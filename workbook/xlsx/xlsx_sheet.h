// SPDX-License-Identifier: Apache-2.0
//
// A worksheet of an Open XML book. When only some rows were loaded, what stands behind the cells
// (merged regions, protection) is read from the package on the first call that asks for it.
#pragma once

#include "workbook/library.h"
#include "workbook/xlsx/book_contents.h"
#include "workbook/xlsx/worksheet_reader.h"

namespace workbook {

class XlsxSheet final : public Sheet {
  public:
    /// Reads the cells of `rows` of sheet `index`; `contents` must outlive this. Throws `Error`.
    XlsxSheet(BookContents& contents, int index, RowSpan rows);

    /// Checks that the book has every shared string that a cell refers to. Throws `Error`.
    void check_shared_strings() const;
    std::uint64_t shared_strings_end() const { return cells_.shared_strings_end; }
    /// False while the package is still needed.
    bool is_complete() const { return tail_read_; }

    std::u16string_view name() const override { return entry().name; }
    SheetState hidden() const override { return entry().state; }
    bool protect() const override { return tail().is_protected; }

    CellKind cell_type(int row, int column) const override;
    bool is_date(int row, int column) const override;
    double read_num(int row, int column) const override;
    bool read_bool(int row, int column) const override;
    std::u16string_view read_str(int row, int column) const override;
    const Format* cell_format(int row, int column) const override;

    int first_row() const override { return cells_.cells.bounds().first_row; }
    int end_row() const override { return cells_.cells.bounds().end_row; }
    int first_column() const override { return cells_.cells.bounds().first_column; }
    int end_column() const override { return cells_.cells.bounds().end_column; }
    int first_filled_row() const override { return cells_.cells.filled_bounds().first_row; }
    int end_filled_row() const override { return cells_.cells.filled_bounds().end_row; }
    int first_filled_column() const override { return cells_.cells.filled_bounds().first_column; }
    int end_filled_column() const override { return cells_.cells.filled_bounds().end_column; }

    int merge_size() const override { return static_cast<int>(tail().merged_regions.size()); }
    bool merge(int index, int& first_row, int& last_row, int& first_column,
               int& last_column) const override;
    bool named_range(std::u16string_view name, int& first_row, int& last_row, int& first_column,
                     int& last_column) const override;

  private:
    const SheetEntry& entry() const {
        return contents_.workbook.sheets[static_cast<std::size_t>(index_)];
    }
    const WorksheetTail& tail() const;
    std::string utf8_name() const;

    BookContents& contents_;
    int index_;
    WorksheetCells cells_;
    mutable WorksheetTail tail_;
    mutable bool tail_read_ = false;
};

} // namespace workbook
