// SPDX-License-Identifier: Apache-2.0
//
// Where the readers of data put the cells that they find.
#pragma once

#include <optional>
#include <string>

#include "zxsheet/cell_grid.h"

namespace zxsheet {

/// Where data says that it belongs.
struct DataPlace {
    std::optional<std::string> sheet{}; ///< a sheet's name, never its number
    std::optional<std::string> range{}; ///< A1 text; its first cell counts
};

/// Cells row after row. Every function throws `CommandError` when the cells cannot be taken.
class CellSink {
  public:
    virtual ~CellSink() = default;
    /// At most once, before the first cell.
    virtual void set_place(const DataPlace& place) = 0;
    /// At most once, before the first cell: the first row has the names of the columns.
    virtual void expect_header() {}
    /// The next cell of the row; `text` is UTF-8, dates are numbers of the 1900 system.
    virtual void add(const CellValue& cell) = 0;
    virtual void end_row() = 0;
};

} // namespace zxsheet
