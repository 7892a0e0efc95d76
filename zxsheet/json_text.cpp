// SPDX-License-Identifier: Apache-2.0
//
// Quoting for JSON.
#include "zxsheet/json_text.h"

#include <cmath>
#include <cstdio>

#include "zxsheet/byte_set.h"
#include "zxsheet/cell_text.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

constexpr ByteSet kEscaped = ByteSet("\"\\").add(0, 0x1F);

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
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(character));
        out += escape;
        return;
    }
}

} // namespace

void append_json_string(std::string& out, std::string_view text) {
    out.push_back('"');
    while (true) {
        const std::size_t plain = kEscaped.find_in(text);
        out += text.substr(0, plain);
        if (plain == text.size()) break;
        append_escaped(out, text[plain]);
        text.remove_prefix(plain + 1);
    }
    out.push_back('"');
}

std::string json_string(std::string_view text) {
    std::string out;
    append_json_string(out, text);
    return out;
}

void append_json(std::string& out, const CellValue& cell, const TextStyle& style) {
    const bool is_serial = style.dates == TextStyle::Dates::Serial;
    const bool is_elapsed = cell.style == spreadsheet::number_style::elapsed;
    switch (cell.type) {
    case cell_type::empty:
    case cell_type::other:
        out += "null";
        return;
    case cell_type::boolean:
        return append_text(out, cell, style);
    case cell_type::number:
    case cell_type::date:
        if (!std::isfinite(cell.number)) {
            out += "null";
        } else if (cell.type == cell_type::number || is_serial || is_elapsed) {
            append_number(out, cell.number);
        } else {
            append_json_string(out, plain_text(cell, style));
        }
        return;
    case cell_type::text:
        return append_json_string(out, cell.text);
    default:
        return append_json_string(out, plain_text(cell, style));
    }
}

} // namespace zxsheet
