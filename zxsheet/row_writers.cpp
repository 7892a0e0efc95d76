// SPDX-License-Identifier: Apache-2.0
//
// CSV, TSV, JSON and JSON lines.
#include "zxsheet/row_writers.h"

#include "foundation/unicode.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/json_text.h"

namespace zxsheet {
namespace {

/// `also` needs quotes, too.
std::string quoted(const std::string& field, char separator, char also) {
    const char special[] = {separator, '"', '\n', '\r', also, '\0'};
    if (field.find_first_of(special) == std::string::npos) return field;
    std::string text = "\"";
    for (const char character : field) {
        if (character == '"') text.push_back('"');
        text.push_back(character);
    }
    return text + '"';
}

using CellToText = std::string (*)(const CellValue&, DateStyle);

std::string type_value(const CellValue& cell, DateStyle) {
    return json_string(type_name(cell.type));
}

void write_array(const std::vector<const CellValue*>& row, DateStyle dates, CellToText to_text,
                 OutputSink& out) {
    out.write('[');
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (i != 0) out.write(',');
        out.write(to_text(*row[i], dates));
    }
    out.write(']');
}

void write_matrix(const Selection& selection, const PrintStyle& style, Content content,
                  CellToText to_text, OutputSink& out) {
    bool first = true;
    out.write('[');
    for_each_row(selection, style.merged, content, [&](const std::vector<const CellValue*>& row) {
        if (!first) out.write(',');
        first = false;
        write_array(row, style.dates, to_text, out);
    });
    out.write(']');
}

} // namespace

void write_separated(const Selection& selection, const PrintStyle& style, char separator,
                     OutputSink& out) {
    for_each_row(selection, style.merged, Content::Values,
                 [&](const std::vector<const CellValue*>& row) {
                     // A line without a comma but with semicolons is taken to be separated by them.
                     const char also = row.size() == 1 && separator == ',' ? ';' : separator;
                     for (std::size_t i = 0; i < row.size(); ++i) {
                         if (i != 0) out.write(separator);
                         out.write(quoted(plain_text(*row[i], style.dates), separator, also));
                     }
                     out.write('\n');
                 });
}

void write_json_lines(const Selection& selection, const PrintStyle& style, OutputSink& out) {
    for_each_row(selection, style.merged, Content::Values,
                 [&](const std::vector<const CellValue*>& row) {
                     write_array(row, style.dates, json_value, out);
                     out.write('\n');
                 });
}

void write_json(const Selection& selection, const PrintStyle& style, Content content,
                OutputSink& out) {
    namespace unicode = foundation::unicode;
    const std::string range = unicode::to_utf8(spreadsheet::range_string(selection.range));
    out.write("{\"sheet\":" + json_string(unicode::to_utf8(selection.sheet_name)));
    out.write(",\"range\":" + (range.empty() ? "null" : json_string(range)));
    out.write(",\"types\":");
    write_matrix(selection, style, Content::Types, type_value, out);
    if (content == Content::Values) {
        out.write(",\"values\":");
        write_matrix(selection, style, Content::Values, json_value, out);
    }
    out.write("}\n");
}

} // namespace zxsheet
