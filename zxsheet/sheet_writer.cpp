// SPDX-License-Identifier: Apache-2.0
//
// A block is written in pieces of rows that are about equally long: a rectangle around a short and
// a very long row would be nearly all empty.
#include "zxsheet/sheet_writer.h"

#include <algorithm>

#include "foundation/unicode.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/command_error.h"
#include "zxsheet/library_error.h"
#include "zxsheet/online_cells.h"
#include "zxsheet/online_writer.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;

/// As many as the processor's cache holds.
constexpr std::size_t kCellsPerBlock = 1 << 13;
/// A request to the service may be larger, but is slow then, and repeated as a whole.
constexpr std::size_t kBytesPerRequest = 10'000'000;
constexpr std::size_t kMaxTextUnits = 32'767;
constexpr std::size_t kMaxOnlineTextUnits = 50'000;

/// Serial number of the first day that a book can show whose dates count from 1904.
constexpr double kFirstDay1904 = 1462;

/// Rows of a block are one piece as long as at most half of its rectangle lacks a cell.
constexpr std::int64_t kMaxWaste = 2;
constexpr std::int64_t kFreeWaste = 256;

bool has_value(const CellValue& cell) {
    return written_type(cell) != cell_type::text || !cell.text.empty();
}

bool is_too_long(const std::string& text, std::size_t max_units) {
    return text.size() > max_units && foundation::unicode::to_utf16(text).size() > max_units;
}

} // namespace

SheetWriter::SheetWriter(const WriteOptions& options, ChangeTools& tools)
    : options_(options),
      tools_(tools),
      last_column_(static_cast<std::size_t>(book::get_col_limit(options.book.format()))),
      max_text_units_(options.book.is_online() ? kMaxOnlineTextUnits : kMaxTextUnits) {}

void SheetWriter::set_place(const DataPlace& place) {
    place_ = place;
    open();
}

void SheetWriter::add(const CellValue& cell) {
    const std::size_t column = count_ - open_row_begin_;
    if (column > last_column_) fail(next_row(), "has more columns than a sheet");
    if (is_too_long(cell.text, max_text_units_))
        fail(next_row(), "has text of more than the " + grouped(max_text_units_) +
                             " characters that a cell holds");
    if (count_ == cells_.size()) cells_.emplace_back();
    CellValue& added = cells_[count_++];
    added.type = cell.type;
    added.number = cell.number;
    // Other cells need no text; a date may become one.
    if (written_type(cell) == cell_type::text || cell.type == cell_type::date)
        added.text = cell.text;
    // A cell without a value has no text.
    if (cell.type == cell_type::empty || cell.type == cell_type::other) added.text.clear();
    if (cell.type == cell_type::date && dates_1904_ && cell.number < kFirstDay1904) {
        added.type = cell_type::text;
        if (added.text.empty()) added.text = date_text(cell.number);
    }
    if (options_.book.is_online()) request_bytes_ += request_bytes(added, is_below_date(column));
    if (has_value(added)) ++values_;
}

void SheetWriter::end_row() {
    if (skipped_ < options_.skip.value_or(0)) {
        ++skipped_;
        for (; count_ > open_row_begin_; --count_)
            if (has_value(cells_[count_ - 1])) --values_;
        request_bytes_ = 0;
        return;
    }
    row_ends_.push_back(count_);
    open_row_begin_ = count_;
    if (is_block_full()) flush();
}

bool SheetWriter::is_block_full() const {
    constexpr std::size_t kRowBytes = 14; // {"values":[]},
    if (online_ != nullptr)
        return request_bytes_ + row_ends_.size() * kRowBytes >= kBytesPerRequest;
    return std::max(count_, row_ends_.size()) >= kCellsPerBlock;
}

void SheetWriter::finish() {
    flush();
    if (!failure_) {
        try {
            empty_rest();
            if (options_.replace) clear_rest();
        } catch (const std::exception&) {
            if (online_ == nullptr || rows_ == 0) throw;
            failure_ = std::current_exception();
        }
    }
    if (!failure_) return;
    if (rows_ == 0) std::rethrow_exception(failure_);
    report_partial_write();
}

