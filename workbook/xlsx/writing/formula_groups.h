// SPDX-License-Identifier: Apache-2.0
//
// Formulas that several cells of a worksheet share (ECMA-376 part 1, 18.3.1.40: shared formulas,
// array formulas, data tables), as far as a change takes one of their cells away: what the cells
// that stay have to hold instead. A part is surveyed before it is rewritten, since a formula
// in one cell is for others before and after it.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "workbook/cells/cell_store.h"
#include "workbook/cells/cleared_cells.h"
#include "workbook/io/byte_source.h"
#include "workbook/xlsx/writing/source_cell.h"
#include "workbook/xlsx/xlsx_limits.h"

namespace workbook {

/// Which cells of a part are written or cleared. What it is made of must outlive it.
class ChangedPlaces {
  public:
    ChangedPlaces(const CellStore& cells, const ClearedCells& cleared)
        : cells_(cells), cleared_(cleared), walk_(cleared) {}
    /// Quick for rows in ascending order.
    bool holds(int row, int column);
    bool intersects(const Rectangle& area) const;
    /// The first row from `row` on that has a cleared cell; `kMaxRows` for none.
    int next_cleared_row(int row);
    bool has_cleared_in(int row) { return walk_.move_to(row); }

  private:
    const CellStore& cells_;
    const ClearedCells& cleared_;
    ClearedCells::Walk walk_;
};

/// Whether formulas of more than one cell may be in the part; quick. Reads until it finds one.
bool may_have_formula_groups(ByteSource& part);

class FormulaGroups {
  public:
    /// Rows that hold no cell to be adjusted are outside of these, both inclusive.
    int first_row() const { return first_row_; }
    int last_row() const { return last_row_; }

    /// Reads a whole part. Throws `Error`.
    void survey(ByteSource& part, ChangedPlaces& changed);

    /// Cells that stay are given in the part's order; gives them another formula when their group
    /// has lost a cell that it needs.
    void adjust(SourceCell& cell, const CellReference& place);

  private:
    struct Master {
        CellReference place;
        bool is_lost;
        std::string text; ///< of a lost one
    };
    struct SharedGroup {
        std::vector<Master> masters; ///< more than one when a producer uses a number again
        int first_row = kMaxRows, last_row = -1;
        bool has_lost_master = false;
    };
    enum class BlockKind { Array, DynamicArray, DataTable };
    struct Block {
        Rectangle area;
        CellReference anchor;
        BlockKind kind;
        std::string text;
        std::string prefix;
    };

    void note(const SourceCell& cell, const CellReference& place, ChangedPlaces& changed);
    void add_shared(const SourceFormula& formula, const CellReference& place,
                    ChangedPlaces& changed);
    void add_block(const SourceCell& cell, const CellReference& place, ChangedPlaces& changed);
    void count_text(std::size_t bytes);
    void include_rows(int first, int last);
    void adjust_shared(SourceCell& cell, const CellReference& place) const;
    void adjust_block(SourceCell& cell, const CellReference& place, const Block& block) const;
    const Block* block_at(const CellReference& place);

    std::string part_name_;
    std::unordered_map<unsigned, SharedGroup> shared_;
    std::vector<Block> blocks_; ///< by first row, once surveyed
    int highest_block_ = 0;     ///< in rows
    std::size_t masters_ = 0, text_bytes_ = 0;
    int first_row_ = kMaxRows, last_row_ = -1;

    int active_row_ = -1;
    std::vector<const Block*> active_; ///< those that `active_row_` meets
};

} // namespace workbook
