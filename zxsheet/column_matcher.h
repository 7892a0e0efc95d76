// SPDX-License-Identifier: Apache-2.0
//
// Puts the cells of rows that are appended into the columns of the same names.
#pragma once

#include <cstddef>
#include <vector>

#include "zxsheet/sheet_writer.h"

namespace zxsheet {

/// Passes rows on to a writer. When the data has names in its first row and the writer appends to a
/// sheet with values, that row is not written: its names say where the cells of the others go.
class ColumnMatcher : public CellSink {
  public:
    /// Rows go on to `next`, which leads to the writer. `has_header`: the first row has names,
    /// whatever the data says.
    ColumnMatcher(SheetWriter& writer, CellSink& next, const BookLocation& location,
                  bool has_header)
        : writer_(writer), next_(next), location_(location), has_header_(has_header) {}

    void set_place(const DataPlace& place) override { next_.set_place(place); }
    void expect_header() override { has_header_ = true; }
    void add(const CellValue& cell) override;
    void end_row() override;

  private:
    enum class State { Begin, Header, Matched, Unchanged };

    void begin();
    void match_names();

    SheetWriter& writer_;
    CellSink& next_;
    const BookLocation& location_;
    bool has_header_;
    State state_ = State::Begin;
    std::vector<CellValue> row_;       ///< that is not complete
    std::vector<std::size_t> columns_; ///< of the sheet, by those of the data
    std::size_t width_ = 0;            ///< columns of the sheet
};

} // namespace zxsheet
