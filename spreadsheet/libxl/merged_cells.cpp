// SPDX-License-Identifier: Apache-2.0
//
// Resolution of merged cells, rule by rule, and the map that finds a cell's region.
#include "spreadsheet/libxl/merged_cells.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "spreadsheet/exception.h"
#include "spreadsheet/range_walk.h"

namespace spreadsheet {
namespace {

constexpr std::uint64_t kFnvOffsetBasis = 0xcbf29ce484222325u;
constexpr std::uint64_t kFnvPrime = 0x100000001b3u;

/// How often the cells to be read may be met in regions. Those of a sound file do not overlap; some
/// producers write one twice.
constexpr std::size_t kMaxVisitsPerCell = 4;

MergeSource no_value() {
    return {MergeSource::kNoValue, MergeSource::kNoValue, MergeOrientation::none};
}

MergeSource omitted(MergeOrientation orientation, Omission by) {
    return {MergeSource::kOmitted, MergeSource::kOmitted, orientation, by};
}

MergeSource first_cell(const Range& region, MergeOrientation orientation) {
    return {region.first_row, region.first_column, orientation};
}

/// Regions of one row or one column, where one rule decides alone.
template <class Rule>
MergeSource resolve_line(const Range& region, Cell cell, Rule rule, MergeOrientation orientation,
                         Omission omission, error_id error) {
    const bool is_first = cell.row == region.first_row && cell.column == region.first_column;
    const bool is_last = cell.row == region.last_row && cell.column == region.last_column;
    switch (rule) {
    case Rule::first:
        return is_first ? first_cell(region, orientation) : no_value();
    case Rule::last:
        return is_last ? first_cell(region, orientation) : no_value();
    case Rule::repeat:
        return first_cell(region, orientation);
    case Rule::error:
        throw Exception(error);
    case Rule::omit:
        return omitted(orientation, omission);
    }
    return no_value();
}

/// Whether a cell of a block carries the block's value. With `first` for both rules no cell does
/// here.
bool block_cell_has_value(const Range& block, Cell cell, const MergeRules& rules) {
    using ColumnRule = MergedCellColumnRule;
    using RowRule = MergedCellRowRule;
    const bool in_column =
        rules.columns == ColumnRule::repeat ||
        (rules.columns == ColumnRule::last && cell.column == block.last_column) ||
        (rules.columns == ColumnRule::first && cell.column == block.first_column);
    const bool first_row_counts = rules.columns != ColumnRule::first;
    const bool in_row =
        rules.rows == RowRule::repeat ||
        (rules.rows == RowRule::first && first_row_counts && cell.row == block.first_row) ||
        (rules.rows == RowRule::last && cell.row == block.last_row);
    return in_column && in_row;
}

MergeSource resolve_block(const Range& block, Cell cell, const MergeRules& rules) {
    using ColumnRule = MergedCellColumnRule;
    using RowRule = MergedCellRowRule;
    if (rules.columns == ColumnRule::error) throw Exception(error_id::merged_columns);
    if (rules.rows == RowRule::error) throw Exception(error_id::merged_rows);
    if (block_cell_has_value(block, cell, rules)) return first_cell(block, MergeOrientation::block);
    if (rules.columns == ColumnRule::omit)
        return omitted(MergeOrientation::block, Omission::column);
    if (rules.rows == RowRule::omit) return omitted(MergeOrientation::block, Omission::row);
    const bool is_first = cell.row == block.first_row && cell.column == block.first_column;
    if (rules.columns == ColumnRule::first && rules.rows == RowRule::first && is_first)
        return first_cell(block, MergeOrientation::none);
    return no_value();
}

} // namespace

MergeSource resolve_merged_cell(const Range& region, Cell cell, const MergeRules& rules) {
    if (region.first_row == region.last_row)
        return resolve_line(region, cell, rules.columns, MergeOrientation::horizontal,
                            Omission::column, error_id::merged_columns);
    if (region.first_column == region.last_column)
        return resolve_line(region, cell, rules.rows, MergeOrientation::vertical, Omission::row,
                            error_id::merged_rows);
    return resolve_block(region, cell, rules);
}

std::size_t MergedCells::CellHash::operator()(const Cell& cell) const noexcept {
    unsigned char bytes[2 * sizeof(int)];
    std::memcpy(bytes, &cell.row, sizeof(int));
    std::memcpy(bytes + sizeof(int), &cell.column, sizeof(int));
    std::uint64_t hash = kFnvOffsetBasis;
    for (const unsigned char byte : bytes)
        hash = (hash ^ byte) * kFnvPrime;
    return static_cast<std::size_t>(hash);
}

MergedCells::MergedCells(std::vector<Range> regions) : regions_(std::move(regions)) {
    std::erase_if(regions_, [](const Range& region) {
        return region.first_row < 0 || region.first_column < 0 ||
               region.last_row < region.first_row || region.last_column < region.first_column;
    });
}

void MergedCells::map_cells(const Range& range) {
    if (regions_.empty() || is_empty(range)) return;
    if (mapped_ && mapped_->first_row <= range.first_row && range.last_row <= mapped_->last_row &&
        mapped_->first_column <= range.first_column && range.last_column <= mapped_->last_column)
        return;
    std::vector<int> columns;
    columns.reserve(extent(range.first_column, range.last_column));
    for (std::int64_t column = range.first_column; column <= range.last_column; ++column)
        columns.push_back(static_cast<int>(column));
    map_cells({range.first_row, range.last_row}, std::move(columns));
    mapped_ = range;
}

void MergedCells::map_cells(const std::vector<int>& row_blocks, std::vector<int> columns) {
    mapped_.reset();
    merge_map_.clear();
    std::sort(columns.begin(), columns.end());
    std::vector<RowBlock> blocks;
    std::size_t cells = 0;
    for (std::size_t i = 0; i + 1 < row_blocks.size(); i += 2) {
        blocks.push_back({row_blocks[i], row_blocks[i + 1]});
        cells += extent(blocks.back().first, blocks.back().last) * columns.size();
    }
    std::size_t visits_left = cells * kMaxVisitsPerCell;
    for (std::size_t index = 0; index < regions_.size(); ++index) {
        if (visits_left == 0 || merge_map_.size() == cells) return;
        map_region(index, blocks, columns, visits_left);
    }
}

void MergedCells::map_region(std::size_t index, const std::vector<RowBlock>& blocks,
                             const std::vector<int>& columns, std::size_t& visits_left) {
    const Range& region = regions_[index];
    const auto first_column = std::lower_bound(columns.begin(), columns.end(), region.first_column);
    const auto end_column = std::upper_bound(first_column, columns.end(), region.last_column);
    auto block = std::partition_point(blocks.begin(), blocks.end(), [&](const RowBlock& candidate) {
        return candidate.last < region.first_row;
    });
    for (; block != blocks.end() && block->first <= region.last_row; ++block) {
        const int first_row = std::max(block->first, region.first_row);
        const int last_row = std::min(block->last, region.last_row);
        for (auto column = first_column; column != end_column; ++column)
            for (std::int64_t row = first_row; row <= last_row; ++row) {
                if (visits_left == 0) return;
                --visits_left;
                merge_map_.try_emplace(Cell{static_cast<int>(row), *column}, index);
            }
    }
}

const Range* MergedCells::region(Cell cell) const {
    if (merge_map_.empty()) return nullptr;
    const auto found = merge_map_.find(cell);
    return found == merge_map_.end() ? nullptr : &regions_[found->second];
}

} // namespace spreadsheet
