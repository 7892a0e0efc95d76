// SPDX-License-Identifier: Apache-2.0
//
// Writes cells to their own addresses; what is between them stays.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zxsheet/cell_grid.h"
#include "zxsheet/write_target.h"

namespace zxsheet {

class CellsWriter {
  public:
    /// Opens the target. Throws `CommandError` for options without a meaning for such data.
    CellsWriter(const WriteOptions& options, ChangeTools& tools);

    /// Cells without a value empty what is there. Neighbours in a row that come one after the other
    /// are written at once.
    void add(int row, int column, const CellValue& cell);
    void finish();

    const WriteTarget& target() const { return target_; }
    std::uint64_t values() const { return values_; }

  private:
    void check(int row, int column, const CellValue& cell) const;
    void flush();

    const WriteOptions& options_;
    WriteTarget target_;
    spreadsheet::Range used_before_{0, 0, -1, -1};
    bool dates_1904_ = false;
    int row_ = 0, first_column_ = 0; ///< of the run
    std::vector<CellValue> run_;
    std::uint64_t values_ = 0;
};

} // namespace zxsheet
