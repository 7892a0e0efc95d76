// SPDX-License-Identifier: Apache-2.0
//
// Cell records (MS-XLS 2.1.7.20.5 CELL, and their forms in BIFF2 to BIFF5) to cells. Callers come
// here for every cell of a book.
#pragma once

#include <array>
#include <cstdint>

#include "workbook/cells/sheet_data.h"
#include "workbook/xls/biff_version.h"
#include "workbook/xls/reading/formula_results.h"
#include "workbook/xls/reading/record_strings.h"

namespace workbook {

/// What cell records of one sheet need to know about their book.
struct CellContext {
    BiffVersion version = BiffVersion::Biff8;
    std::uint32_t first_format = 0; ///< added to the index of every cell's format
    bool has_xf_records = true;     ///< see `FormatRecords`
};

class CellRecords {
  public:
    /// Keeps the cells of `rows` in `cells`. All given must outlive this.
    CellRecords(const CellContext& context, RowSpan rows, RecordStrings& strings,
                SheetCells& cells);

    /// Consumes the record that `records` is at when it is about cells, with the CONTINUE records
    /// that belong to it; false for any other record. Throws `Error`.
    bool read(RecordStream& records);
    /// Once after the last record.
    void finish();

  private:
    struct Place {
        int row;
        std::uint32_t column;
        std::uint32_t format;
    };

    Place place_of(const Record& record) const;
    Place biff2_place_of(const Record& record);
    StoredCell* add(const Place& place, StoredKind kind);
    void keep(StoredCell* cell) {
        if (cell != nullptr) cells_.cells.keep_cell();
    }
    void change_row(int row);

    void add_number(const Place& place, double value);
    void add_text(const Place& place, std::string_view text);
    void add_boolean_or_error(const Place& place, std::uint8_t value, bool is_error);
    void read_several_numbers(const Record& record);
    void read_several_blanks(const Record& record);
    void read_shared_string(const Record& record);
    void read_label(RecordStream& records, const Place& place, std::size_t length_at,
                    LengthField length_field);
    void read_formula(const Record& record);
    void read_formula_string(RecordStream& records, LengthField length_field);
    bool read_biff2(RecordStream& records);
    std::uint64_t error_index(std::uint8_t code);
    std::uint64_t empty_string_index();

    const CellContext context_;
    const RowSpan rows_;
    RecordStrings& strings_;
    SheetCells& cells_;

    int open_row_ = -1;
    bool is_open_row_wanted_ = false;
    StoredCell* formula_ = nullptr;       ///< the last cell, if it waits for its string
    std::uint32_t biff2_next_format_ = 0; ///< what an IXFE record said
    // Indices in the sheet's own strings plus 1; 0 for what no cell has had yet.
    std::array<std::uint32_t, 256> error_index_plus_1_{}; ///< by code
    std::uint32_t empty_index_plus_1_ = 0;
};

} // namespace workbook
