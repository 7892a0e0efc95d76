// SPDX-License-Identifier: Apache-2.0
//
// The placeholder of an object sheet refuses everything.
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/gsheet/gsheet_chart_sheet.h"
#include "tests/spreadsheet/gsheet/scripted_service.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using GSheetChart = test::ScriptedService;

TEST_F(GSheetChart, RefusesEveryOperation) {
    const auto book = open(test::metadata(
        {R"({"properties": {"title": "Chart", "sheetId": 3, "sheetType": "OBJECT"}})"}));
    const auto sheet = book->sheet(std::size_t{0});
    const auto& chart = dynamic_cast<const GSheetChartSheet&>(*sheet);
    const MergedCellColumnRule columns{};
    const MergedCellRowRule rows{};
    const Range cell{0, 0, 0, 0};
    double* const numbers = nullptr;
    cell_type* const types = nullptr;
    output::CellArrayBuilder builder;
    CellTypeIterator selection({}, {}, nullptr, 0);
    std::vector<std::function<void()>> actions;
    const auto add_typed = [&](auto... values) {
        (actions.insert(actions.end(),
                        {[=] { sheet->read(cell, values, columns, rows); },
                         [=] { sheet->read(cell, values); }, [=] { sheet->write(cell, values); }}),
         ...);
    };
    add_typed(numbers, static_cast<SerialDatenum*>(nullptr), static_cast<bool*>(nullptr),
              static_cast<unsigned char*>(nullptr));
    actions.insert(actions.end(),
                   {
                       [&] { (void)(chart == chart); },
                       [&] { chart.get_sheet(); },
                       [&] { sheet->name(u"x"); },
                       [&] { sheet->name(); },
                       [&] { sheet->hidden(sheet::hidden::visible); },
                       [&] { sheet->hidden(); },
                       [&] { sheet->is_protected(); },
                       [&] { sheet->set_protected(true); },
                       [&] { sheet->used_range(); },
                       [&] { sheet->clear(Cell{}); },
                       [&] { sheet->clear(cell); },
                       [&] { sheet->named_range(u"x"); },
                       [&] { sheet->cell_types(CellIterator({}, {}), types); },
                       [&] { sheet->cell_types(cell, types, columns, rows); },
                       [&] { sheet->cell_types(cell, types); },
                       [&] { sheet->get_merged_cells_vector(); },
                       [&] { sheet->get_omit_rows_vector(); },
                       [&] { sheet->get_omit_vars_vector(); },
                       [&] { sheet->reset_merged_cells_vector(); },
                       [&] { sheet->reset_omit_vars_bool(); },
                       [&] { sheet->set_return_empty_vars_bool(true); },
                       [&] { sheet->typeCheck(0, 0); },
                       [&] { sheet->read(cell, StringBuilder{}, columns, rows); },
                       [&] { sheet->read(cell, StringBuilder{}); },
                       [&] { sheet->read(cell, types, CellBuilder{}); },
                       [&] { sheet->write(cell, StringProvider{}); },
                       [&] { sheet->write(cell, types, CellProvider{}, true); },
                       [&] { sheet->auto_fit_column_widths(cell); },
                       [&] { sheet->unmerge(cell); },
                       [&] { sheet->is_range_writeable(cell); },
                       [&] { sheet->get_data_span(cell, columns, rows); },
                       [&] { sheet->get_types(types); },
                       [&] { sheet->read_cell_array(selection, builder, true, columns, rows); },
                       [&] { sheet->read_cell_array(selection, builder, true); },
                       [&] { sheet->readDatesAsDoubles(cell, numbers, columns, rows); },
                       [&] { sheet->readDatesAsDoubles(cell, numbers); },
                       [&] { sheet->prefetch(cell, types); },
                   });
    for (const auto& action : actions) {
        const std::size_t before = log_lines("gsheet/gsheet_chart_sheet").size();
        EXPECT_EQ(thrown_id(action), 31) << before;
        EXPECT_GT(log_lines("gsheet/gsheet_chart_sheet").size(), before);
    }
    EXPECT_EQ(book->get_sheet_name(0), u"Chart");
    EXPECT_TRUE(requests().empty());
}

} // namespace
} // namespace spreadsheet
