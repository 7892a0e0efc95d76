// SPDX-License-Identifier: Apache-2.0
//
// Worksheet parts: whole, some rows, and what follows the cells.
#include "fuzz/parse.h"
#include "workbook/xlsx/reading/worksheet_reader.h"
#include "workbook/xlsx/xlsx_limits.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return workbook::fuzz::run(data, size, [](const std::string& text) {
        workbook::test::MemorySource part(text, 1000);
        workbook::SheetCells cells(workbook::kMaxColumns);
        workbook::SheetTail tail;
        workbook::read_worksheet(part, {}, workbook::DateBase::From1900, cells, tail);
        const workbook::CellBounds& bounds = cells.cells.bounds();
        cells.cells.find(bounds.end_row - 1, bounds.end_column - 1);
        workbook::test::MemorySource again(text);
        workbook::SheetCells some_cells(workbook::kMaxColumns);
        workbook::read_worksheet(again, {1, 2}, workbook::DateBase::From1904, some_cells, tail);
        workbook::test::MemorySource last(text);
        workbook::read_worksheet_tail(last);
    });
}
