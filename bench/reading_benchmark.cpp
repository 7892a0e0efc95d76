// SPDX-License-Identifier: Apache-2.0
//
// The stages of reading a worksheet, one by one, on parts made in memory. Look at the ratios within
// one run; `bench/compare` times whole processes.
#include <cstring>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "foundation/unicode.h"
#include "workbook/cells/cell_name.h"
#include "workbook/io/byte_source.h"
#include "workbook/xlsx/cell_reference.h"
#include "workbook/xlsx/reading/decimal_number.h"
#include "workbook/xlsx/reading/shared_strings.h"
#include "workbook/xlsx/reading/worksheet_reader.h"
#include "workbook/xlsx/xlsx_limits.h"

namespace {

using namespace workbook;

constexpr int kRows = 20'000;
constexpr int kColumns = 10;

class TextSource : public ByteSource {
  public:
    explicit TextSource(const std::string& text) : text_(text) {}
    std::size_t read(char* buffer, std::size_t capacity) override {
        const std::size_t count = text_.copy(buffer, capacity, used_);
        used_ += count;
        return count;
    }
    const std::string& part_name() const override { return name_; }

  private:
    const std::string& text_;
    std::string name_ = "part";
    std::size_t used_ = 0;
};

// Every tag with `prefix`, every reference in `quote`s.
std::string sheet_of_numbers(const std::string& prefix, char quote) {
    std::mt19937 random(1);
    const std::string open = "<" + prefix, close = "</" + prefix;
    std::string xml = open + "worksheet>" + open + "sheetData>";
    for (int row = 0; row < kRows; ++row) {
        xml += open + "row r=" + quote + std::to_string(row + 1) + quote + ">";
        for (int column = 0; column < kColumns; ++column)
            xml += open + "c r=" + quote + cell_name(row, column) + quote + ">" + open + "v>" +
                   std::to_string(static_cast<double>(random()) / 1000.0) + close + "v>" + close +
                   "c>";
        xml += close + "row>";
    }
    return xml + close + "sheetData>" + close + "worksheet>";
}

void read_sheet(benchmark::State& state, const std::string& xml) {
    for (auto _ : state) {
        TextSource source(xml);
        SheetCells cells(kMaxColumns);
        SheetTail tail;
        read_worksheet(source, {}, DateBase::From1900, cells, tail);
        benchmark::DoNotOptimize(cells.cells.size());
    }
    state.SetItemsProcessed(state.iterations() * kRows * kColumns);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(xml.size()));
}

void plain_worksheet(benchmark::State& state) {
    read_sheet(state, sheet_of_numbers("", '"'));
}
BENCHMARK(plain_worksheet)->Unit(benchmark::kMillisecond);

void prefixed_worksheet(benchmark::State& state) {
    read_sheet(state, sheet_of_numbers("x:", '"'));
}
BENCHMARK(prefixed_worksheet)->Unit(benchmark::kMillisecond);

// Not in the plain form: every cell goes through the scanner.
void scanned_worksheet(benchmark::State& state) {
    read_sheet(state, sheet_of_numbers("", '\''));
}
BENCHMARK(scanned_worksheet)->Unit(benchmark::kMillisecond);

void shared_strings(benchmark::State& state) {
    std::string xml = "<sst>";
    for (int i = 0; i < 100'000; ++i)
        xml += "<si><t>some text, number " + std::to_string(i) + (i % 4 == 0 ? " &amp; more" : "") +
               "</t></si>";
    xml += "</sst>";
    for (auto _ : state) {
        TextSource source(xml);
        StringPool strings;
        read_shared_strings(source, ~std::uint64_t{0}, strings);
        benchmark::DoNotOptimize(strings.size());
    }
    state.SetItemsProcessed(state.iterations() * 100'000);
}
BENCHMARK(shared_strings)->Unit(benchmark::kMillisecond);

void find_cells_by_column(benchmark::State& state) {
    const std::string xml = sheet_of_numbers("", '"');
    TextSource source(xml);
    SheetCells cells(kMaxColumns);
    SheetTail tail;
    read_worksheet(source, {}, DateBase::From1900, cells, tail);
    for (auto _ : state) {
        double sum = 0;
        for (int column = 0; column < kColumns; ++column)
            for (int row = 0; row < kRows; ++row)
                sum += cells.cells.find(row, column)->value.number;
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kRows * kColumns);
}
BENCHMARK(find_cells_by_column)->Unit(benchmark::kMillisecond);

void plain_number(benchmark::State& state, const char* text) {
    const std::string padded = std::string(text) + "<" + std::string(64, '\0');
    const char* const end = padded.data() + std::strlen(text) + 1;
    double value = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(parse_plain_number(padded.data(), end, value));
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK_CAPTURE(plain_number, short_decimal, "123456.78");
BENCHMARK_CAPTURE(plain_number, seventeen_digits, "0.12345678901234567");

void utf16_of(benchmark::State& state, std::string text) {
    std::u16string out;
    for (auto _ : state) {
        foundation::unicode::assign_utf16(out, text);
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK_CAPTURE(utf16_of, ascii, "an ASCII text of 32 characters..");
BENCHMARK_CAPTURE(utf16_of, mixed, "\xC3\xA4hnlich, aber nicht gleich \xE6\xBC\xA2\xE5\xAD\x97");

} // namespace
