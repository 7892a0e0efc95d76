// SPDX-License-Identifier: Apache-2.0
//
// Ranges as matrices of doubles, in either order.
#include <algorithm>
#include <cmath>
#include <limits>

#include "spreadsheet/column_blocks.h"
#include "spreadsheet/table.h"
#include "spreadsheet/table_error.h"

namespace spreadsheet {
namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

/// Cells that are turned from one order into the other at a time, 8 MiB. A sheet online takes a
/// request for each block.
constexpr std::size_t kCellsOfTurnedBlock = 1 << 20;

void check_interrupt(const InterruptCheck& interrupt) {
    if (interrupt.is_interrupted != nullptr && interrupt.is_interrupted(interrupt.context))
        throw table_error(error_id::internal, FailureKind::Unknown,
                          "The operation was interrupted.");
}

/// Reads a block column after column.
void read_block(ISheet& sheet, const Range& block, std::vector<cell_type>& types, double* out) {
    const ISheet& source = sheet;
    const auto count = static_cast<std::size_t>(block.count());
    types.resize(count);
    source.cell_types(block, types.data());
    bool has_dates_or_booleans = false, has_gaps = false;
    for (const cell_type type : types) {
        const bool is_other_value = type == cell_type::date || type == cell_type::boolean;
        has_dates_or_booleans |= is_other_value;
        has_gaps |= type != cell_type::number && !is_other_value;
    }
    if (!has_dates_or_booleans) {
        source.read(block, out);
        for (std::size_t i = 0; has_gaps && i < count; ++i)
            if (types[i] != cell_type::number) out[i] = kNoNumber;
        return;
    }
    double* next = out;
    source.read(
        block, types.data(),
        {&next,
         [](void* to, const std::u16string&) { *(*static_cast<double**>(to))++ = kNoNumber; },
         [](void* to, double value) { *(*static_cast<double**>(to))++ = value; },
         [](void* to, double serial) { *(*static_cast<double**>(to))++ = serial; },
         [](void* to, bool value) { *(*static_cast<double**>(to))++ = value ? 1.0 : 0.0; }});
}

/// Blocks of columns whose values in `out` are one piece.
void read_columns_first(ISheet& sheet, const Range& range, double* out,
                        const InterruptCheck& interrupt) {
    std::vector<cell_type> types;
    for (const Range& block : column_blocks(range)) {
        check_interrupt(interrupt);
        read_block(sheet, block, types, out);
        out += block.count();
    }
}

/// Calls `turn(block, offset of its first row)` for blocks of whole rows.
template <class Turn>
void for_row_blocks(const Range& range, Turn turn) {
    const std::size_t columns = extent(range.first_column, range.last_column);
    const auto rows = static_cast<std::int64_t>(
        std::max<std::size_t>(1, kCellsOfTurnedBlock / std::max<std::size_t>(1, columns)));
    for (std::int64_t row = range.first_row; row <= range.last_row; row += rows) {
        const std::int64_t last = std::min<std::int64_t>(row + rows - 1, range.last_row);
        turn(Range{static_cast<int>(row), range.first_column, static_cast<int>(last),
                   range.last_column},
             static_cast<std::size_t>(row - range.first_row));
    }
}

void read_rows_first(ISheet& sheet, const Range& range, double* out,
                     const InterruptCheck& interrupt) {
    const std::size_t columns = extent(range.first_column, range.last_column);
    std::vector<double> turned;
    std::vector<cell_type> types;
    for_row_blocks(range, [&](const Range& block, std::size_t first) {
        check_interrupt(interrupt);
        turned.resize(static_cast<std::size_t>(block.count()));
        read_block(sheet, block, types, turned.data());
        const std::size_t rows = extent(block.first_row, block.last_row);
        for (std::size_t row = 0; row < rows; ++row)
            for (std::size_t column = 0; column < columns; ++column)
                out[(first + row) * columns + column] = turned[column * rows + row];
    });
}

void check_finite(const Range& range, const double* values, MatrixOrder order) {
    const double* const end = values + range.count();
    const double* const found =
        std::find_if(values, end, [](double value) { return std::isinf(value); });
    if (found == end) return;
    const bool by_columns = order == MatrixOrder::columns_first;
    const auto length =
        static_cast<std::ptrdiff_t>(by_columns ? extent(range.first_row, range.last_row)
                                               : extent(range.first_column, range.last_column));
    const auto line = static_cast<int>((found - values) / length);
    const auto place = static_cast<int>((found - values) % length);
    throw infinite_number(Cell{range.first_row + (by_columns ? place : line),
                               range.first_column + (by_columns ? line : place)});
}

/// A sheet online takes cells with their types alone.
void write_typed(ISheet& sheet, const Range& range, const double* values) {
    std::vector<cell_type> types(static_cast<std::size_t>(range.count()));
    for (std::size_t i = 0; i < types.size(); ++i)
        types[i] = std::isnan(values[i]) ? cell_type::empty : cell_type::number;
    CellProvider provider{};
    provider.context = &values;
    provider.number = [](void* from) { return *(*static_cast<const double**>(from))++; };
    provider.skip = [](void* from) { ++*static_cast<const double**>(from); };
    sheet.write(range, types.data(), provider, false);
}

} // namespace

void read_numbers(ISheet& sheet, Range range, double* out, MatrixOrder order,
                  const InterruptCheck& interrupt) {
    if (is_empty(range)) return;
    if (order == MatrixOrder::columns_first)
        read_columns_first(sheet, range, out, interrupt);
    else
        read_rows_first(sheet, range, out, interrupt);
}

void write_numbers(const std::shared_ptr<IBook>& book, ISheet& sheet, Range range,
                   const double* values, MatrixOrder order) {
    if (is_empty(range)) return;
    if (!is_within_limits(range, book->format())) throw Exception(error_id::range_too_large);
    check_finite(range, values, order);
    const auto write = [&, is_online = book->format() == book::format::GSHEET](
                           const Range& block, const double* columns) {
        if (is_online)
            write_typed(sheet, block, columns);
        else
            sheet.write(block, columns);
    };
    if (order == MatrixOrder::columns_first) return write(range, values);
    const std::size_t columns = extent(range.first_column, range.last_column);
    std::vector<double> turned;
    for_row_blocks(range, [&](const Range& block, std::size_t first) {
        turned.resize(static_cast<std::size_t>(block.count()));
        const std::size_t rows = extent(block.first_row, block.last_row);
        for (std::size_t row = 0; row < rows; ++row)
            for (std::size_t column = 0; column < columns; ++column)
                turned[column * rows + row] = values[(first + row) * columns + column];
        write(block, turned.data());
    });
}

} // namespace spreadsheet
