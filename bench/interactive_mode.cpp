// SPDX-License-Identifier: Apache-2.0
//
// Interactive mode over the application that is installed: a block of cells written, then its types
// and values read, as a host would. Prints cells a second; the start of the application is not part
// of them.
//
//   interactive_mode [ROWS]     20 columns, 10,000 rows unless said otherwise
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "spreadsheet/spreadsheet.h"

namespace {

using namespace spreadsheet;
using Clock = std::chrono::steady_clock;

constexpr int kColumns = 20;
constexpr int kDefaultRows = 10'000;
constexpr int kRounds = 5;

/// Of each four columns two are numbers, one is text and one holds dates.
cell_type type_of_column(int column) {
    return column % 4 == 3   ? cell_type::text
           : column % 4 == 2 ? cell_type::date
                             : cell_type::number;
}

struct Supply {
    int next = 0;
};
Supply& supply_of(void* context) {
    return *static_cast<Supply*>(context);
}

void write_cells(ISheet& sheet, const Range& range, const std::vector<cell_type>& types) {
    Supply supply;
    const CellProvider provider{
        &supply,
        [](void* context) {
            const std::string text = "text " + std::to_string(supply_of(context).next++ % 1000);
            return std::u16string(text.begin(), text.end());
        },
        [](void* context) { return supply_of(context).next++ * 1.25; },
        [](void* context) { return SerialDatenum{40'000.0 + supply_of(context).next++ % 5000}; },
        [](void* context) { return supply_of(context).next++ % 2 == 0; },
        [](void* context) { ++supply_of(context).next; }};
    sheet.write(range, types.data(), provider, false);
}

void read_cells(const ISheet& sheet, const Range& range) {
    std::vector<cell_type> types(static_cast<std::size_t>(range.count()));
    sheet.cell_types(range, types.data());
    std::size_t cells = 0;
    const CellBuilder builder{
        &cells, [](void* context, const std::u16string&) { ++*static_cast<std::size_t*>(context); },
        [](void* context, double) { ++*static_cast<std::size_t*>(context); },
        [](void* context, double) { ++*static_cast<std::size_t*>(context); },
        [](void* context, bool) { ++*static_cast<std::size_t*>(context); }};
    sheet.read(range, types.data(), builder);
    if (cells != types.size()) throw Exception(error_id::internal);
}

/// The best of some rounds, as cells a second.
template <class Action>
void measure(const char* what, const Range& range, Action action) {
    double best = 0.0;
    for (int round = 0; round < kRounds; ++round) {
        const auto begin = Clock::now();
        action();
        const std::chrono::duration<double> seconds = Clock::now() - begin;
        best = std::max(best, static_cast<double>(range.count()) / seconds.count());
    }
    std::printf("%-8s %12.0f cells/s\n", what, best);
}

} // namespace

int main(int count, char** arguments) {
    const int rows = count > 1 ? std::max(1, std::atoi(arguments[1])) : kDefaultRows;
    try {
        const auto book =
            create_new_book(1, book::format::XLSX, book::interactive::application, u"");
        const auto sheet = book->sheet(0);
        const Range range{0, 0, rows - 1, kColumns - 1};
        std::vector<cell_type> types;
        for (int column = 0; column < kColumns; ++column)
            types.insert(types.end(), static_cast<std::size_t>(rows), type_of_column(column));
        measure("written", range, [&] { write_cells(*sheet, range, types); });
        measure("read", range, [&] { read_cells(*sheet, range); });
    } catch (const Exception& failure) {
        std::fprintf(stderr, "%s\n", failure_of(failure).cause.c_str());
        return 1;
    }
    return 0;
}
