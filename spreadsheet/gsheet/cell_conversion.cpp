// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/cell_conversion.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "foundation/unicode.h"

namespace gsheet {

namespace {

using spreadsheet::cell_type;

/// The last serial date that the service counts without 29 February 1900 before it.
constexpr double kLastLoweredSerial = 60.0;

/// Decimals without an exponent where they stay readable.
void assign_number_text(std::u16string& out, double value) {
    const double size = std::fabs(value);
    const bool is_plain = size == 0.0 || (size >= 1e-6 && size < 1e21);
    std::array<char, 64> text{};
    const auto format = is_plain ? std::chars_format::fixed : std::chars_format::scientific;
    char* const end = std::to_chars(text.data(), text.data() + text.size(), value, format).ptr;
    out.assign(text.data(), end);
}

} // namespace

double number_of(const CachedCell& cell) {
    if (cell.type() == cell_type::number) return cell.number();
    if (cell.type() != cell_type::date) return std::numeric_limits<double>::quiet_NaN();
    return cell.number() <= kLastLoweredSerial ? cell.number() - 1.0 : cell.number();
}

double serial_of(const CachedCell& cell) {
    return cell.type() == cell_type::date ? number_of(cell) : 0.0;
}

bool boolean_of(const CachedCell& cell) {
    return cell.type() == cell_type::boolean && cell.boolean();
}

void assign_text(std::u16string& out, const CellCache& cells, const CachedCell& cell) {
    switch (cell.type()) {
    case cell_type::text:
        foundation::unicode::assign_utf16(out, cells.text(cell));
        break;
    case cell_type::number:
    case cell_type::date:
        assign_number_text(out, number_of(cell));
        break;
    case cell_type::boolean:
        out = cell.boolean() ? u"TRUE" : u"FALSE";
        break;
    default:
        out.clear();
    }
}

double CachedValue::number() const {
    return number_of(cell_);
}

bool CachedValue::boolean() const {
    return boolean_of(cell_);
}

const std::u16string& CachedValue::text() {
    assign_text(text_, cells_, cell_);
    return text_;
}

} // namespace gsheet