void SheetWriter::report_partial_write() const {
    const CommandError cause = as_command_error(failure_, options_);
    const auto rows = static_cast<std::uint64_t>(rows_);
    std::string sentence = cause.what();
    if (!sentence.ends_with('.')) sentence += '.';
    if (rows_to_go_ == 0)
        throw CommandError(cause.code(),
                           sentence + " All " + counted(rows, "row") +
                               " were written, but cells beside the shorter ones kept their "
                               "values; run the command again.");
    Range next = written();
    next.first_row = next.last_row + 1;
    next = {next.first_row, next.first_column, next.first_row, next.first_column};
    throw CommandError(cause.code(), sentence + " Rows " + grouped(skipped_ + 1) + " to " +
                                         grouped(skipped_ + rows) +
                                         " of the data were written to " +
                                         place_text(target_.cells.sheet_name, written()) + ", " +
                                         grouped(rows_to_go_) + " to go; run again with -r " +
                                         foundation::unicode::to_utf8(range_string(next)) +
                                         " --skip " + std::to_string(skipped_ + rows) + ".");
}

Range SheetWriter::written() const {
    const Range& room = target_.cells.range;
    return {room.first_row, room.first_column, room.first_row + rows_ - 1,
            room.first_column + columns_ - 1};
}

void SheetWriter::open() {
    if (target_.cells.book) return;
    tools_.progress.set_text("Opening " + options_.book.text());
    target_ = open_write_target(options_, place_);
    online_ = online_sheet(target_.cells.sheet);
    // Online, what is there is replaced, wherever it is.
    if (online_ == nullptr)
        used_before_ = target_.cells.sheet->used_range();
    else if (options_.replace)
        used_before_ = used_online_range(target_.cells);
    dates_1904_ = target_.cells.book->are_dates_1904();
    tools_.progress.set_text("Writing " + options_.book.text());
}

void SheetWriter::flush() {
    open();
    online_ != nullptr ? flush_online() : flush_files();
    count_ = 0;
    open_row_begin_ = 0;
    request_bytes_ = 0;
    row_ends_.clear();
    tools_.progress.set_text("Writing " + options_.book.text() + ", " +
                             counted(static_cast<std::uint64_t>(rows_), "row"));
}

void SheetWriter::flush_files() {
    for (std::size_t row = 0; row < row_ends_.size();) {
        const int rows = rows_of_piece(row);
        write_piece(row, rows);
        row += static_cast<std::size_t>(rows);
    }
}

void SheetWriter::flush_online() {
    int columns = 0;
    for (std::size_t row = 0; row < row_ends_.size(); ++row)
        columns = std::max(columns, columns_of(row));
    if (failure_) {
        rows_to_go_ += row_ends_.size();
        return;
    }
    try {
        check_room(static_cast<int>(row_ends_.size()), columns);
        if (static_cast<std::int64_t>(row_ends_.size()) * columns > kMaxGoogleCells)
            throw Exception(error_id::google_range_too_large);
        if (columns > 0) write_online_block(columns);
    } catch (const std::exception&) {
        failure_ = std::current_exception();
        rows_to_go_ = row_ends_.size();
        return;
    }
    const int rows = static_cast<int>(row_ends_.size());
    if (rows > 0) note_piece(target_.cells.range.first_row + rows_, rows, columns);
}

/// The rows that were collected as one rectangle; rows that are shorter empty what is beside them.
void SheetWriter::write_online_block(int columns) {
    const Range& room = target_.cells.range;
    const int first_row = room.first_row + rows_;
    OnlineBlock block;
    block.range = {first_row, room.first_column, first_row + static_cast<int>(row_ends_.size()) - 1,
                   room.first_column + columns - 1};
    block.rows.resize(row_ends_.size());
    for (std::size_t row = 0; row < row_ends_.size(); ++row)
        for (std::size_t i = row_begin(row); i < row_ends_[row]; ++i)
            block.rows[row].push_back(has_value(cells_[i]) ? &cells_[i] : nullptr);
    check_unlocked(target_.cells.sheet, block.range, options_.book);
    write_online(*online_, block, keeps_formats());
}

bool SheetWriter::is_below_date(std::size_t column) const {
    if (row_ends_.empty()) return false;
    const std::size_t above = row_begin(row_ends_.size() - 1) + column;
    return above < row_ends_.back() && cells_[above].type == cell_type::date;
}

std::size_t SheetWriter::row_begin(std::size_t row) const {
    return row == 0 ? 0 : row_ends_[row - 1];
}

int SheetWriter::columns_of(std::size_t row) const {
    return static_cast<int>(row_ends_[row] - row_begin(row));
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
    const Range& room = target_.cells.range;
    const int row = room.first_row + rows_;
    if (columns > 0)
        write_range({row, room.first_column, row + rows - 1, room.first_column + columns - 1},
                    first);
    note_piece(row, rows, columns);
}

