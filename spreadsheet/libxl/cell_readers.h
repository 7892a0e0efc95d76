// SPDX-License-Identifier: Apache-2.0
//
// How one cell of the library becomes a type, an element of a destination or of a cell array. A
// typed read chooses its reader once: `cell` delivers one cell to the element `index` of the
// destination, `absent` what a cell that does not exist would deliver.
#pragma once

#include <cstddef>
#include <string>

#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/range.h"
#include "spreadsheet/range_walk.h"
#include "workbook/library.h"

namespace spreadsheet {

/// A time of day without a date, below 1.0, is a number whatever its format.
inline cell_type classify(const workbook::Sheet& sheet, int row, int column) {
    switch (sheet.cell_type(row, column)) {
    case workbook::CellKind::Empty:
        return cell_type::empty;
    case workbook::CellKind::Number:
        return sheet.is_date(row, column) && sheet.read_num(row, column) >= 1.0 ? cell_type::date
                                                                                : cell_type::number;
    case workbook::CellKind::String:
        return cell_type::text;
    case workbook::CellKind::Boolean:
        return cell_type::boolean;
    case workbook::CellKind::Blank:
        return cell_type::other;
    case workbook::CellKind::Error:
        return cell_type::error;
    case workbook::CellKind::StrictDate:
        return cell_type::date;
    }
    return cell_type::error;
}

struct NumberReader {
    static constexpr bool kAnyOrder = true; ///< cells may be delivered in any order
    const workbook::Sheet& sheet;
    double* out;

    void cell(std::size_t index, int row, int column) { out[index] = sheet.read_num(row, column); }
    void absent(std::size_t index) { out[index] = 0.0; }
};

struct DateReader {
    static constexpr bool kAnyOrder = true;
    const workbook::Sheet& sheet;
    SerialDatenum* out;
    double offset;

    void cell(std::size_t index, int row, int column) {
        out[index].value = sheet.read_num(row, column) + offset;
    }
    void absent(std::size_t index) { out[index].value = offset; }
};

/// `Logical` is bool, or unsigned char for logical data kept in bytes.
template <class Logical>
struct LogicalReader {
    static constexpr bool kAnyOrder = true;
    const workbook::Sheet& sheet;
    Logical* out;

    void cell(std::size_t index, int row, int column) {
        out[index] = static_cast<Logical>(sheet.read_bool(row, column));
    }
    void absent(std::size_t index) { out[index] = Logical{}; }
};

/// Delivers every text through one buffer, so that a cell costs no allocation.
struct TextReader {
    static constexpr bool kAnyOrder = false;
    const workbook::Sheet& sheet;
    StringBuilder builder;
    std::u16string text{};

    void cell(std::size_t, int row, int column) {
        text.assign(sheet.read_str(row, column));
        builder.append(builder.context, text);
    }
    void absent(std::size_t) {
        text.clear();
        builder.append(builder.context, text);
    }
};

/// Reads all cells of `range`. The library keeps cells by rows, so rows are walked where the order
/// does not show.
template <class Reader>
void read_range(Reader reader, const Range& range) {
    if (is_empty(range)) return;
    if constexpr (Reader::kAnyOrder) {
        for_each_cell_by_row(range, [&](std::size_t index, int row, int column) {
            reader.cell(index, row, column);
        });
    } else {
        std::size_t index = 0;
        for_each_cell(range, [&](int row, int column) { reader.cell(index++, row, column); });
    }
}

inline NumberReader make_reader(const workbook::Sheet& sheet, double* out, double) {
    return {sheet, out};
}
inline DateReader make_reader(const workbook::Sheet& sheet, SerialDatenum* out, double offset) {
    return {sheet, out, offset};
}
inline LogicalReader<bool> make_reader(const workbook::Sheet& sheet, bool* out, double) {
    return {sheet, out};
}
inline LogicalReader<unsigned char> make_reader(const workbook::Sheet& sheet, unsigned char* out,
                                                double) {
    return {sheet, out};
}
inline TextReader make_reader(const workbook::Sheet& sheet, const StringBuilder& builder, double) {
    return {sheet, builder};
}

/// One cell at a time for `deliver` (spreadsheet/typed_cells.h).
class LibraryCell {
  public:
    LibraryCell(const workbook::Sheet& sheet, double date_offset)
        : sheet_(sheet), date_offset_(date_offset) {}

    LibraryCell& select(int row, int column) {
        row_ = row;
        column_ = column;
        return *this;
    }
    double number() const { return sheet_.read_num(row_, column_); }
    double date() const { return number() + date_offset_; }
    double stored_date() const { return number(); }
    bool boolean() const { return sheet_.read_bool(row_, column_); }
    /// Lives until the next call.
    const std::u16string& text() { return text_.assign(sheet_.read_str(row_, column_)); }

  private:
    const workbook::Sheet& sheet_;
    const double date_offset_;
    int row_ = 0;
    int column_ = 0;
    std::u16string text_;
};

} // namespace spreadsheet
