// SPDX-License-Identifier: Apache-2.0
//
// Prints a block of numbers of a workbook. Needs nothing but the installed library.
#include <iostream>

#include <foundation/unicode.h>
#include <spreadsheet/spreadsheet.h>

int main(int count, char** arguments) {
    using namespace spreadsheet;
    const char* const file = count > 1 ? arguments[1] : "examples/weather.xlsx";
    const char* const name = count > 2 ? arguments[2] : "Readings";
    try {
        const auto workbook =
            load_book_from_file(foundation::unicode::to_utf16(file), book::interactive::file);
        const auto sheet = workbook->sheet(foundation::unicode::to_utf16(name));
        if (!sheet) {
            std::cerr << file << ": There is no sheet named " << name << ".\n";
            return 1;
        }
        const auto range =
            sheet_range(u"C2:D5", 5, sheet, workbook->format(), false, nullptr, nullptr);
        std::vector<double> values(static_cast<std::size_t>(range.count()));
        sheet->read(range, values.data()); // column after column
        for (const double value : values)
            std::cout << value << '\n';
    } catch (const Exception& error) {
        std::cerr << file << ": " << failure_of(error).cause << '\n'; // "There is no such file."
        return 1;
    }
}
