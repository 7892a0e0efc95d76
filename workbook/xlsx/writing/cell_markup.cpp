// SPDX-License-Identifier: Apache-2.0
//
// Writes tags and values into one buffer.
#include "workbook/xlsx/writing/cell_markup.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/xlsx_limits.h"
#include "workbook/xml/raw_tag.h"

namespace workbook {

namespace {

// Integers of this size and below are exact in a double and in the products below.
constexpr double kExactInteger = 1e15;

char* append_integer(char* out, std::int64_t value) {
    return std::to_chars(out, out + kNumberRoom, value).ptr;
}

// A number of at most four decimals, which most prices and measurements are. When a quotient of an
// integer of 15 digits gives the number back, no other text of 15 digits or fewer does.
char* append_short_decimal(char* out, double value) {
    constexpr std::int64_t kUnit = 10'000;
    const double scaled = value * kUnit;
    if (!(std::abs(scaled) < kExactInteger)) return nullptr;
    std::int64_t digits = std::llrint(scaled);
    if (static_cast<double>(digits) / kUnit != value || digits == 0) return nullptr;
    if (digits < 0) {
        *out++ = '-';
        digits = -digits;
    }
    out = append_integer(out, digits / kUnit);
    std::int64_t decimals = digits % kUnit;
    if (decimals == 0) return out;
    out[0] = '.';
    for (int i = 4; i > 0; --i) {
        out[i] = static_cast<char>('0' + decimals % 10);
        decimals /= 10;
    }
    out += 5;
    while (out[-1] == '0')
        --out;
    return out;
}

} // namespace

char* append_number(char* out, double value) {
    if (std::abs(value) < kExactInteger) {
        const auto integer = static_cast<std::int64_t>(value);
        const bool is_exact = static_cast<double>(integer) == value;
        if (is_exact && (integer != 0 || !std::signbit(value))) return append_integer(out, integer);
        char* const end = is_exact ? nullptr : append_short_decimal(out, value);
        if (end != nullptr) return end;
    }
    return std::to_chars(out, out + kNumberRoom, value).ptr;
}

CellMarkup::CellMarkup(MarkupWriter& out, std::string_view prefix,
                       const std::vector<std::uint32_t>& shared_index_of,
                       const StringPool& formulas)
    : out_(out),
      shared_index_of_(shared_index_of),
      formulas_(formulas),
      prefix_(prefix),
      column_names_(kMaxColumns) {
    for (std::size_t column = 0; column < column_names_.size(); ++column) {
        std::array<char, 3> letters;
        std::size_t count = 0;
        for (std::size_t n = column + 1; n > 0; n = (n - 1) / 26)
            letters[count++] = static_cast<char>('A' + (n - 1) % 26);
        for (std::size_t i = 0; i < count; ++i)
            column_names_[column][i] = letters[count - 1 - i];
        column_names_[column][3] = static_cast<char>(count);
    }
    const std::string p(prefix);
    open_ = Piece("<" + p + "c r=\"");
    value_ = Piece("><" + p + "v>");
    string_ = Piece(" t=\"s\"><" + p + "v>");
    boolean_ = Piece(" t=\"b\"><" + p + "v>");
    close_ = Piece("</" + p + "v></" + p + "c>");
    longest_cell_ = 4 * (kPiece + p.size()) + 3 * kNumberRoom;
    if (longest_cell_ > MarkupWriter::kMaxRoom)
        throw Error::limit("worksheet", "its namespace prefix is too long");
}

char* CellMarkup::put(char* out, const Piece& piece) {
    if (piece.size <= kPiece)
        std::memcpy(out, piece.text.data(), kPiece);
    else
        std::memcpy(out, piece.text.data(), piece.size);
    return out + piece.size;
}

void CellMarkup::set_row(int row) {
    char* const digits = row_digits_.data();
    char* const end = std::to_chars(digits, digits + row_digits_.size() - 1, row + 1).ptr;
    *end = '"';
    row_digits_size_ = static_cast<std::size_t>(end - digits) + 1;
}

void CellMarkup::write(const StoredCell& cell) {
    char* p = put(out_.room(longest_cell_), open_);
    const std::array<char, 4>& name = column_names_[cell.column];
    std::memcpy(p, name.data(), name.size());
    p += name[3];
    std::memcpy(p, row_digits_.data(), row_digits_.size());
    p += row_digits_size_;
    if (cell.format != 0) {
        std::memcpy(p, " s=\"", 4);
        p = append_integer(p + 4, cell.format);
        *p++ = '"';
    }
    if (cell.stored_kind() == StoredKind::Formula) {
        out_.set_end(p);
        append_formula(formulas_[cell.value.text]);
        return;
    }
    out_.set_end(put_value(p, cell));
}

// Without a value element the application computes the cell.
void CellMarkup::append_formula(std::string_view formula) {
    out_.append("><" + prefix_ + "f>");
    out_.append(escaped_xml(formula, false));
    out_.append("</" + prefix_ + "f></" + prefix_ + "c>");
}

// The rest of a cell's tag and what follows it.
char* CellMarkup::put_value(char* p, const StoredCell& cell) const {
    switch (cell.stored_kind()) {
    case StoredKind::Number:
        p = append_number(put(p, value_), cell.value.number);
        break;
    case StoredKind::AddedString:
        p = append_integer(put(p, string_), shared_index_of_[cell.value.text]);
        break;
    case StoredKind::Boolean:
        p = put(p, boolean_);
        *p++ = cell.value.number != 0.0 ? '1' : '0';
        break;
    default:
        std::memcpy(p, "/>", 2);
        return p + 2;
    }
    return put(p, close_);
}

} // namespace workbook
