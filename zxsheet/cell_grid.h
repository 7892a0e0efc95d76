// SPDX-License-Identifier: Apache-2.0
//
// The cells of a range band by band: the library delivers column after column, the program writes
// row after row, and a band of rows keeps what is between them small.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "zxsheet/book_access.h"

namespace zxsheet {

/// One cell; `number` also holds serial dates and booleans (0 or 1), `text` the text of errors too.
struct CellValue {
    spreadsheet::cell_type type = spreadsheet::cell_type::empty;
    double number = 0.0;
    std::string text;
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

/// Calls `visit` for every row of the selection from the top; none for an empty selection. Rows and
/// columns that a rule omits are not visited.
void for_each_row(const Selection& selection, const MergedRules& rules, Content content,
                  const RowVisitor& visit);

} // namespace zxsheet
