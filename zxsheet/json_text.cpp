// SPDX-License-Identifier: Apache-2.0
//
// Quoting for JSON.
#include "zxsheet/json_text.h"

#include <cmath>
#include <cstdio>

#include "zxsheet/cell_text.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

void append_escaped(std::string& out, char character) {
    switch (character) {
    case '"':
        out += "\\\"";
        return;
    case '\\':
        out += "\\\\";
        return;
    case '\n':
        out += "\\n";
        return;
    case '\r':
        out += "\\r";
        return;
    case '\t':
        out += "\\t";
        return;
    default:
        break;
    }
    if (static_cast<unsigned char>(character) >= 0x20) {
        out.push_back(character);
        return;
    }
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(character));
    out += escape;
}

} // namespace

std::string json_string(std::string_view text) {
    std::string out = "\"";
    for (const char character : text)
        append_escaped(out, character);
    return out + '"';
}

std::string json_value(const CellValue& cell, DateStyle dates) {
    const bool numeric = cell.type == cell_type::number || cell.type == cell_type::date;
    if (numeric && !std::isfinite(cell.number)) return "null";
    switch (cell.type) {
    case cell_type::empty:
    case cell_type::other:
        return "null";
    case cell_type::number:
    case cell_type::boolean:
        return plain_text(cell, dates);
    case cell_type::date:
        if (dates == DateStyle::Serial) return plain_text(cell, dates);
        return json_string(date_text(cell.number)); // reads back as the same number
    default:
        return json_string(plain_text(cell, dates));
    }
}

} // namespace zxsheet
