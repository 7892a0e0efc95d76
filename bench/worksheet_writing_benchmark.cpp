// SPDX-License-Identifier: Apache-2.0
//
// What worksheets cost without their container: cells into the store, mark-up of a new sheet, one
// change in a sheet that stays as it is otherwise. Counters are cells.
#include <cstdint>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "tests/workbook/memory_source.h"
#include "workbook/xlsx/writing/worksheet_rewriter.h"
#include "workbook/xlsx/xlsx_limits.h"

namespace workbook {
namespace {

constexpr int kColumns = 20;

class CountingSink final : public ByteSink {
  public:
    void append(const char*, std::size_t count) override { bytes_ += count; }
    std::size_t bytes() const { return bytes_; }

  private:
    std::size_t bytes_ = 0;
};

class StringSink final : public ByteSink {
  public:
    explicit StringSink(std::string& text) : text_(text) {}
    void append(const char* bytes, std::size_t count) override { text_.append(bytes, count); }

  private:
    std::string& text_;
};

// Half of the columns with all digits, half with two decimals.
double value_of(int row, int column) {
    const auto mixed = static_cast<std::uint32_t>(row * kColumns + column) * 2654435761u >> 1;
    return column % 2 == 0 ? mixed / (mixed % 100003 + 1.0) : mixed % 100000000 / 100.0;
}

void write_cells(CellStore& cells, int rows) {
    cells.expect({0, rows - 1, 0, kColumns - 1});
    for (int column = 0; column < kColumns; ++column)
        for (int row = 0; row < rows; ++row) {
            StoredCell cell{};
            cell.value.number = value_of(row, column);
            cell.column = static_cast<std::uint32_t>(column);
            cells.put(row, cell);
        }
}

void rewrite(const std::string& source, const CellStore& cells, ByteSink& out) {
    SheetChanges changes;
    changes.cells = true;
    rewrite_worksheet([&] { return std::make_unique<test::MemorySource>(source, 64u << 10); },
                      cells, {}, changes, true, out);
}

const std::string kEmptySheet = "<worksheet><sheetData/></worksheet>";

void count_cells(benchmark::State& state, std::int64_t rows) {
    state.SetItemsProcessed(state.iterations() * rows * kColumns);
}

void WriteCellsColumnByColumn(benchmark::State& state) {
    const auto rows = static_cast<int>(state.range(0));
    for (auto _ : state) {
        CellStore cells(kMaxColumns);
        write_cells(cells, rows);
        benchmark::DoNotOptimize(cells.bounds());
    }
    count_cells(state, rows);
}
BENCHMARK(WriteCellsColumnByColumn)->Arg(200'000)->Unit(benchmark::kMillisecond);

void MarkUpNewSheet(benchmark::State& state) {
    const auto rows = static_cast<int>(state.range(0));
    CellStore cells(kMaxColumns);
    write_cells(cells, rows);
    for (auto _ : state) {
        CountingSink sink;
        rewrite(kEmptySheet, cells, sink);
        benchmark::DoNotOptimize(sink.bytes());
    }
    count_cells(state, rows);
}
BENCHMARK(MarkUpNewSheet)->Arg(200'000)->Unit(benchmark::kMillisecond);

// `changed_columns` 0 stands for one cell in the middle.
void RewriteSheet(benchmark::State& state) {
    constexpr int kRows = 10'000;
    CellStore cells(kMaxColumns);
    write_cells(cells, kRows);
    std::string source;
    StringSink source_sink(source);
    rewrite(kEmptySheet, cells, source_sink);
    CellStore changed(kMaxColumns);
    const bool is_one_cell = state.range(0) == 0;
    for (int row = is_one_cell ? kRows / 2 : 0; row < (is_one_cell ? kRows / 2 + 1 : kRows);
         ++row) {
        StoredCell cell{};
        cell.column = 3;
        changed.put(row, cell);
    }
    for (auto _ : state) {
        CountingSink sink;
        rewrite(source, changed, sink);
        benchmark::DoNotOptimize(sink.bytes());
    }
    count_cells(state, kRows);
}
BENCHMARK(RewriteSheet)->ArgName("changed_columns")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace workbook
