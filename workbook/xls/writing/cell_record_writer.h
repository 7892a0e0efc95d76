// SPDX-License-Identifier: Apache-2.0
//
// The records of cells that were written: numbers in the shortest form that keeps them exactly
// (MS-XLS 2.5.217 RkNumber, 2.4.180 Number), strings as references into the shared string table, or
// as byte strings up to BIFF5. Neighbours of one kind share a record.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/cells/cell_store.h"
#include "workbook/xls/biff_version.h"

namespace workbook {

/// Where the added strings of a book are.
struct AddedStrings {
    /// BIFF8: the index of the first one in the shared string table.
    std::uint32_t first_index = 0;
    /// Up to BIFF5: the bytes of one in the book's code page. Throws `Error` when it has a
    /// character that the page lacks.
    std::function<std::string(std::uint64_t index)> bytes;
};

/// The 30-bit form of `value` (MS-XLS 2.5.217); nullopt when it does not have one.
std::optional<std::uint32_t> rk_number(double value);

class CellRecordWriter {
  public:
    /// Appends to `out`; both references must outlive this.
    CellRecordWriter(BiffVersion version, const AddedStrings& strings, std::string& out)
        : version_(version), strings_(strings), out_(out) {}

    /// The row of the cells to come.
    void set_row(int row);
    /// `cell` must be one that was written: a number, boolean, blank or added string. Columns are
    /// ascending within a row.
    void write(const StoredCell& cell);
    /// What was written reaches the stream; needed before anything else is appended there.
    void flush();

  private:
    enum class Run { None, Numbers, Blanks };
    struct Pending {
        std::uint16_t format;
        std::uint32_t number;
    };

    void join_run(Run kind, const StoredCell& cell, std::uint32_t number);
    void begin_cell(std::uint16_t id, std::size_t value_bytes, std::uint32_t column,
                    std::uint16_t format);
    void write_biff2(const StoredCell& cell);
    void write_string(const StoredCell& cell);

    static std::uint16_t format_of(const StoredCell& cell) {
        return static_cast<std::uint16_t>(cell.format);
    }

    const BiffVersion version_;
    const AddedStrings& strings_;
    std::string& out_;
    std::uint16_t row_ = 0;
    Run run_ = Run::None;
    std::uint32_t run_column_ = 0; ///< the run's first
    std::vector<Pending> pending_;
};

} // namespace workbook
