// SPDX-License-Identifier: Apache-2.0
//
// A worksheet of an XLS book. After a load of some rows the other rows are read from the book's
// stream, which is in memory, when a call first needs them.
#pragma once

#include <cstdint>

#include "workbook/cells/stored_sheet.h"
#include "workbook/xls/xls_contents.h"

namespace workbook {

class XlsSheet final : public StoredSheet {
  public:
    /// Reads the cells of `rows`; both given must outlive this. Throws `Error`.
    XlsSheet(XlsContents& contents, const XlsSheetEntry& entry, RowSpan rows);

    /// One past the greatest index of a format that a cell, row or column has.
    std::uint32_t formats_end() const;

    std::u16string_view name() const override { return entry_.name; }
    SheetState hidden() const override { return entry_.state; }
    bool set_name(std::u16string_view name) override;
    bool set_hidden(SheetState state) override;

  private:
    std::optional<Rectangle> named_cells(std::u16string_view name) const override;
    void read_other_rows(SheetCells& cells) const override;

    XlsContents& contents_;
    const XlsSheetEntry& entry_;
};

} // namespace workbook
