// SPDX-License-Identifier: Apache-2.0
//
// A block is written in pieces of rows that are about equally long: a rectangle around a short and
// a very long row would be nearly all empty.
#include "zxsheet/sheet_writer.h"

#include <algorithm>

#include "foundation/unicode.h"
#include "zxsheet/book_access.h"
#include "zxsheet/failure.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;

constexpr std::size_t kCellsPerBlock = 1 << 16;
constexpr std::size_t kMaxTextUnits = 32'767;

/// Rows of a block are one piece as long as at most half of its rectangle lacks a cell.
constexpr std::int64_t kMaxWaste = 2;
constexpr std::int64_t kFreeWaste = 256;

/// The cells of a range, column after column; null where a row has ended.
struct Supply {
    std::vector<const CellValue*> cells;
    std::size_t next = 0;

    const CellValue* take() { return cells[next++]; }
};

const CellValue& taken(void* context) {
    return *static_cast<Supply*>(context)->take();
}

std::u16string supply_text(void* context) {
    const CellValue* cell = static_cast<Supply*>(context)->take();
    return cell == nullptr ? std::u16string() : foundation::unicode::to_utf16(cell->text);
}
double supply_number(void* context) {
    return taken(context).number;
}
SerialDatenum supply_date(void* context) {
    return {taken(context).number};
}
bool supply_boolean(void* context) {
    return taken(context).number != 0.0;
}
void supply_nothing(void* context) {
    static_cast<Supply*>(context)->take();
}

/// The type to write a cell as. An empty text leaves a cell empty; errors cannot be written.
cell_type written_type(const CellValue* cell) {
    if (cell == nullptr) return cell_type::text;
    const bool has_value = cell->type == cell_type::number || cell->type == cell_type::date ||
                           cell->type == cell_type::boolean;
    return has_value ? cell->type : cell_type::text;
}

bool is_too_long(const std::string& text) {
    return text.size() > kMaxTextUnits &&
           foundation::unicode::to_utf16(text).size() > kMaxTextUnits;
}

Range common_range(const Range& a, const Range& b) {
    return {std::max(a.first_row, b.first_row), std::max(a.first_column, b.first_column),
            std::min(a.last_row, b.last_row), std::min(a.last_column, b.last_column)};
}

bool is_empty(const Range& range) {
    return range.last_row < range.first_row || range.last_column < range.first_column;
}

} // namespace

SheetWriter::SheetWriter(const Options& options, ChangeTools& tools)
    : options_(options), tools_(tools) {}

void SheetWriter::add(const CellValue& cell) {
    const std::size_t column = count_ - row_begin_;
    if (column > static_cast<std::size_t>(book::get_col_limit(format_of(options_))))
        fail(next_row(), "has more columns than a sheet");
    if (is_too_long(cell.text))
        fail(next_row(), "has a text of more than the " + grouped(kMaxTextUnits) +
                             " characters that a cell holds");
    if (count_ == cells_.size()) cells_.emplace_back();
    CellValue& added = cells_[count_++];
    added = cell;
    // Of a cell without a value no text may remain.
    if (cell.type == cell_type::empty || cell.type == cell_type::other) added.text.clear();
    const bool has_value = written_type(&added) != cell_type::text || !added.text.empty();
    if (has_value) ++values_;
}

void SheetWriter::end_row() {
    row_ends_.push_back(count_);
    row_begin_ = count_;
    if (std::max(count_, row_ends_.size()) >= kCellsPerBlock) flush();
}

void SheetWriter::finish() {
    flush();
    empty_rest();
}

Range SheetWriter::written() const {
    const Range& room = target_.room;
    return {room.first_row, room.first_column, room.first_row + rows_ - 1,
            room.first_column + columns_ - 1};
}

void SheetWriter::open() {
    if (target_.book) return;
    tools_.progress.set_text("Opening " + options_.book);
    target_ = open_write_target(options_, place_, tools_);
    used_before_ = target_.sheet->used_range();
    tools_.progress.set_text("Writing " + options_.book);
}

void SheetWriter::flush() {
    open();
    for (std::size_t row = 0; row < row_ends_.size();) {
        const int rows = rows_of_piece(row);
        write_piece(row, rows);
        row += static_cast<std::size_t>(rows);
    }
    count_ = 0;
    row_begin_ = 0;
    row_ends_.clear();
    tools_.progress.set_text("Writing " + options_.book + ", " +
                             counted(static_cast<std::uint64_t>(rows_), "row"));
}

int SheetWriter::columns_of(std::size_t row) const {
    return static_cast<int>(row_ends_[row] - (row == 0 ? 0 : row_ends_[row - 1]));
}

