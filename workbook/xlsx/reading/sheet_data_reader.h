// SPDX-License-Identifier: Apache-2.0
//
// Reads the rows and cells of a worksheet (ECMA-376 part 1, 18.3.1.80 sheetData). Two ways lead to
// a stored cell: plain XML, the form that nearly every producer writes, is taken straight off
// the text window; anything else goes through the scanner. Both may alternate from cell to cell.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "workbook/xlsx/reading/escaped_text.h"
#include "workbook/xlsx/reading/worksheet_reader.h"
#include "workbook/xml/plain_tag.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

class SheetDataReader {
  public:
    /// Everything given must outlive the reader.
    SheetDataReader(XmlScanner& scanner, RowSpan rows, DateBase dates, SheetCells& out)
        : scanner_(scanner),
          window_(scanner.window()),
          tag_(scanner.prefix()),
          rows_(rows),
          date_base_(dates),
          out_(out),
          cells_(out.cells),
          is_scan_(!out.cells.keeps_rows()) {}

    /// Call after the Start of sheetData. Reads to its End and returns true, or stops at the first
    /// row after the wanted ones and returns false. Throws `Error`.
    bool read();

  private:
    enum class CellType { Number, SharedString, FormulaString, InlineString, Boolean, Error, Date };
    struct CellHead {
        CellType type = CellType::Number;
        std::uint32_t format = 0;
    };

    // Rows, either way.
    void open_row(int row);
    void close_row();

    // Plain XML. Each takes what is at `p` and returns the place after it, or null, with
    // nothing stored, when it is not plain or not whole.
    void take_plain_markup();
    const char* take_plain_run(const char* p);
    const char* take_plain_row_end(const char* p);
    const char* take_plain_row_tag(const char* p);
    const char* take_plain_cell(const char* p);
    const char* take_plain_head(const char* p, std::uint32_t& column, CellHead& head);
    const char* take_plain_reference(const char* p, std::uint32_t& column) const;
    const char* take_plain_formula(const char* p) const;
    const char* take_missing_value(const char* p, bool& is_element) const;
    const char* take_plain_value(const char* p, CellType type, StoredCell& cell);
    const char* take_plain_text(const char* p, bool is_item, StoredCell& cell);
    const char* take_plain_inline_text(const char* p, StoredCell& cell);

    // Any XML, through the scanner.
    void read_row_tag();
    void read_cell();
    CellHead read_head();
    void move_to(std::string_view reference);
    void store_value(const CellHead& head, bool has_value, bool has_text, StoredKind without);
    void count_formula(bool has_result) {
        ++out_.formulas;
        if (!has_result) ++out_.formulas_without_result;
    }
    void store_number(StoredCell& cell);
    void store_shared_string(StoredCell& cell);
    void store_text(StoredCell& cell, std::string_view text);
    void store_error(StoredCell& cell, std::string_view text);
    void store_date(StoredCell& cell);
    [[noreturn]] void fail_at_cell(std::string_view what) const;

    XmlScanner& scanner_;
    TextWindow& window_;
    const PlainTag tag_;
    const RowSpan rows_;
    const DateBase date_base_;
    SheetCells& out_;
    CellStore& cells_;
    const bool is_scan_; ///< values are not kept
    bool has_plain_formula_ = false;

    bool in_row_ = false;
    bool skipping_ = false; ///< the cells to come are not wanted
    bool stopped_ = false;
    int row_ = -1; ///< the open row, or the last one
    std::uint32_t next_column_ = 0;
    std::uint64_t row_digits_ = 0; ///< "12\"" for the open row: what ends its cells' references
    std::uint64_t row_digits_mask_ = 0; ///< the bytes of `row_digits_` in use

    CellTextDecoder decoder_;
    std::string value_;       ///< of the cell being read
    std::string inline_text_; ///< its inline string, which counts before a value
    std::vector<std::pair<std::string, std::uint32_t>> error_texts_;
};

} // namespace workbook
