// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/range_values.h"

#include <array>
#include <charconv>
#include <limits>
#include <utility>

#include "spreadsheet/range_walk.h"

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

/// The text of an error that a cell holds; empty for one that no cell has.
std::u16string_view error_text(SCODE code) {
    constexpr SCODE kFirst = static_cast<SCODE>(0x800a07d0u); // FACILITY_CONTROL, 2000
    switch (code - kFirst) {
    case 0:
        return u"#NULL!";
    case 7:
        return u"#DIV/0!";
    case 15:
        return u"#VALUE!";
    case 23:
        return u"#REF!";
    case 29:
        return u"#NAME?";
    case 36:
        return u"#NUM!";
    case 42:
        return u"#N/A";
    case 43:
        return u"#GETTING_DATA";
    default:
        return {};
    }
}

} // namespace

RangeValues::RangeValues(Variant value, const Range& range)
    : value_(std::make_unique<Variant>(std::move(value))) {
    const std::size_t rows = extent(range.first_row, range.last_row);
    const std::size_t columns = extent(range.first_column, range.last_column);
    if ((value_->type() & VT_ARRAY) == 0) {
        if (rows == 1 && columns == 1) cells_ = &value_->get();
        return;
    }
    view_ = std::make_unique<BlockView>(value_->get());
    if (*view_ && view_->rows() == rows && view_->columns() == columns) cells_ = view_->elements();
}

cell_type type_of(const VARIANT& cell) {
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

double ApplicationCell::offset() {
    if (!offset_) offset_ = date_offset_days_();
    return *offset_;
}

double ApplicationCell::number() {
    if (cell_->vt == VT_DATE) return cell_->date - offset();
    return number_in(*cell_).value_or(kNaN);
}

double ApplicationCell::date() {
    if (cell_->vt == VT_DATE) return cell_->date;
    const auto number = number_in(*cell_);
    return number ? *number + offset() : kNaN;
}

bool ApplicationCell::boolean() const {
    return cell_->vt == VT_BOOL && cell_->boolVal != VARIANT_FALSE;
}

const std::u16string& ApplicationCell::text() {
    text_.clear();
    if (const auto text = text_in(*cell_))
        text_.assign(*text);
    else if (cell_->vt == VT_BOOL)
        text_ = boolean() ? u"TRUE" : u"FALSE";
    else if (cell_->vt == VT_ERROR)
        text_ = error_text(cell_->scode);
    else if (cell_->vt == VT_DATE || number_in(*cell_))
        assign_shortest(text_, number());
    return text_;
}

} // namespace spreadsheet
