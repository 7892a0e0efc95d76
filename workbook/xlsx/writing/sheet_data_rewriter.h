// SPDX-License-Identifier: Apache-2.0
//
// Rewrites the rows and cells of a worksheet part (ECMA-376 part 1, 18.3.1.80 sheetData): what was
// not changed is copied unchanged, cells that were written take their place in row and column
// order. Where rows or cells have no reference of their own, they get one as soon as something new
// is before them.
#pragma once

#include <string>

#include "workbook/cells/cell_store.h"
#include "workbook/xlsx/writing/cell_markup.h"
#include "workbook/xlsx/writing/formula_groups.h"
#include "workbook/xlsx/writing/source_cell.h"
#include "workbook/xml/markup_writer.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

class SheetDataRewriter {
  public:
    /// Everything given must outlive this. `prefix` is that of the part's elements.
    SheetDataRewriter(XmlScanner& scanner, MarkupWriter& out, std::string prefix,
                      const CellStore& cells, ChangedPlaces& changed, FormulaGroups& groups,
                      CellMarkup& markup);

    /// Call after the Start of sheetData; reads to its End and writes the element. A part may have
    /// several. Throws `Error`.
    void rewrite();
    /// Writes a whole element for a part that has none; nothing when no cell was written.
    void write_missing();

  private:
    // Rows that no one has to look into.
    void copy_plain_rows();
    const char* find_mark(const char* p) const;
    const char* plain_row_number(const char* p, int& row) const;
    void copy_to(const char* p);
    int next_row_to_look_at();

    void rewrite_row();
    void write_row_tag(int row, bool is_changed);
    void rewrite_cell(int row);

    // Cells that were written.
    void find_next_changed_row();
    void write_rows_before(int row);
    void write_cells_before(int column);

    XmlScanner& scanner_;
    TextWindow& window_;
    MarkupWriter& out_;
    const std::string prefix_;
    std::string row_prefix_; ///< of sheetData, and of its rows as they should be
    const CellStore& cells_;
    ChangedPlaces& changed_;
    FormulaGroups& groups_;
    CellMarkup& markup_;

    CellPlaces places_;             ///< as the part has them
    CellPlaces written_;            ///< as a reader of what is written finds them
    int highest_row_ = -1;          ///< of the part, so far
    std::size_t next_row_ = 0;      ///< of the store's rows, the first that is to be written
    CellStore::RowCells new_cells_; ///< of the row being written, those that are still to come
    SourceCell cell_;
    std::string cell_text_;
};

} // namespace workbook
