// SPDX-License-Identifier: Apache-2.0
//
// A worksheet of an Open XML book. When only some rows were loaded, what is after the cells (merged
// regions, protection) and the other rows are read from the package when a call first needs them.
#pragma once

#include "workbook/cells/stored_sheet.h"
#include "workbook/xlsx/book_contents.h"
#include "workbook/xlsx/structure/table_columns.h"
#include "workbook/xlsx/writing/worksheet_rewriter.h"

namespace workbook {

class XlsxSheet final : public StoredSheet {
  public:
    /// Reads the cells of `rows` of a sheet; both given must outlive this. Throws `Error`.
    XlsxSheet(BookContents& contents, SheetEntry& entry, RowSpan rows);

    /// An empty sheet, which has no part yet; without the name of one it cannot be changed.
    XlsxSheet(BookContents& contents, SheetEntry& entry);
    /// A copy with all changes of `original`, of the same book, whose tail has to be known. Its
    /// part is made from the original's.
    XlsxSheet(const XlsxSheet& original, SheetEntry& entry);

    const SheetEntry& entry() const { return entry_; }
    /// False while something that follows the cells may still be read from the package.
    bool is_tail_read() const { return is_tail_read_; }

    /// Whether the sheet was made empty, not read.
    bool is_new() const { return is_new_; }
    /// The names of the columns of a table on this sheet. Cells of its header that were written
    /// become different strings where they are not: applications accept nothing else there.
    std::vector<std::string> header_names(const TableHeader& table);
    /// Takes back what `header_names` wrote since the last call of `keep_header_cells`.
    void restore_header_cells();
    void keep_header_cells() { replaced_headers_.clear(); }
    /// A guess of the size of the part that `write_part` makes.
    std::uint64_t expected_bytes() const;
    /// Writes the part with all changes since the load; see `rewrite_worksheet`. Throws `Error`.
    void write_part(const PartOpener& open_part, const std::vector<std::uint32_t>& shared_index_of,
                    ByteSink& out) const;

    std::u16string_view name() const override { return entry_.name; }
    SheetState hidden() const override { return entry_.state; }
    bool knows_formulas() const override { return true; }
    bool visit_formulas(int first_row, int last_row, const FormulaVisitor& visit) const override;
    bool write_formula(int row, int column, std::string_view formula,
                       const Format* format) override;
    bool set_name(std::u16string_view name) override;
    bool set_hidden(SheetState state) override;

  private:
    std::optional<Rectangle> named_cells(std::u16string_view name) const override;
    void read_tail(SheetTail& tail) const override;
    void read_other_rows(SheetCells& cells) const override;

    template <class Change>
    bool try_change(const Change& change);
    std::string header_text(int row, int column, std::size_t position) const;
    void replace_header_cell(int row, int column, std::u16string_view text, const Format* format);

    /// A header cell before it was written; absent where there was none.
    struct ReplacedCell {
        int row, column;
        std::optional<StoredCell> cell;
        bool used_added_strings;
    };

    BookContents& contents_;
    SheetEntry& entry_;
    const bool is_new_;
    std::vector<ReplacedCell> replaced_headers_;
};

} // namespace workbook
