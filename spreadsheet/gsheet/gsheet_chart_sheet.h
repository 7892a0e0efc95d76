// SPDX-License-Identifier: Apache-2.0
//
// An object sheet of a Google spreadsheet, which carries a chart instead of a grid: the placeholder
// that keeps the indices of the sheets after it. Every operation throws `Exception` 31.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "spreadsheet/gsheet/google_worksheet.h"
#include "spreadsheet/sheet_without_cells.h"
#include "spreadsheet/trace.h"

namespace spreadsheet {

class GSheetChartSheet final : public SheetWithoutCells<ISheet> {
  public:
    explicit GSheetChartSheet(std::shared_ptr<GoogleSheetWorksheet> sheet)
        : sheet_(std::move(sheet)) {}

    bool operator==(const GSheetChartSheet&) const { throw refused(); }
    std::shared_ptr<GoogleSheetWorksheet> get_sheet() const { throw refused(); }

    using SheetWithoutCells::cell_types;
    void cell_types(const CellIterator&, cell_type*) const override { throw refused(); }
    bool cell_types(Range, cell_type*, const MergedCellColumnRule&,
                    const MergedCellRowRule&) override {
        throw refused();
    }
    std::vector<bool> get_merged_cells_vector() const override { throw refused(); }
    std::vector<int> get_omit_rows_vector() const override { throw refused(); }
    std::vector<int> get_omit_vars_vector() const override { throw refused(); }
    void reset_merged_cells_vector() override { throw refused(); }
    void reset_omit_vars_bool() override { throw refused(); }
    void set_return_empty_vars_bool(const bool) override { throw refused(); }
    cell_type typeCheck(int, int) override { throw refused(); }
    Range get_data_span(Range, const MergedCellColumnRule&, const MergedCellRowRule&) override {
        throw refused();
    }
    void get_types(cell_type*) override { throw refused(); }
    void prefetch(Range, cell_type*) const override { throw refused(); }

  private:
    Exception refused(std::source_location where = std::source_location::current()) const override {
        const Trace trace(where, "gsheet/gsheet_chart_sheet");
        return Exception(error_id::chart_sheet_unsupported);
    }

    std::shared_ptr<GoogleSheetWorksheet> sheet_;
};

} // namespace spreadsheet
