// SPDX-License-Identifier: Apache-2.0
//
// A worksheet of an Open XML book. When only some rows were loaded, what stands behind the cells
// (merged regions, protection) is read from the package on the first call that asks for it.
#pragma once

#include "workbook/library.h"
#include "workbook/xlsx/book_contents.h"
#include "workbook/xlsx/reading/worksheet_reader.h"
#include "workbook/xlsx/structure/table_columns.h"
#include "workbook/xlsx/writing/worksheet_rewriter.h"

namespace workbook {

class XlsxSheet final : public Sheet {
  public:
    /// Reads the cells of `rows` of a sheet; both given must outlive this. Throws `Error`.
    XlsxSheet(BookContents& contents, SheetEntry& entry, RowSpan rows);

    /// An empty sheet that no part stands for yet.
    XlsxSheet(BookContents& contents, SheetEntry& entry);
    /// A copy with all changes of `original`, of the same book. Its part is made from the
    /// original's.
    XlsxSheet(const XlsxSheet& original, SheetEntry& entry);

    /// Checks that the book has every shared string that a cell refers to. Throws `Error`.
    void check_shared_strings() const;
    /// Sets what stands at the index of every format from `known` on that a cell, row or column
    /// has; may set others.
    void mark_formats(std::size_t known, std::vector<bool>& formats) const;
    std::uint64_t shared_strings_end() const { return cells_.shared_strings_end; }
    const SheetEntry& entry() const { return entry_; }
    /// False while something of the package may still be read for this sheet.
    bool is_complete() const { return tail_read_; }

    /// Whether the sheet was made empty, not read.
    bool is_new() const { return is_new_; }
    bool is_changed() const { return changes_.any(); }
    bool has_changed_cells() const { return changes_.cells; }
    bool uses_added_strings() const { return uses_added_strings_; }
    /// What the columns of a table on this sheet are called. Cells of its header that were written
    /// get a text of their own where they have none: applications accept nothing else there.
    std::vector<std::string> header_names(const TableHeader& table);
    /// A guess of the size of the part that `write_part` makes.
    std::uint64_t expected_bytes() const;
    /// Writes the part with all changes since the load; see `rewrite_worksheet`. Throws `Error`.
    void write_part(const PartOpener& open_part, const std::vector<std::uint32_t>& shared_index_of,
                    ByteSink& out) const;

    std::u16string_view name() const override { return entry_.name; }
    SheetState hidden() const override { return entry_.state; }
    bool protect() const override {
        return changes_.is_protected ? *changes_.is_protected : tail().is_protected;
    }

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

    int merge_size() const override { return static_cast<int>(merged_regions().size()); }
    bool merge(int index, int& first_row, int& last_row, int& first_column,
               int& last_column) const override;
    bool named_range(std::u16string_view name, int& first_row, int& last_row, int& first_column,
                     int& last_column) const override;

    bool set_name(std::u16string_view name) override;
    bool set_hidden(SheetState state) override;
    bool set_protect(bool on) override;
    void expect_cells(int first_row, int last_row, int first_column, int last_column) override;
    bool write_num(int row, int column, double value, const Format* format) override;
    bool write_str(int row, int column, std::u16string_view text, const Format* format) override;
    bool write_bool(int row, int column, bool value, const Format* format) override;
    bool write_blank(int row, int column, const Format* format) override;
    bool clear(int first_row, int last_row, int first_column, int last_column) override;
    bool delete_merge(int index) override;
    double column_width(int column) const override;
    bool set_column_width(int column, double width) override;
    bool auto_fit_columns(int first_column, int last_column) override;

  private:
    const WorksheetTail& tail() const;
    const std::vector<MergedRegion>& merged_regions() const;
    const Format* format_at(std::uint32_t index) const;
    bool fail(const std::string& reason) const;
    bool check_area(int first_row, int last_row, int first_column, int last_column) const;
    bool find_format(const Format* format, std::uint32_t& index);
    bool write(int row, int column, const Format* format, StoredKind kind, StoredCell cell);
    double width_of(const StoredCell& cell) const;
    std::string header_text(int row, int column, std::size_t position) const;
    std::string utf8_name() const;

    BookContents& contents_;
    SheetEntry& entry_;
    const bool is_new_;
    const bool is_whole_; ///< all rows were loaded
    WorksheetCells cells_;
    WorksheetChanges changes_;
    bool uses_added_strings_ = false;
    const Format* last_format_ = nullptr; ///< that a cell was written with
    std::uint32_t last_format_index_ = 0;
    mutable WorksheetTail tail_;
    mutable bool tail_read_ = false;
};

} // namespace workbook
