// SPDX-License-Identifier: Apache-2.0
//
// A worksheet that answers every read of `Sheet` from cells, strings and formats in memory, and
// keeps every change to cells, whatever the file format. A format's own sheet derives from it,
// fills `cells_` and `tail_`, and adds what depends on the format: the name, the visibility,
// defined names, and what a load of some rows left in the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/cells/sheet_data.h"
#include "workbook/cells/stored_book.h"
#include "workbook/library.h"

namespace workbook {

class StoredSheet : public Sheet {
  public:
    /// Sets the element of every format from `known` on that a cell, row or column has; may set
    /// others.
    void mark_formats(std::size_t known, std::vector<bool>& formats) const;
    std::uint64_t shared_strings_end() const { return cells_.shared_strings_end; }
    /// Checks that the book has every shared string that a cell refers to. Throws `Error`.
    void check_shared_strings() const;
    bool is_changed() const { return changes_.any(); }
    bool has_changed_cells() const { return changes_.cells; }
    bool uses_added_strings() const { return uses_added_strings_; }

    bool protect() const override;
    CellKind cell_type(int row, int column) const override;
    bool is_date(int row, int column) const override;
    NumberStyle number_style(int row, int column) const override;
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

    std::optional<RowOfCells> next_row_of_cells(int row) const override;

    std::uint64_t formulas_without_result() const override {
        return cells_.formulas_without_result;
    }

    int merge_size() const override { return static_cast<int>(merged_regions().size()); }
    bool merge(int index, int& first_row, int& last_row, int& first_column,
               int& last_column) const override;
    bool named_range(std::u16string_view name, int& first_row, int& last_row, int& first_column,
                     int& last_column) const override;
    bool need_tail() const override;
    bool need_rows(int first_row, int last_row) const override;

    bool set_protect(bool on) override;
    void expect_cells(int first_row, int last_row, int first_column, int last_column) override;
    bool write_num(int row, int column, double value, const Format* format) override;
    bool write_str(int row, int column, std::u16string_view text, const Format* format) override;
    bool write_bool(int row, int column, bool value, const Format* format) override;
    bool write_blank(int row, int column, const Format* format) override;
    /// Refused unless the format's own sheet knows better.
    bool write_formula(int row, int column, std::string_view formula,
                       const Format* format) override;
    bool clear(int first_row, int last_row, int first_column, int last_column) override;
    bool delete_merge(int index) override;
    double column_width(int column) const override;
    bool set_column_width(int column, double width) override;
    bool auto_fit_columns(int first_column, int last_column) override;

  protected:
    /// An empty sheet. `book` must outlive this.
    explicit StoredSheet(StoredBook& book);
    /// A copy with all changes of `original`, of the same book, whose tail has to be known.
    StoredSheet(const StoredSheet& original);
    ~StoredSheet() = default;

    // What a format adds.

    /// The cells that a defined name refers to; see `Sheet::named_range`.
    virtual std::optional<Rectangle> named_cells(std::u16string_view name) const = 0;
    /// Reads what a load of some rows left out: what is after the cells, or the cells, row formats
    /// and strings of rows that were not loaded (others may be among them). Called once, and only
    /// where `is_tail_read_` is false or `loaded_rows_` are not all. Throw `Error`.
    virtual void read_tail(SheetTail& tail) const;
    virtual void read_other_rows(SheetCells& cells) const;

    /// Keeps the reason, preceded by the sheet's name, and returns false.
    bool fail(ErrorKind kind, const std::string& reason) const;
    bool is_whole() const {
        return loaded_rows_.first <= 0 && loaded_rows_.last >= book_.limits.rows - 1;
    }
    std::string utf8_name() const;
    /// A formula that has been checked.
    bool keep_formula(int row, int column, std::string_view formula, const Format* format);
    void set_uses_added_strings(bool on) { uses_added_strings_ = on; }
    /// From now on every change of cells, widths and protection fails for this reason.
    void refuse_changes(std::string reason);

    StoredBook& book_;
    SheetCells cells_;
    mutable SheetTail tail_;
    SheetChanges changes_;
    RowSpan loaded_rows_;              ///< rows that `cells_` was filled with
    mutable bool is_tail_read_ = true; ///< whether `tail_` is known

  private:
    /// Runs `read()`; its failure is kept in `failure` and as the book's last error.
    template <class Read>
    void read_once(const Read& read, std::optional<LastError>& failure) const;
    bool need_other_rows() const;
    void check_shared_strings(const SheetCells& cells) const;
    const StoredCell* find(int row, int column) const;
    const StoredCell* find_in_other_rows(int row, int column) const;
    const std::vector<Rectangle>& merged_regions() const;
    const Format* format_at(std::uint32_t index) const;
    std::optional<std::uint32_t> row_format(int row) const;
    /// The string of a cell whose own strings are in `own_strings`; nullopt for other kinds.
    std::optional<std::string_view> text_of(const StoredCell& cell,
                                            const StringPool& own_strings) const;
    bool check_area(const Rectangle& area) const;
    bool find_format(const Format* format, std::uint32_t& index);
    bool write(int row, int column, const Format* format, StoredKind kind, StoredCell cell);
    double width_of(const StoredCell& cell, const StringPool& own_strings) const;

    SheetLimits limits_;  ///< the book's; of no cell where changes are refused
    std::string refusal_; ///< why; empty where they are not
    bool uses_added_strings_ = false;
    const Format* last_format_ = nullptr; ///< that a cell was written with
    std::uint32_t last_format_index_ = 0;
    /// What `read_other_rows` gave, without what was loaded or cleared; null before. What is
    /// written to other rows goes to `cells_`.
    mutable std::unique_ptr<SheetCells> other_rows_;
    mutable std::optional<LastError> tail_failure_;
    mutable std::optional<LastError> rows_failure_;
};

} // namespace workbook
