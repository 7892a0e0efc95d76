// SPDX-License-Identifier: Apache-2.0
//
// Reads every cell of a workbook through the public interface, as a host would: load, cell types,
// typed read. Meant to be timed as a whole process.
//
//   read_book FILE all              every sheet, one typed read per sheet
//   read_book FILE doubles          the same, into arrays of doubles
//   read_book FILE rows FIRST LAST  zero-based rows of the first sheet
//   read_book FILE names            sheet names only
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "spreadsheet/spreadsheet.h"

namespace {

using namespace spreadsheet;

// What a reader that stores nothing can check its answer by.
struct Totals {
    std::size_t cells = 0, numbers = 0, texts = 0, booleans = 0, units = 0;
    double sum = 0.0;
};

Totals& totals(void* context) {
    return *static_cast<Totals*>(context);
}

void add_text(void* context, const std::u16string& text) {
    ++totals(context).texts;
    totals(context).units += text.size();
}

void add_number(void* context, double value) {
    ++totals(context).numbers;
    totals(context).sum += value;
}

void add_boolean(void* context, bool) {
    ++totals(context).booleans;
}

void read_sheet(const ISheet& sheet, bool as_doubles, Totals& into) {
    const Range range = sheet.used_range();
    const std::vector<cell_type> types = sheet.cell_types(range);
    into.cells += types.size();
    if (types.empty()) return;
    if (as_doubles) {
        std::vector<double> values(types.size());
        sheet.read(range, values.data());
        for (double value : values)
            add_number(&into, value);
        return;
    }
    sheet.read(range, types.data(), {&into, add_text, add_number, add_number, add_boolean});
}

std::u16string utf16(const char* ascii) {
    return {ascii, ascii + std::strlen(ascii)};
}

int run(int argc, char** argv) {
    const std::u16string path = utf16(argv[1]);
    const std::string_view what = argv[2];
    Totals found;
    if (what == "names") {
        const auto book = load_book_from_file_with_sheetNames(path, book::format::XLSX);
        std::printf("sheets %zu\n", book->get_sheet_names().size());
        return 0;
    }
    if (what == "rows" && argc == 5) {
        const auto book = load_book_from_file_with_range(path, book::interactive::file, 0,
                                                         std::strtoul(argv[3], nullptr, 10),
                                                         std::strtoul(argv[4], nullptr, 10));
        read_sheet(*book->sheet(0), false, found);
    } else {
        const auto book = load_book_from_file(path, book::interactive::file);
        for (std::size_t i = 0; i < book->num_sheets(); ++i)
            if (book->sheet_type(i) == sheet::type::worksheet)
                read_sheet(*book->sheet(i), what == "doubles", found);
    }
    std::printf("cells %zu numbers %zu texts %zu booleans %zu units %zu sum %.6e\n", found.cells,
                found.numbers, found.texts, found.booleans, found.units, found.sum);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: read_book FILE all|doubles|names|rows FIRST LAST\n");
        return 2;
    }
    initialize();
    try {
        const int status = run(argc, argv);
        release();
        return status;
    } catch (const Exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
}
