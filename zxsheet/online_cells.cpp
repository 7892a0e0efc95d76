// SPDX-License-Identifier: Apache-2.0
#include "zxsheet/online_cells.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "foundation/unicode.h"
#include "spreadsheet/online.h"
#include "zxsheet/command_error.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;
namespace unicode = foundation::unicode;

/// The library refuses more rows in one reply.
constexpr std::int64_t kMaxRowsPerRequest = 500'001;
/// A reply has some hundred bytes for each cell.
constexpr std::int64_t kMaxCellsPerRequest = 2'000'000;

/// A1 text, given the used range that closes open ends off; nullopt for anything else.
std::optional<Range> parse(const std::u16string& text, const Range& used, range_type& type) {
    try {
        return parse_range(text.data(), text.size(), book::format::GSHEET, used, false, &type,
                           nullptr);
    } catch (const Exception&) {
        return {}; // a defined name, or wrong
    }
}

CommandError no_such_range(const std::string& text, const Selection& selection,
                           const BookLocation& location) {
    return {ExitCode::NotFound, location.text() + ": There is no range '" + text + "' on sheet '" +
                                    unicode::to_utf8(selection.sheet_name) + "' and no name '" +
                                    text + "' in the spreadsheet."};
}

bool contains(const Range& outer, const Range& inner) {
    return inner.count() > 0 && outer.first_row <= inner.first_row &&
           outer.first_column <= inner.first_column && outer.last_row >= inner.last_row &&
           outer.last_column >= inner.last_column;
}

} // namespace

Range range_in_grid(const Selection& selection, const Range& range) {
    const OnlineSheet* const online = online_sheet(selection.sheet);
    const OnlineSheet::Grid grid = online != nullptr ? online->grid() : OnlineSheet::Grid{};
    if (grid.rows <= 0 || grid.columns <= 0) return range;
    return {range.first_row, range.first_column,
            static_cast<int>(std::min<std::int64_t>(range.last_row, grid.rows - 1)),
            static_cast<int>(std::min<std::int64_t>(range.last_column, grid.columns - 1))};
}

Range used_online_range(const Selection& selection) {
    return online_book(selection.book)->used_ranges({selection.sheet_index}).front();
}

Range find_online_range(const std::string& text, Selection& selection,
                        const BookLocation& location) {
    const std::u16string units = unicode::to_utf16(text);
    range_type type{};
    const auto range = parse(units, {0, 0, -1, -1}, type);
    const bool is_open = type == range_type::column_only || type == range_type::row_only;
    if (range && !is_open) return *range;
    if (range) return parse(units, used_online_range(selection), type).value_or(*range);
    const auto named = online_book(selection.book)->find_name(units);
    if (!named) throw no_such_range(text, selection, location);
    selection.sheet_index = named->sheet_index;
    selection.sheet = selection.book->sheet(named->sheet_index);
    selection.sheet_name = sheet_name(*selection.book, named->sheet_index);
    if (!selection.sheet) throw Exception(error_id::sheet_not_opened);
    return named->range;
}

void check_in_grid(const Selection& selection, const BookLocation& location) {
    const Range inside = range_in_grid(selection, selection.range);
    if (selection.range.count() <= 0 || inside == selection.range) return;
    if (inside.first_row <= inside.last_row && inside.first_column <= inside.last_column) return;
    const OnlineSheet::Grid grid = online_sheet(selection.sheet)->grid();
    throw CommandError(ExitCode::NotFound,
                       location.text() + ": " + place_text(selection.sheet_name, selection.range) +
                           " is outside the sheet, which has " +
                           counted(static_cast<std::uint64_t>(grid.rows), "row") + " and " +
                           counted(static_cast<std::uint64_t>(grid.columns), "column") + ".");
}

void learn_used_ranges(const std::shared_ptr<IBook>& book) {
    OnlineBook* const online = online_book(book);
    if (online == nullptr) return;
    std::vector<std::size_t> indices(book->num_sheets());
    std::iota(indices.begin(), indices.end(), std::size_t{0});
    online->used_ranges(indices);
}

void fetch_ahead(const Selection& selection, int row) {
    if (online_sheet(selection.sheet) == nullptr) return;
    Selection rest = selection;
    rest.range = selection.sheet->used_range();
    rest.range.first_row = std::max(row, rest.range.first_row);
    const bool is_there = selection.fetched && row >= selection.fetched->range.first_row &&
                          row <= selection.fetched->range.last_row;
    if (is_there || rest.range.count() <= 0) return;
    fetch_block(rest, online_row_blocks(rest).front());
    selection.fetched = rest.fetched;
}

std::vector<RowBlock> online_row_blocks(const Selection& selection) {
    const Range& whole = selection.range;
    const Range inside = range_in_grid(selection, whole);
    const std::int64_t columns = std::max(1, inside.last_column - inside.first_column + 1);
    const std::int64_t rows =
        std::clamp<std::int64_t>(kMaxCellsPerRequest / columns, 1, kMaxRowsPerRequest);
    std::vector<RowBlock> blocks;
    for (std::int64_t row = whole.first_row; row <= whole.last_row; row += rows)
        blocks.push_back({static_cast<int>(row), static_cast<int>(std::min<std::int64_t>(
                                                     whole.last_row, row + rows - 1))});
    return blocks;
}

const FetchedCells& fetch_block(const Selection& selection, const RowBlock& block) {
    const Range& whole = selection.range;
    const Range wanted = range_in_grid(
        selection, {block.first_row, whole.first_column, block.last_row, whole.last_column});
    if (!selection.fetched) selection.fetched = std::make_shared<FetchedCells>();
    FetchedCells& fetched = *selection.fetched;
    if (fetched.range == wanted || contains(fetched.range, wanted)) return fetched;
    fetched = {}; // also while the next cells come: both would be a lot
    const bool is_empty =
        wanted.last_row < wanted.first_row || wanted.last_column < wanted.first_column;
    if (!is_empty) fetched.types = selection.sheet->cell_types(wanted);
    fetched.range = wanted;
    return fetched;
}

} // namespace zxsheet