int SheetWriter::rows_of_piece(std::size_t first) const {
    std::int64_t cells = 0;
    std::int64_t rows = 0;
    std::int64_t columns = 0;
    for (std::size_t row = first; row < row_ends_.size(); ++row, ++rows) {
        cells += columns_of(row);
        columns = std::max<std::int64_t>(columns, columns_of(row));
        if (rows > 0 && (rows + 1) * columns > kMaxWaste * cells + kFreeWaste) break;
    }
    return static_cast<int>(rows);
}

void SheetWriter::write_piece(std::size_t first, int rows) {
    int columns = 0;
    for (int i = 0; i < rows; ++i)
        columns = std::max(columns, columns_of(first + static_cast<std::size_t>(i)));
    check_room(rows, columns);
    const Range& room = target_.room;
    const int row = room.first_row + rows_;
    if (columns > 0)
        write_range({row, room.first_column, row + rows - 1, room.first_column + columns - 1},
                    first);
    if (pieces_.empty() || pieces_.back().columns != columns)
        pieces_.push_back({row, rows, columns});
    else
        pieces_.back().rows += rows;
    rows_ += rows;
    columns_ = std::max(columns_, columns);
}

void SheetWriter::check_room(int rows, int columns) const {
    const Range& room = target_.room;
    const int most_rows = room.last_row - room.first_row + 1;
    const int most_columns = room.last_column - room.first_column + 1;
    if (rows <= most_rows - rows_ && columns <= most_columns) return;
    const bool are_rows = rows > most_rows - rows_;
    throw Failure(ExitCode::NotWritten,
                  options_.book + ": The data does not fit: there is room for " +
                      (are_rows ? counted(static_cast<std::uint64_t>(most_rows), "row")
                                : counted(static_cast<std::uint64_t>(most_columns), "column")) +
                      " in " + place_text(target_.sheet_name, room) + '.');
}

void SheetWriter::write_range(const Range& range, std::size_t first_row) {
    const auto rows = static_cast<std::size_t>(range.last_row - range.first_row + 1);
    const auto columns = static_cast<std::size_t>(range.last_column - range.first_column + 1);
    Supply supply;
    std::vector<cell_type> types;
    supply.cells.reserve(rows * columns);
    types.reserve(rows * columns);
    for (std::size_t column = 0; column < columns; ++column)
        for (std::size_t row = first_row; row < first_row + rows; ++row) {
            const std::size_t place = (row == 0 ? 0 : row_ends_[row - 1]) + column;
            supply.cells.push_back(place < row_ends_[row] ? &cells_[place] : nullptr);
            types.push_back(written_type(supply.cells.back()));
        }
    check_unlocked(*target_.sheet, range, options_);
    const CellProvider provider{&supply,     supply_text,    supply_number,
                                supply_date, supply_boolean, supply_nothing};
    tools_.log.forget();
    target_.sheet->write(range, types.data(), provider, options_.keep_format);
    check_log(options_, tools_);
}

void SheetWriter::empty_rest() {
    for (const Piece& piece : pieces_) {
        const int first_column = target_.room.first_column;
        const Range rest{piece.first_row, first_column + piece.columns,
                         piece.first_row + piece.rows - 1, first_column + columns_ - 1};
        const Range affected = common_range(rest, used_before_);
        if (!is_empty(affected)) empty_range(affected);
    }
}

void SheetWriter::empty_range(const Range& range) {
    check_unlocked(*target_.sheet, range, options_);
    if (!options_.keep_format) return target_.sheet->clear(range);
    const int columns = range.last_column - range.first_column + 1;
    const int step = std::max(1, static_cast<int>(kCellsPerBlock) / columns);
    for (int row = range.first_row; row <= range.last_row; row += step) {
        const Range band{row, range.first_column, std::min(range.last_row, row + step - 1),
                         range.last_column};
        const auto count = static_cast<std::size_t>(band.count());
        Supply supply{std::vector<const CellValue*>(count), 0};
        const std::vector<cell_type> types(count, cell_type::text);
        const CellProvider provider{&supply,     supply_text,    supply_number,
                                    supply_date, supply_boolean, supply_nothing};
        target_.sheet->write(band, types.data(), provider, true);
    }
}

std::size_t SheetWriter::next_row() const {
    return static_cast<std::size_t>(rows_) + row_ends_.size() + 1;
}

void SheetWriter::fail(std::size_t row_number, const std::string& what) const {
    throw Failure(ExitCode::NotWritten,
                  options_.book + ": Row " + grouped(row_number) + " of the data " + what + '.');
}

} // namespace zxsheet
