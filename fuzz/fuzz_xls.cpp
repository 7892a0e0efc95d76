// SPDX-License-Identifier: Apache-2.0
//
// Workbook streams of every version: whole, and some rows with the others afterwards.
#include "fuzz/parse.h"
#include "workbook/xls/xls_book.h"

namespace {

using namespace workbook;

void read_all(Book& book) {
    for (int i = 0; i < book.sheet_count(); ++i) {
        const Sheet* sheet = book.get_sheet(i);
        if (sheet == nullptr) continue;
        int area[4];
        sheet->named_range(u"_xlnm.Print_Area", area[0], area[1], area[2], area[3]);
        for (int region = 0; region < sheet->merge_size(); ++region)
            sheet->merge(region, area[0], area[1], area[2], area[3]);
        const int row = sheet->end_row() - 1, column = sheet->end_column() - 1;
        sheet->read_str(row, column);
        sheet->cell_format(row, column);
        sheet->read_str(sheet->first_row(), sheet->first_column());
        sheet->need_rows(0, 65535);
        sheet->read_str(0, 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, [](const std::string& text) {
        XlsBook book;
        if (book.load(foundation::files::memory_file(text))) read_all(book);
        if (book.load_partially(foundation::files::memory_file(text), 0, 1, 2)) read_all(book);
        book.load_info(foundation::files::memory_file(text));
    });
}
