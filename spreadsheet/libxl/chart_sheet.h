// SPDX-License-Identifier: Apache-2.0
//
// The placeholder that stands for a chart sheet, so that the sheets after it keep their indices.
// Every operation on its data throws `Exception` 31.
#pragma once

#include "spreadsheet/libxl/libxl_sheet.h"
#include "spreadsheet/sheet_without_cells.h"

namespace spreadsheet {

class ChartSheet final : public SheetWithoutCells<LibXLSheet> {
  private:
    Exception refused(std::source_location) const override {
        return Exception(error_id::chart_sheet_unsupported);
    }
};

} // namespace spreadsheet
