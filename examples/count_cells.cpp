// SPDX-License-Identifier: Apache-2.0
//
// Counts the cells of every kind on the first sheet of a workbook. Needs nothing but the installed
// library.
#include <iostream>
#include <map>

#include <spreadsheet/spreadsheet.h>

int main(int argc, char** argv) try {
    using namespace spreadsheet;
    const std::string path = argc > 1 ? argv[1] : "weather.xlsx";
    const auto workbook = load_book_from_file({path.begin(), path.end()}, book::interactive::file);
    const auto sheet = workbook->sheet(0);
    std::map<int, int> counts;
    for (const cell_type type : sheet->cell_types(sheet->used_range()))
        ++counts[static_cast<int>(type)];
    for (const auto& [type, count] : counts)
        std::cout << type << ": " << count << '\n';
} catch (const spreadsheet::Exception& e) {
    std::cerr << e.what() << '\n';
    return 1;
}
