// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/selected_blocks.h"

#include <algorithm>
#include <utility>

#include "spreadsheet/range_walk.h"

namespace spreadsheet {
namespace {

/// The pair (first, last) that holds `value`, as its place among the pairs.
std::size_t find_pair(const std::vector<int>& pairs, int value) {
    // The pairs ascend, so the first bound that is not below the value is one of its pair.
    const auto bound = std::lower_bound(pairs.begin(), pairs.end(), value);
    return static_cast<std::size_t>(bound - pairs.begin()) / 2;
}

/// Appends a value that follows the last pair, or a pair of its own.
void append(std::vector<int>& pairs, int value) {
    if (!pairs.empty() && pairs.back() + 1 == value)
        pairs.back() = value;
    else
        pairs.insert(pairs.end(), {value, value});
}

} // namespace

SelectedBlocks::SelectedBlocks(const CellIterator& cells) {
    // The walk goes through the rows of each column in turn.
    std::vector<int> columns;
    for (const CellIterator::Indices at : cells) {
        if (columns.empty() || columns.back() != at.column) columns.push_back(at.column);
        if (columns.size() == 1) append(row_blocks_, at.row);
    }
    make_ranges(std::move(columns));
}

SelectedBlocks::SelectedBlocks(std::vector<int> row_blocks, std::vector<int> columns)
    : row_blocks_(std::move(row_blocks)) {
    make_ranges(std::move(columns));
}

void SelectedBlocks::make_ranges(std::vector<int> columns) {
    std::sort(columns.begin(), columns.end());
    for (const int column : columns)
        append(column_runs_, column);
    for (std::size_t rows = 0; rows + 1 < row_blocks_.size(); rows += 2)
        for (std::size_t run = 0; run + 1 < column_runs_.size(); run += 2)
            ranges_.push_back({row_blocks_[rows], column_runs_[run], row_blocks_[rows + 1],
                               column_runs_[run + 1]});
}

SelectedBlocks::Place SelectedBlocks::find(int row, int column) const {
    const std::size_t block =
        find_pair(row_blocks_, row) * (column_runs_.size() / 2) + find_pair(column_runs_, column);
    const Range& range = ranges_[block];
    const auto rows = extent(range.first_row, range.last_row);
    return {block, static_cast<std::size_t>(column - range.first_column) * rows +
                       static_cast<std::size_t>(row - range.first_row)};
}

} // namespace spreadsheet
