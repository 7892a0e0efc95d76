// SPDX-License-Identifier: Apache-2.0
//
// The library writes rectangles without gaps: rows with the same gaps are cut into such together.
#include "zxsheet/cell_patch.h"

#include <algorithm>

#include "foundation/unicode.h"
#include "zxsheet/cell_grid.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;

/// A value that leaves a cell empty but with its format.
const CellValue kNoValue{cell_type::text, 0.0, {}};

/// The cells of a block, column after column, as the library asks for them.
struct Supply {
    std::vector<const CellValue*> cells;
    std::size_t next = 0;
};

const CellValue& take(void* context) {
    auto& supply = *static_cast<Supply*>(context);
    return *supply.cells[supply.next++];
}

std::u16string supply_text(void* context) {
    return foundation::unicode::to_utf16(take(context).text);
}
double supply_number(void* context) {
    return take(context).number;
}
SerialDatenum supply_date(void* context) {
    return {take(context).number};
}
bool supply_boolean(void* context) {
    return take(context).number != 0.0;
}
void supply_nothing(void* context) {
    take(context);
}

bool is_empty(const Range& range) {
    return range.last_row < range.first_row || range.last_column < range.first_column;
}

std::size_t length(int first, int last) {
    return last < first ? 0 : static_cast<std::size_t>(last - first) + 1;
}

} // namespace

CellPatch::CellPatch(const Range& range)
    : range_(range),
      rows_(length(range.first_row, range.last_row)),
      columns_(length(range.first_column, range.last_column)),
      cells_(rows_ * columns_) {}

void CellPatch::write(ISheet& sheet, const Range& used, bool keep_format) {
    const Range overlap = common_range(range_, used);
    if (!is_empty(overlap)) keep_format ? mark_formatted(sheet, overlap) : sheet.clear(overlap);
    for (std::size_t row = 0; row < rows_;) {
        std::size_t end = row + 1;
        while (end < rows_ && are_alike(row, end))
            ++end;
        write_rows(sheet, row, end, keep_format);
        row = end;
    }
}

/// Cells that are there and get no value must lose the one that they have.
void CellPatch::mark_formatted(const ISheet& sheet, const Range& overlap) {
    const std::vector<cell_type> types = sheet.cell_types(overlap);
    std::size_t i = 0;
    for (int column = overlap.first_column; column <= overlap.last_column; ++column)
        for (int row = overlap.first_row; row <= overlap.last_row; ++row) {
            const auto place = static_cast<std::size_t>(row - range_.first_row) * columns_ +
                               static_cast<std::size_t>(column - range_.first_column);
            if (types[i++] != cell_type::empty && cells_[place] == nullptr)
                cells_[place] = &kNoValue;
        }
}

/// Whether two rows have cells in the same columns.
bool CellPatch::are_alike(std::size_t row, std::size_t other) const {
    const auto begin = cells_.begin() + static_cast<std::ptrdiff_t>(row * columns_);
    const auto other_begin = cells_.begin() + static_cast<std::ptrdiff_t>(other * columns_);
    return std::equal(begin, begin + static_cast<std::ptrdiff_t>(columns_), other_begin,
                      [](const CellValue* a, const CellValue* b) { return !a == !b; });
}

/// Writes rows `first` to `end`, which are alike.
void CellPatch::write_rows(ISheet& sheet, std::size_t first, std::size_t end, bool keep_format) {
    const CellValue* const* const row = cells_.data() + first * columns_;
    for (std::size_t column = 0; column < columns_; ++column) {
        const std::size_t begin = column;
        while (column < columns_ && row[column] != nullptr)
            ++column;
        if (column > begin)
            write_block(sheet,
                        {static_cast<int>(first), static_cast<int>(begin),
                         static_cast<int>(end) - 1, static_cast<int>(column) - 1},
                        keep_format);
    }
}

void CellPatch::write_block(ISheet& sheet, const Range& offsets, bool keep_format) {
    Supply supply;
    std::vector<cell_type> types;
    supply.cells.reserve(static_cast<std::size_t>(offsets.count()));
    types.reserve(static_cast<std::size_t>(offsets.count()));
    for (int column = offsets.first_column; column <= offsets.last_column; ++column)
        for (int row = offsets.first_row; row <= offsets.last_row; ++row) {
            supply.cells.push_back(cells_[static_cast<std::size_t>(row) * columns_ +
                                          static_cast<std::size_t>(column)]);
            types.push_back(written_type(*supply.cells.back()));
        }
    const CellProvider provider{&supply,     supply_text,    supply_number,
                                supply_date, supply_boolean, supply_nothing};
    const Range target{
        range_.first_row + offsets.first_row, range_.first_column + offsets.first_column,
        range_.first_row + offsets.last_row, range_.first_column + offsets.last_column};
    sheet.write(target, types.data(), provider, keep_format);
    if (keep_format) give_date_formats(sheet, target, types, supply.cells);
}

/// A date that was written into a cell without a format for dates gets one.
void CellPatch::give_date_formats(ISheet& sheet, const Range& range,
                                  const std::vector<cell_type>& types,
                                  const std::vector<const CellValue*>& cells) {
    if (std::find(types.begin(), types.end(), cell_type::date) == types.end()) return;
    std::vector<number_style> styles(types.size());
    if (!number_styles(sheet, range, styles.data())) return;
    const auto rows = static_cast<std::size_t>(range.last_row - range.first_row) + 1;
    const auto needs_format = [&](std::size_t i) {
        return types[i] == cell_type::date && styles[i] == number_style::number;
    };
    std::vector<SerialDatenum> dates;
    for (std::size_t i = 0; i < types.size(); ++i) {
        if (!needs_format(i)) continue;
        // Dates below each other at once.
        const std::size_t column_end = (i / rows + 1) * rows;
        const std::size_t first = i;
        dates.clear();
        for (; i < column_end && needs_format(i); ++i)
            dates.push_back({cells[i]->number});
        const int column = range.first_column + static_cast<int>(first / rows);
        const int row = range.first_row + static_cast<int>(first % rows);
        sheet.write({row, column, row + static_cast<int>(dates.size()) - 1, column}, dates.data());
        --i;
    }
}

} // namespace zxsheet
