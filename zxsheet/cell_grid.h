// SPDX-License-Identifier: Apache-2.0
//
// The cells of a range band by band: the library delivers column after column, the program writes
// row after row, and a band of rows keeps what is between them small.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zxsheet/book_access.h"

namespace zxsheet {

/// The cells that both ranges have; its last row or column comes before the first one if there are
/// none.
spreadsheet::Range common_range(const spreadsheet::Range& a, const spreadsheet::Range& b);

/// One cell; `number` also holds serial dates and booleans (0 or 1), `text` the text of errors too.
struct CellValue {
    spreadsheet::cell_type type = spreadsheet::cell_type::empty;
    double number = 0.0;
    std::string text;
    spreadsheet::number_style style = spreadsheet::number_style::number;
};

/// One row of cells; lives until the visitor returns.
using RowVisitor = std::function<void(const std::vector<const CellValue*>& row)>;

/// Whether a pass needs the values of the cells or their types alone.
enum class Content { Types, Values };

/// What merged cells deliver; without a rule their first cell alone has the value.
struct MergedRules {
    std::optional<spreadsheet::MergedCellColumnRule> columns;
    std::optional<spreadsheet::MergedCellRowRule> rows;
};

/// The formulas of a selection. Where there are any, the values of their cells are not visited, but
/// their text after an equals sign.
class FormulaTexts {
  public:
    /// Reads the formulas of the rows of the selection. Throws `CommandError` where formulas are
    /// not known.
    FormulaTexts(const Selection& selection, const BookLocation& location);
    /// The text with its equals sign; empty where the cell has no formula.
    std::string_view at(int row, int column) const;

  private:
    struct Entry {
        int row, column;
        std::size_t begin, end; ///< in `text_`
    };
    void add(const spreadsheet::FormulaCell& formula);

    std::vector<Entry> entries_; ///< by row, then column
    std::string text_;
};

/// Calls `visit` for every row of the selection from the top; none for an empty selection. Rows and
/// columns that a rule omits are not visited.
void for_each_row(const Selection& selection, const MergedRules& rules, Content content,
                  const RowVisitor& visit);

/// The range of a selection that ends at its values (`is_open`), with the rest of the merged
/// regions that a rule gives values to.
spreadsheet::Range with_repeated_cells(const Selection& selection, const MergedRules& rules,
                                       bool is_open);

/// Calls `visit` for blocks of rows that together hold every cell of the selection: rows that begin
/// and end at the same columns, a few thousand cells at a time.
void for_each_block(const Selection& selection,
                    const std::function<void(const spreadsheet::Range& block)>& visit);

/// One cell; lives until the visitor returns.
using CellVisitor = std::function<void(int row, int column, const CellValue& cell)>;

/// Calls `visit` for every cell of the selection that is there, row after row: those of type empty
/// are left out. Costs what the cells cost, not what the range claims.
void for_each_cell(const Selection& selection, const CellVisitor& visit);

} // namespace zxsheet
