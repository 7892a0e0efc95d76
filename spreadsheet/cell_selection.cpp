// SPDX-License-Identifier: Apache-2.0
//
// Selections of cells out of the host's one-based numbers, checked against the limits of a format.
#include <cstdint>
#include <unordered_set>
#include <utility>

#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/row_blocks.h"

namespace spreadsheet {
namespace {

/// Cuts off the fraction. Numbers far beyond every limit stay far beyond it, and what is no number
/// becomes a negative one, so that the checks below see them as out of bounds.
std::int64_t truncated(double value) {
    constexpr double kFar = 1e15;
    if (!(value >= -kFar)) return -static_cast<std::int64_t>(kFar);
    return static_cast<std::int64_t>(value > kFar ? kFar : value);
}

struct Block {
    std::int64_t first;
    std::int64_t last;
};

void check_block(const Block& block, const std::vector<int>& before, book::format fmt) {
    if (block.first > block.last) throw Exception(error_id::iterator_rows_empty);
    if (block.first < 0 || block.last > book::get_row_limit(fmt))
        throw Exception(error_id::iterator_out_of_bounds);
    if (!before.empty() && block.first <= before.back())
        throw Exception(error_id::iterator_rows_overlap);
}

/// Pairs (first row, last row) out of first rows and row counts.
std::vector<int> make_row_blocks(const double* rows, std::size_t n_rows, book::format fmt) {
    if (n_rows % 2 != 0) throw Exception(error_id::iterator_rows_odd);
    const std::size_t n_blocks = n_rows / 2;
    std::vector<int> row_blocks;
    row_blocks.reserve(n_rows);
    for (std::size_t i = 0; i < n_blocks; ++i) {
        const std::int64_t first = truncated(rows[i]) - 1;
        const Block block{first, first - 1 + truncated(rows[n_blocks + i])};
        check_block(block, row_blocks, fmt);
        row_blocks.push_back(static_cast<int>(block.first));
        row_blocks.push_back(static_cast<int>(block.last));
    }
    return row_blocks;
}

std::vector<int> make_columns(const double* cols, std::size_t n_cols, book::format fmt) {
    std::vector<int> columns;
    std::unordered_set<int> seen;
    columns.reserve(n_cols);
    for (std::size_t i = 0; i < n_cols; ++i) {
        const std::int64_t column = truncated(cols[i]) - 1;
        if (column < 0 || column > book::get_col_limit(fmt))
            throw Exception(error_id::iterator_out_of_bounds);
        columns.push_back(static_cast<int>(column));
        seen.insert(columns.back());
    }
    if (seen.size() != columns.size()) throw Exception(error_id::iterator_columns_repeat);
    return columns;
}

const double* doubles_of(const foundation::HostArray* array) {
    if (array == nullptr || array->host_class() != foundation::HostClass::Double ||
        array->storage() != foundation::HostStorage::Plain)
        throw Exception(error_id::internal, "Rows and columns must be plain arrays of doubles.");
    return array->doubles();
}

const cell_type* types_of(const foundation::HostArray* array) {
    if (array == nullptr || array->host_class() != foundation::HostClass::Uint8 ||
        array->storage() != foundation::HostStorage::Plain)
        throw Exception(error_id::internal,
                        "Cell types must be a plain array of unsigned 8-bit integers.");
    return reinterpret_cast<const cell_type*>(array->uint8s());
}

} // namespace

CellIterator create_cell_iterator(const double* rows, std::size_t n_rows, const double* cols,
                                  std::size_t n_cols, const book::format& fmt) {
    const std::vector<int> row_blocks = make_row_blocks(rows, n_rows, fmt);
    return CellIterator(row_blocks, make_columns(cols, n_cols, fmt));
}

std::unique_ptr<CellTypeIterator> create_cell_type_iterator(const foundation::HostArray* rows,
                                                            const foundation::HostArray* cols,
                                                            const foundation::HostArray* types,
                                                            const book::format& fmt) {
    const double* row_numbers = doubles_of(rows);
    const double* column_numbers = doubles_of(cols);
    const cell_type* wanted = types_of(types);
    if (types->columns() != cols->size())
        throw Exception(error_id::internal, "Cell types must have one column per column.");
    std::vector<int> columns = make_columns(column_numbers, cols->size(), fmt);
    std::vector<int> row_blocks = make_row_blocks(row_numbers, rows->size(), fmt);
    if (types->rows() != count_rows(row_blocks))
        throw Exception(error_id::internal, "Cell types must have one row per row.");
    return std::make_unique<CellTypeIterator>(std::move(row_blocks), std::move(columns), wanted,
                                              types->size());
}

} // namespace spreadsheet
