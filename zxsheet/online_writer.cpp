// SPDX-License-Identifier: Apache-2.0
#include "zxsheet/online_writer.h"

#include "foundation/unicode.h"
#include "zxsheet/cell_patch.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;

/// The cells of a block, column after column, as the library asks for them.
struct Supply {
    std::vector<const CellValue*> cells;
    std::size_t next = 0;

    const CellValue& take() { return *cells[next++]; }
    static Supply& of(void* context) { return *static_cast<Supply*>(context); }
};

} // namespace

std::size_t request_bytes(const CellValue& cell, bool is_below_date) {
    constexpr std::size_t kEmptyCell = 3;   // {},
    constexpr std::size_t kValueCell = 40;  // {"userEnteredValue":{"numberValue":1}},
    constexpr std::size_t kDateFormat = 57; // ,"userEnteredFormat":{"numberFormat":...}
    constexpr std::size_t kDateRun = 250;   // {"repeatCell":{...}}, for dates one below the other
    switch (cell.type) {
    case cell_type::empty:
    case cell_type::other:
        return kEmptyCell;
    case cell_type::date:
        return kValueCell + (is_below_date ? kDateFormat : kDateRun);
    case cell_type::text:
    case cell_type::error:
        return kValueCell + cell.text.size();
    default:
        return kValueCell;
    }
}

void write_online(OnlineSheet& sheet, const OnlineBlock& block, bool keep_formats) {
    const std::size_t columns =
        static_cast<std::size_t>(block.range.last_column - block.range.first_column) + 1;
    Supply supply;
    std::vector<cell_type> types;
    supply.cells.reserve(block.rows.size() * columns);
    types.reserve(block.rows.size() * columns);
    for (std::size_t column = 0; column < columns; ++column)
        for (const auto& row : block.rows) {
            const CellValue* const cell = column < row.size() ? row[column] : nullptr;
            supply.cells.push_back(cell);
            types.push_back(cell != nullptr ? written_type(*cell) : cell_type::empty);
        }
    const CellProvider provider{
        &supply,
        [](void* context) {
            return foundation::unicode::to_utf16(Supply::of(context).take().text);
        },
        [](void* context) { return Supply::of(context).take().number; },
        [](void* context) { return SerialDatenum{Supply::of(context).take().number}; },
        [](void* context) { return Supply::of(context).take().number != 0.0; },
        [](void* context) { ++Supply::of(context).next; }};
    sheet.replace(block.range, types.data(), provider, keep_formats);
}

} // namespace zxsheet
