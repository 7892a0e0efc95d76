// SPDX-License-Identifier: Apache-2.0
//
// Prints a block of numbers of a workbook. Needs nothing but the installed library.
#include <iostream>

#include <spreadsheet/spreadsheet.h>

int main() {
    using namespace spreadsheet;
    const auto workbook = load_book_from_file(u"examples/weather.xlsx", book::interactive::file);
    const auto sheet = workbook->sheet(u"Readings");
    const auto range = sheet_range(u"C2:D5", 5, sheet, workbook->format(), false, nullptr, nullptr);
    std::vector<double> values(static_cast<std::size_t>(range.count()));
    sheet->read(range, values.data()); // column after column
    for (const double value : values)
        std::cout << value << '\n';
}
