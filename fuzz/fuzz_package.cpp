// SPDX-License-Identifier: Apache-2.0
//
// A whole workbook file: load, and every question to every cell.
#include <algorithm>

#include "fuzz/parse.h"
#include "workbook/library.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return workbook::fuzz::run(data, size, [](const std::string& text) {
        const std::unique_ptr<workbook::Book> book = workbook::xlCreateXMLBookW();
        if (!book->load(foundation::files::memory_file(text))) return;
        for (int i = 0; i < book->sheet_count(); ++i) {
            const workbook::Sheet* sheet = book->get_sheet(i);
            if (sheet == nullptr) continue;
            const int end_row = std::min(sheet->end_row(), sheet->first_row() + 100);
            const int end_column = std::min(sheet->end_column(), sheet->first_column() + 100);
            for (int row = sheet->first_row(); row < end_row; ++row)
                for (int column = sheet->first_column(); column < end_column; ++column) {
                    sheet->cell_type(row, column);
                    sheet->is_date(row, column);
                    sheet->read_num(row, column);
                    sheet->read_str(row, column);
                    sheet->cell_format(row, column);
                }
            sheet->merge_size();
        }
    });
}
