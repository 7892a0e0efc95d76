// SPDX-License-Identifier: Apache-2.0
//
// Takes rows of cells and writes them to a sheet block by block, so that little data is held.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "spreadsheet/online.h"
#include "zxsheet/cell_patch.h"
#include "zxsheet/cell_sink.h"
#include "zxsheet/write_target.h"

namespace zxsheet {

/// The rows end up as one rectangle as wide as the widest of them; cells that shorter rows lack are
/// empty in it. A sheet online changes with each block: when one fails, the rest of the rows is
/// only counted, and `finish` reports how far the sheet got.
class SheetWriter : public CellSink {
  public:
    SheetWriter(const WriteOptions& options, ChangeTools& tools);

    /// Opens the target; so does the first block of cells.
    void open();
    void set_place(const DataPlace& place) override;
    void add(const CellValue& cell) override;
    void end_row() override;

    /// Writes the remaining rows and empties what rows lack that are shorter than others.
    void finish();

    const WriteTarget& target() const { return target_; }
    /// The rectangle; of no cells when there were no rows.
    spreadsheet::Range written() const;
    /// Cells of it that have a value.
    std::uint64_t values() const { return values_; }

  private:
    /// Rows that were written as one rectangle.
    struct Piece {
        int first_row;
        int rows;
        int columns;
    };

    void flush();
    bool is_block_full() const;
    void flush_files();
    void flush_online();
    void write_online_block(int columns);
    [[noreturn]] void report_partial_write() const;
    void note_piece(int row, int rows, int columns);
    int rows_of_piece(std::size_t first) const;
    void write_piece(std::size_t first, int rows);
    void write_range(const spreadsheet::Range& range, std::size_t first_row);
    void write_patch(CellPatch& patch, const spreadsheet::Range& range);
    void empty_rest();
    void empty_range(const spreadsheet::Range& range);
    /// Removes the cells of the sheet beside the rectangle.
    void clear_rest();
    bool keeps_formats() const;
    std::size_t row_begin(std::size_t row) const;
    /// Whether the cell of the last complete row in that column is a date.
    bool is_below_date(std::size_t column) const;
    int columns_of(std::size_t row) const;
    void check_room(int rows, int columns) const;
    /// The number of the row that is not complete, from 1.
    std::size_t next_row() const;
    [[noreturn]] void fail(std::size_t row_number, const std::string& what) const;

    const WriteOptions& options_;
    ChangeTools& tools_;
    const std::size_t last_column_; ///< that a sheet can have
    const std::size_t max_text_units_;
    DataPlace place_;
    WriteTarget target_; ///< without a book until the first block is written
    spreadsheet::OnlineSheet* online_ = nullptr; ///< the target's sheet, if it is online
    spreadsheet::Range used_before_{0, 0, -1, -1};
    bool dates_1904_ = false;

    std::vector<CellValue> cells_; ///< row after row; those after `count_` are spare
    std::size_t count_ = 0;
    std::vector<std::size_t> row_ends_; ///< in `cells_`
    std::size_t open_row_begin_ = 0;    ///< of the row that is not complete
    std::size_t request_bytes_ = 0;     ///< of the collected cells
    std::size_t skipped_ = 0;           ///< rows that were left out, as the options ask
    std::exception_ptr failure_;        ///< of a block online
    std::uint64_t rows_to_go_ = 0;      ///< counted since

    std::vector<Piece> pieces_;
    int rows_ = 0; ///< written
    int columns_ = 0;
    std::uint64_t values_ = 0;
};

} // namespace zxsheet
