// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/range_values.h"

#include <array>
#include <charconv>
#include <limits>
#include <utility>

namespace spreadsheet {
namespace {

using foundation::automation::BlockView;
using foundation::automation::number_in;
using foundation::automation::text_in;
using foundation::automation::Variant;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

void assign_shortest(std::u16string& out, double value) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    out.assign(text.data(), end.ptr);
}

} // namespace

RangeValues::RangeValues(Variant value, const Range& range)
    : value_(std::make_unique<Variant>(std::move(value))) {
    const auto rows = static_cast<std::size_t>(std::int64_t{range.last_row} - range.first_row + 1);
    const auto columns =
        static_cast<std::size_t>(std::int64_t{range.last_column} - range.first_column + 1);
    if ((value_->type() & VT_ARRAY) == 0) {
        if (rows == 1 && columns == 1) cells_ = &value_->get();
        return;
    }
    view_ = std::make_unique<BlockView>(value_->get());
    if (*view_ && view_->rows() == rows && view_->columns() == columns) cells_ = view_->elements();
}

cell_type CellConversion::type_of(const VARIANT& cell) {
    switch (cell.vt) {
    case VT_EMPTY:
        return cell_type::empty;
    case VT_R8:
        return cell_type::number;
    case VT_DATE:
        return cell_type::date;
    case VT_BSTR:
        return cell_type::text;
    case VT_ERROR:
        return cell_type::error;
    case VT_BOOL:
        return cell_type::boolean;
    default:
        return cell_type::other;
    }
}

double CellConversion::offset() {
    if (!offset_) offset_ = date_offset_days_();
    return *offset_;
}

double CellConversion::number_of(const VARIANT& cell) {
    if (cell.vt == VT_DATE) return cell.date - offset();
    return number_in(cell).value_or(kNaN);
}

double CellConversion::date_of(const VARIANT& cell) {
    if (cell.vt == VT_DATE) return cell.date;
    const auto number = number_in(cell);
    return number ? *number + offset() : kNaN;
}

bool CellConversion::boolean_of(const VARIANT& cell) {
    return cell.vt == VT_BOOL && cell.boolVal != VARIANT_FALSE;
}

void CellConversion::assign_text(std::u16string& out, const VARIANT& cell) {
    out.clear();
    if (const auto text = text_in(cell))
        out.assign(*text);
    else if (cell.vt == VT_BOOL)
        out = boolean_of(cell) ? u"TRUE" : u"FALSE";
    else if (cell.vt == VT_DATE || number_in(cell))
        assign_shortest(out, number_of(cell));
}

} // namespace spreadsheet
