// SPDX-License-Identifier: Apache-2.0
//
// Texts that become formulas on their way to a sheet.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "zxsheet/sheet_writer.h"

namespace zxsheet {

/// Passes cells on to a writer and keeps the texts that begin with "=", which become formulas once
/// the writer is done. Throws `CommandError`, which names the cell, for one that is not a formula.
class FormulaSink : public CellSink {
  public:
    /// Both must outlive this.
    FormulaSink(SheetWriter& writer, const WriteOptions& options)
        : writer_(writer), options_(options) {}

    void set_place(const DataPlace& place) override { writer_.set_place(place); }
    void expect_header() override { writer_.expect_header(); }
    void add(const CellValue& cell) override;
    void end_row() override;

    /// Finishes the writer and puts the formulas into the rows that it has written, also when it
    /// fails half-way.
    void finish();

  private:
    struct Formula {
        int row, column; ///< from the first cell of the target
        std::string text;
    };

    bool is_skipped() const { return row_ < options_.skip.value_or(0); }
    void keep(const std::string& text);
    void write_formulas();

    SheetWriter& writer_;
    const WriteOptions& options_;
    std::size_t row_ = 0, column_ = 0; ///< of the data
    std::vector<Formula> formulas_;
};

} // namespace zxsheet
