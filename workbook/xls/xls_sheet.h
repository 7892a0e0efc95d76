// SPDX-License-Identifier: Apache-2.0
//
// A worksheet of an XLS book. After a load of some rows the other rows are read from the book's
// stream, which is in memory, when a call first needs them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "workbook/cells/stored_sheet.h"
#include "workbook/xls/writing/cell_record_writer.h"
#include "workbook/xls/xls_contents.h"

namespace workbook {

class XlsSheet final : public StoredSheet {
  public:
    /// Reads the cells of `rows`; both given must outlive this. Throws `Error`.
    XlsSheet(XlsContents& contents, XlsSheetEntry& entry, RowSpan rows);
    /// An empty sheet that the file does not have.
    XlsSheet(XlsContents& contents, XlsSheetEntry& entry);
    /// A copy with all changes of `original`, of the same book.
    XlsSheet(const XlsSheet& original, XlsSheetEntry& entry);

    /// One past the greatest index of a format that a cell, row or column has.
    std::uint32_t formats_end() const;
    const XlsSheetEntry& entry() const { return entry_; }

    /// Cells that have a string that was added to the book.
    std::uint64_t added_string_cells() const;
    /// The substream of this sheet with all changes; see `rewrite_sheet`. `stream` has what the
    /// sheet was at `position`. Throws `Error`.
    std::string write(std::string_view stream, std::size_t position,
                      const AddedStrings& strings) const;

    std::u16string_view name() const override { return entry_.name; }
    SheetState hidden() const override { return entry_.state; }
    bool knows_formulas() const override { return contents_.globals.version == BiffVersion::Biff8; }
    bool visit_formulas(int first_row, int last_row, const FormulaVisitor& visit) const override;
    bool set_name(std::u16string_view name) override;
    bool set_hidden(SheetState state) override;

  private:
    std::optional<Rectangle> named_cells(std::u16string_view name) const override;
    void read_other_rows(SheetCells& cells) const override;

    XlsContents& contents_;
    XlsSheetEntry& entry_;
};

} // namespace workbook
