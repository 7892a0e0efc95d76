// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/cell_cache.h"

#include <limits>

#include "spreadsheet/limits.h"

namespace gsheet {

namespace {

using spreadsheet::cell_type;

constexpr auto kMaxCells = static_cast<std::size_t>(spreadsheet::kMaxGoogleCells);

} // namespace

bool CellCache::holds(const spreadsheet::Range& range) const {
    return is_filled_ && range.first_row >= range_.first_row && range.last_row <= range_.last_row &&
           range.first_column >= range_.first_column && range.last_column <= range_.last_column;
}

CachedCell CellCache::at(int row, int column) const {
    if (row < range_.first_row || column < range_.first_column) return {};
    const std::size_t line = static_cast<std::size_t>(row - range_.first_row);
    if (line >= row_begins_.size()) return {};
    const std::size_t end = line + 1 < row_begins_.size() ? row_begins_[line + 1] : cells_.size();
    const std::size_t index =
        row_begins_[line] + static_cast<std::size_t>(column - range_.first_column);
    return index < end ? cells_[index] : CachedCell();
}

std::string_view CellCache::text(const CachedCell& cell) const {
    if (cell.type() != cell_type::text) return {};
    return std::string_view(texts_).substr(cell.payload_, cell.text_bytes_);
}

void CellCache::begin_row() {
    // One more than there are, so that the cells of rows behind the range are known to be outside.
    if (row_begins_.size() > row_count()) return;
    row_begins_.push_back(static_cast<std::uint32_t>(cells_.size()));
}

std::size_t CellCache::row_count() const {
    return static_cast<std::size_t>(range_.last_row - range_.first_row) + 1;
}

bool CellCache::takes_next() const {
    const std::size_t columns =
        static_cast<std::size_t>(range_.last_column - range_.first_column) + 1;
    return !row_begins_.empty() && row_begins_.size() <= row_count() &&
           cells_.size() - row_begins_.back() < columns;
}

bool CellCache::add(const CachedCell& cell) {
    if (!takes_next()) return true;
    if (cells_.size() >= kMaxCells) return false;
    cells_.push_back(cell);
    return true;
}

bool CellCache::add_text(std::string_view text) {
    if (!takes_next()) return true;
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) return false;
    CachedCell cell(cell_type::text);
    cell.payload_ = texts_.size();
    cell.text_bytes_ = static_cast<std::uint32_t>(text.size());
    texts_.append(text);
    return add(cell);
}

} // namespace gsheet
