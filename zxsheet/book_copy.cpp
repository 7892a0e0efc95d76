// SPDX-License-Identifier: Apache-2.0
//
// Blocks of cells, as they are read, go to the writing side one after the other.
#include "zxsheet/book_copy.h"

#include "foundation/unicode.h"
#include "zxsheet/cell_patch.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/command_error.h"
#include "zxsheet/online_cells.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;

void check_limits(const Selection& selection, const IBook& target) {
    const Range& range = selection.range;
    if (range.count() <= 0 || is_valid_range(range.last_row, range.last_column, target.format()))
        return;
    throw CommandError(ExitCode::NotWritten,
                       place_text(selection.sheet_name, range) + " is larger than a sheet of an " +
                           foundation::unicode::to_utf8(book::to_string(target.format())) +
                           " book can be.");
}

} // namespace

void copy_values(const Selection& selection, const IBook& target, ISheet& sheet) {
    check_limits(selection, target);
    std::vector<CellValue> cells;
    for_each_block(selection, [&](const Range& block) {
        fetch_ahead(selection, block.first_row);
        Selection part = selection;
        part.range = block;
        cells.clear();
        for_each_row(part, {}, Content::Values, [&cells](const auto& row) {
            for (const CellValue* cell : row)
                cells.push_back(*cell);
        });
        const auto columns = static_cast<std::size_t>(block.last_column - block.first_column) + 1;
        CellPatch patch(block);
        for (std::size_t i = 0; i < cells.size(); ++i) {
            CellValue& cell = cells[i];
            if (cell.type == cell_type::empty || cell.type == cell_type::other) continue;
            // An elapsed time is a number; as a date it would be one of the year 1900.
            if (is_time(cell)) cell.type = cell_type::number;
            if (cell.type == cell_type::error) cell.text = plain_text(cell);
            patch.set(i / columns, i % columns, cell);
        }
        patch.write(sheet, {0, 0, -1, -1}, false);
    });
}

} // namespace zxsheet
