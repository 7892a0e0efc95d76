// SPDX-License-Identifier: Apache-2.0
//
// Makes a workbook through the public interface, as a host would: create, typed write, save. Meant
// to be timed as a whole process. The cells are those of bench/make_data.py in kind, not in value.
//
//   write_book OUT numbers [ROWS]     20 columns of doubles
//   write_book OUT mixed [ROWS]       12 columns: strings, numbers, dates, booleans
//   write_book OUT sheets [ROWS]      20 sheets of 20 columns of doubles, ROWS rows each
//   write_book BOOK edit              loads the first sheet, writes one cell, saves over it
//
// OUT ends in .xlsx or .xls, which has 65,536 rows at most.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/spreadsheet.h"

namespace {

using namespace spreadsheet;

constexpr int kDefaultRows = 200'000;
constexpr int kXlsRows = 65'536;
constexpr int kBlockRows = 2'000;

/// The example generator of the C standard: the same values in every language's benchmark.
class Random {
  public:
    std::uint32_t next() { return state_ = (state_ * 1103515245u + 12345u) & 0x7FFFFFFFu; }
    /// Without the low bits, which repeat soon.
    std::uint32_t below(std::uint32_t end) { return (next() >> 8) % end; }
    double ratio() {
        const double numerator = next();
        return numerator / (next() + 1.0);
    }
    double hundredths() { return next() % 100'000'000 / 100.0; }

  private:
    std::uint32_t state_ = 1;
};

void fill_numbers(ISheet& sheet, int rows) {
    constexpr int kColumns = 20;
    Random random;
    std::vector<double> values;
    for (int first = 0; first < rows; first += kBlockRows) {
        const int block = std::min(kBlockRows, rows - first);
        values.resize(static_cast<std::size_t>(block) * kColumns);
        for (int row = 0; row < block; ++row)
            for (int column = 0; column < kColumns; ++column)
                values[static_cast<std::size_t>(column * block + row)] =
                    column < kColumns / 2 ? random.ratio() : random.hundredths();
        sheet.write({first, 0, first + block - 1, kColumns - 1}, values.data());
    }
}

std::u16string utf16(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

/// The cells of a block, column after column, as a host would hold them.
struct MixedBlock {
    static constexpr cell_type kTypes[] = {cell_type::text,   cell_type::text,   cell_type::text,
                                           cell_type::number, cell_type::number, cell_type::number,
                                           cell_type::date,   cell_type::date,   cell_type::boolean,
                                           cell_type::number, cell_type::number, cell_type::number};
    static constexpr int kColumns = static_cast<int>(std::size(kTypes));

    MixedBlock(Random& random, int first, int rows)
        : rows_(rows), cells_(static_cast<std::size_t>(rows) * kColumns) {
        for (int row = 0; row < rows; ++row)
            fill_row(random, row, first + row);
    }

    std::vector<cell_type> types() const {
        std::vector<cell_type> types;
        for (const cell_type type : kTypes)
            types.insert(types.end(), static_cast<std::size_t>(rows_), type);
        return types;
    }

    CellProvider provider() {
        const auto next = [](void* context) -> Cell& {
            auto& block = *static_cast<MixedBlock*>(context);
            return block.cells_[block.next_++];
        };
        static constexpr auto take = next;
        return {this,
                [](void* block) { return take(block).text; },
                [](void* block) { return take(block).number; },
                [](void* block) { return SerialDatenum{take(block).number}; },
                [](void* block) { return take(block).number != 0.0; },
                [](void* block) { take(block); }};
    }

  private:
    struct Cell {
        std::u16string text;
        double number = 0.0;
    };

    Cell& at(int row, int column) { return cells_[static_cast<std::size_t>(column * rows_ + row)]; }

    void fill_row(Random& random, int row, int sheet_row) {
        char text[32];
        std::snprintf(text, sizeof text, "item-%08x", random.next());
        at(row, 0).text = utf16(text);
        std::snprintf(text, sizeof text, "region %03u", random.below(1000));
        at(row, 1).text = utf16(text);
        std::snprintf(text, sizeof text, "word %02u", random.below(64));
        at(row, 2).text = utf16(text);
        at(row, 3).number = random.below(1'000'000);
        at(row, 4).number = random.ratio();
        at(row, 5).number = random.hundredths();
        at(row, 6).number = 36526.0 + random.below(9000);
        at(row, 7).number = 36526.0 + random.next() % 777'600'000 / 86400.0;
        at(row, 8).number = random.next() >> 30;
        at(row, 9).number = sheet_row % 2;
        at(row, 10).number = sheet_row;
        at(row, 11).number = at(row, 3).number + at(row, 4).number;
    }

    int rows_;
    std::vector<Cell> cells_;
    std::size_t next_ = 0;
};

void fill_mixed(ISheet& sheet, int rows) {
    Random random;
    for (int first = 0; first < rows; first += kBlockRows) {
        const int count = std::min(kBlockRows, rows - first);
        MixedBlock block(random, first, count);
        sheet.write({first, 0, first + count - 1, MixedBlock::kColumns - 1}, block.types().data(),
                    block.provider(), false);
    }
}

int run(const std::u16string& path, std::string_view what, int rows) {
    const bool is_xls = path.ends_with(u".xls");
    if (is_xls) rows = std::min(rows, kXlsRows);
    if (what == "edit") {
        const auto book = load_book_from_file_with_sheet_index(path, book::format::XLSX,
                                                               book::interactive::file, 0);
        const double value = 1.0;
        book->sheet(0)->write({0, 0, 0, 0}, &value);
        save_book(book, path);
        return 0;
    }
    const std::size_t sheets = what == "sheets" ? 20 : 1;
    const auto book = create_new_book(sheets, is_xls ? book::format::XLS : book::format::XLSX,
                                      book::interactive::file, u"");
    for (std::size_t i = 0; i < sheets; ++i)
        if (what == "mixed")
            fill_mixed(*book->sheet(i), rows);
        else
            fill_numbers(*book->sheet(i), rows);
    save_book(book, path);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: write_book OUT numbers|mixed|sheets|edit [ROWS]\n");
        return 2;
    }
    initialize();
    try {
        const int rows = argc > 3 ? std::atoi(argv[3]) : kDefaultRows;
        const int status = run(utf16(argv[1]), argv[2], rows);
        release();
        return status;
    } catch (const Exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
}
