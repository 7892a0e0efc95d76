// SPDX-License-Identifier: Apache-2.0
//
// Number formats and cell formats of a book: FORMAT and XF records (MS-XLS 2.4.126, 2.4.353).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "workbook/cells/cell_formats.h"
#include "workbook/xls/biff_version.h"
#include "workbook/xls/reading/record_strings.h"

namespace workbook {

struct NumberFormat {
    std::uint32_t identifier;
    std::string code; ///< UTF-8
};

class FormatRecords {
  public:
    explicit FormatRecords(BiffVersion version) : version_(version) {}

    /// Consumes `records.record()` when it is about formats; false for any other record. Throws
    /// `Error`.
    bool read(RecordStream& records, RecordStrings& strings);

    /// What follows is another sheet of a BIFF4 workbook, which may have formats of its own,
    /// counted from 0 again.
    void begin_sheet();
    /// What cells of this sheet add to their format's index.
    std::uint32_t first_format() const {
        return formats_.size() > sheet_formats_ ? static_cast<std::uint32_t>(sheet_formats_) : 0;
    }

    /// At the end: formats that BIFF2 cells without XF records have (see `biff2_format`).
    void finish();

    const std::vector<NumberFormat>& number_formats() const { return number_formats_; }
    /// By the index that cells have.
    const std::vector<CellFormat>& cell_formats() const { return formats_; }
    /// Whether cells of BIFF2 have the index of an XF record.
    bool has_xf_records() const { return has_xf_records_; }

  private:
    void read_number_format(RecordStream& records, RecordStrings& strings);
    void read_cell_format(const Record& record);

    const BiffVersion version_;
    std::vector<NumberFormat> number_formats_;
    std::vector<CellFormat> formats_;
    std::size_t sheet_number_formats_ = 0; ///< number formats before those of the sheet
    std::size_t sheet_formats_ = 0;
    bool has_xf_records_ = false;
};

/// The format of a BIFF2 cell in a book without XF records, by the first two of its attribute
/// bytes.
constexpr std::uint32_t biff2_format(std::uint8_t first, std::uint8_t second) {
    return (first & 0x40u) | (second & 0x3Fu);
}

} // namespace workbook
