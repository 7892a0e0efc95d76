// SPDX-License-Identifier: Apache-2.0
//
// Formulas that several cells of a sheet share, as far as a change takes one of their cells away:
// what the cells that stay have instead. A shared formula whose own cell is lost is spelled out in
// the others; of an array formula, each other cell gets a formula for its item; a data table that
// loses a cell leaves its values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "workbook/cells/cell_store.h"
#include "workbook/cells/cleared_cells.h"
#include "workbook/xls/writing/cell_table.h"

namespace workbook {

class SharedFormulas {
  public:
    /// All given must outlive this.
    SharedFormulas(std::string_view stream, BiffVersion version, const CellTable& table,
                   const CellStore& cells, const ClearedCells& cleared);

    /// Whether a cell of this row may have to be adjusted.
    bool may_adjust(int row) const { return row >= first_row_ && row <= last_row_; }
    /// Appends the records that a cell that stays has instead of those it had; false when it keeps
    /// them.
    bool adjust(const CellExtent& cell, std::string& out) const;

  private:
    bool has_lost(const SharedFormula& group, const CellStore& cells,
                  const ClearedCells& cleared) const;
    void append_string(const CellExtent& cell, std::string& out) const;

    std::string_view stream_;
    const BiffVersion version_;
    std::vector<SharedFormula> broken_;
    int first_row_ = 0, last_row_ = -1;
};

} // namespace workbook
