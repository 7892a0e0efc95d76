// SPDX-License-Identifier: Apache-2.0
//
// Line by line; a line that is not understood fails loudly.
#include "tests/workbook/expectation.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "workbook/cells/cell_name.h"
#include "workbook/xlsx/cell_reference.h"

namespace workbook::test {

namespace {

std::string take_word(std::string& line) {
    const std::size_t blank = line.find(' ');
    std::string word = line.substr(0, blank);
    line.erase(0, blank == std::string::npos ? blank : blank + 1);
    return word;
}

void read_sheet_fact(ExpectedSheet& sheet, const std::string& key, std::string rest) {
    if (key == "protected") {
        sheet.is_protected = true;
    } else if (key == "unordered") {
        sheet.is_unordered = true;
    } else if (key == "bounds") {
        sheet.bounds = rest;
    } else if (key == "filled") {
        sheet.filled = rest;
    } else if (key == "merge") {
        sheet.merged.push_back(rest);
    } else if (key == "name") {
        std::string name = take_word(rest);
        sheet.names.emplace_back(std::move(name), rest);
    } else if (const auto cell = parse_cell_reference(key)) {
        // An empty text has no blank behind "text".
        sheet.cells[{cell->row, cell->column}] = rest == "text" ? "text " : rest;
    } else {
        throw std::runtime_error("expectation not understood: " + key);
    }
}

} // namespace

Expectation read_expectation(const std::filesystem::path& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("no expectation " + path.string());
    Expectation expectation;
    for (std::string line; std::getline(file, line);) {
        const std::string key = take_word(line);
        if (key == "date1904") {
            expectation.date_1904 = true;
        } else if (key == "sheet") {
            ExpectedSheet sheet;
            sheet.kind = take_word(line);
            sheet.state = take_word(line);
            sheet.name = line;
            expectation.sheets.push_back(std::move(sheet));
        } else {
            read_sheet_fact(expectation.sheets.at(expectation.sheets.size() - 1), key, line);
        }
    }
    return expectation;
}

std::string read_text(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string area_name(int first_row, int last_row, int first_column, int last_column) {
    return cell_name(first_row, first_column) + ":" + cell_name(last_row, last_column);
}

std::string escaped(std::u16string_view text) {
    std::string out;
    for (const char16_t unit : text) {
        char code[8];
        std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(unit));
        if (unit == u'\n')
            out += "\\n";
        else if (unit == u'\r')
            out += "\\r";
        else if (unit == u'\t')
            out += "\\t";
        else if (unit == u'\\')
            out += "\\\\";
        else if (unit < 0x20 || unit > 0x7E)
            out += code;
        else
            out += static_cast<char>(unit);
    }
    // Blanks at the ends would be lost to editors.
    if (!out.empty() && out.back() == ' ') out.replace(out.size() - 1, 1, "\\u0020");
    if (!out.empty() && out.front() == ' ') out.replace(0, 1, "\\u0020");
    return out;
}

} // namespace workbook::test