void SheetWriter::note_piece(int row, int rows, int columns) {
    if (pieces_.empty() || pieces_.back().columns != columns)
        pieces_.push_back({row, rows, columns});
    else
        pieces_.back().rows += rows;
    rows_ += rows;
    columns_ = std::max(columns_, columns);
}

void SheetWriter::check_room(int rows, int columns) const {
    const Range& room = target_.cells.range;
    const int most_rows = room.last_row - room.first_row + 1;
    const int most_columns = room.last_column - room.first_column + 1;
    if (rows <= most_rows - rows_ && columns <= most_columns) return;
    const bool are_rows = rows > most_rows - rows_;
    throw CommandError(ExitCode::NotWritten,
                       options_.book.text() + ": The data does not fit: there is room for " +
                           (are_rows
                                ? counted(static_cast<std::uint64_t>(most_rows), "row")
                                : counted(static_cast<std::uint64_t>(most_columns), "column")) +
                           " in " + place_text(target_.cells.sheet_name, room) + '.');
}

void SheetWriter::write_range(const Range& range, std::size_t first_row) {
    CellPatch patch(range);
    const auto rows = static_cast<std::size_t>(range.last_row - range.first_row) + 1;
    for (std::size_t row = 0; row < rows; ++row) {
        const std::size_t begin = row_begin(first_row + row);
        const std::size_t end = row_ends_[first_row + row];
        for (std::size_t i = begin; i < end; ++i)
            if (has_value(cells_[i])) patch.set(row, i - begin, cells_[i]);
    }
    write_patch(patch, range);
}

void SheetWriter::write_patch(CellPatch& patch, const Range& range) {
    check_unlocked(target_.cells.sheet, range, options_.book);
    patch.write(*target_.cells.sheet, used_before_, keeps_formats());
    check_done(target_.cells.book, options_);
}

void SheetWriter::empty_rest() {
    for (const Piece& piece : pieces_) {
        const int first_column = target_.cells.range.first_column;
        if (online_ != nullptr) {
            if (piece.columns == columns_) continue;
            OnlineBlock block;
            block.range = {piece.first_row, first_column + piece.columns,
                           piece.first_row + piece.rows - 1, first_column + columns_ - 1};
            block.rows.resize(static_cast<std::size_t>(piece.rows));
            check_unlocked(target_.cells.sheet, block.range, options_.book);
            write_online(*online_, block, keeps_formats());
            continue;
        }
        const Range& used = used_before_;
        const Range rest{std::max(piece.first_row, used.first_row),
                         std::max(first_column + piece.columns, used.first_column),
                         std::min(piece.first_row + piece.rows - 1, used.last_row),
                         std::min(first_column + columns_ - 1, used.last_column)};
        if (rest.first_column <= rest.last_column) empty_range(rest);
    }
}

void SheetWriter::empty_range(const Range& range) {
    const int columns = range.last_column - range.first_column + 1;
    const int step = std::max(1, static_cast<int>(kCellsPerBlock) / columns);
    for (int row = range.first_row; row <= range.last_row; row += step) {
        const Range band{row, range.first_column, std::min(range.last_row, row + step - 1),
                         range.last_column};
        CellPatch nothing(band);
        write_patch(nothing, band);
    }
}

void SheetWriter::clear_rest() {
    const Range& used = used_before_;
    const Range data = written();
    if (used.count() <= 0) return;
    const int below = data.count() > 0 ? data.last_row + 1 : used.first_row;
    const Range rests[] = {
        {used.first_row, used.first_column, std::min(data.first_row - 1, used.last_row),
         used.last_column},
        {std::max(used.first_row, below), used.first_column, used.last_row, used.last_column},
        {data.first_row, used.first_column, data.last_row, data.first_column - 1},
        {data.first_row, std::max(used.first_column, data.last_column + 1), data.last_row,
         used.last_column}};
    for (const Range& rest : rests) {
        if (rest.first_row > rest.last_row || rest.first_column > rest.last_column) continue;
        check_unlocked(target_.cells.sheet, rest, options_.book);
        target_.cells.sheet->clear(rest);
    }
}

bool SheetWriter::keeps_formats() const {
    return !options_.plain && !target_.is_new_sheet;
}

std::size_t SheetWriter::next_row() const {
    return skipped_ + static_cast<std::size_t>(rows_) + row_ends_.size() + 1;
}

void SheetWriter::fail(std::size_t row_number, const std::string& what) const {
    throw CommandError(ExitCode::NotWritten, options_.book.text() + ": Row " + grouped(row_number) +
                                                 " of the data " + what + '.');
}

} // namespace zxsheet
