// SPDX-License-Identifier: Apache-2.0
//
// Reads rows and cells through the scanner and keeps their text.
#include "workbook/xlsx/writing/source_cell.h"

#include <charconv>
#include <cmath>

#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/xlsx_limits.h"
#include "workbook/xml/simple_types.h"

namespace workbook {

namespace {

using Token = XmlScanner::Token;

// Producers write "12"; the reader accepts any number that is whole.
int parse_row_number(XmlScanner& scanner, std::string_view text) {
    std::string_view digits = trim(text);
    if (digits.starts_with('+')) digits.remove_prefix(1);
    double number = 0.0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || stop != end || !(number >= 1 && number <= kMaxRows) ||
        number != std::floor(number))
        scanner.fail("row number \"" + std::string(text.substr(0, 20)) +
                     "\" is not one from 1 to " + std::to_string(kMaxRows));
    return static_cast<int>(number);
}

std::optional<unsigned> parse_group(std::string_view text) {
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc() || stop != end) return {};
    return number;
}

void read_formula_tag(XmlScanner& scanner, SourceFormula& formula) {
    formula.prefix = scanner.prefix();
    formula.type = scanner.attribute("t");
    formula.group = parse_group(trim(scanner.attribute("si")));
    formula.area = parse_area_reference(trim(scanner.attribute("ref")));
    for (const XmlScanner::Attribute& attribute : scanner.attributes()) {
        if (attribute.name == "t" || attribute.name == "si" || attribute.name == "ref") continue;
        const char* const end = attribute.raw.data() + attribute.raw.size() + 1;
        formula.other_attributes += ' ';
        formula.other_attributes.append(attribute.name.data(), end);
    }
}

} // namespace

int CellPlaces::begin_row(XmlScanner& scanner) {
    int row = row_ + 1;
    if (const std::string_view number = scanner.attribute("r"); number.data() != nullptr)
        row = parse_row_number(scanner, number) - 1;
    if (row >= kMaxRows) scanner.fail("the sheet has more rows than a sheet can have");
    set_row(row);
    return row;
}

CellReference CellPlaces::next_cell(XmlScanner& scanner) {
    CellReference place = next_place();
    if (const std::string_view reference = scanner.attribute("r"); reference.data() != nullptr) {
        const auto parsed = parse_cell_reference(trim(reference));
        if (!parsed)
            scanner.fail("\"" + std::string(reference.substr(0, 20)) +
                         "\" is not a cell of a sheet");
        place = *parsed;
    }
    if (place.column >= kMaxColumns) scanner.fail("a row has more cells than a sheet has columns");
    set_place(place);
    return place;
}

void SourceCell::append_to(std::string& out, std::string_view extra) const {
    out += head;
    out += extra;
    if (content.empty() && tail.empty()) {
        out += "/>";
        return;
    }
    out += '>';
    out += content;
    if (tail.empty())
        out += "</" + prefix + "c>";
    else
        out += tail;
}

void read_source_cell(XmlScanner& scanner, SourceCell& cell) {
    const int depth = scanner.depth();
    cell.head = open_tag(scanner.raw());
    cell.content.clear();
    cell.tail.clear();
    cell.prefix = scanner.prefix();
    cell.has_reference = scanner.attribute("r").data() != nullptr;
    cell.has_metadata = scanner.attribute("cm").data() != nullptr;
    cell.formula.reset();
    bool in_formula = false;
    for (;;) {
        const Token token = scanner.next();
        if (token == Token::End && scanner.depth() < depth) {
            cell.tail = scanner.raw();
            return;
        }
        if (cell.content.size() + scanner.raw().size() > kMaxTokenBytes)
            throw Error::limit(scanner.window().part_name(),
                               "a cell with more than " + std::to_string(kMaxTokenBytes >> 20) +
                                   " MiB");
        if (token == Token::Start && scanner.depth() == depth + 1 && scanner.name() == "f" &&
            !cell.formula) {
            cell.formula.emplace().begin = cell.content.size();
            read_formula_tag(scanner, *cell.formula);
            in_formula = true;
        }
        if (in_formula && token == Token::Text) cell.formula->text += scanner.text();
        cell.content += scanner.raw();
        if (in_formula && token == Token::End && scanner.depth() == depth) {
            cell.formula->end = cell.content.size();
            in_formula = false;
        }
    }
}

void append_character_data(std::string& out, std::string_view text) {
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '\r')
            out += "&#13;";
        else
            out += c;
    }
}

std::string_view open_tag(std::string_view raw) {
    raw.remove_suffix(1);
    if (raw.ends_with('/')) raw.remove_suffix(1);
    return raw;
}

std::string open_tag_without(const XmlScanner& scanner, std::string_view name) {
    const std::string_view tag = open_tag(scanner.raw());
    for (const XmlScanner::Attribute& attribute : scanner.attributes()) {
        if (attribute.name != name) continue;
        auto begin = static_cast<std::size_t>(attribute.name.data() - tag.data());
        const auto end =
            static_cast<std::size_t>(attribute.raw.data() + attribute.raw.size() + 1 - tag.data());
        while (begin > 0 && is_space(tag[begin - 1]))
            --begin;
        return std::string(tag.substr(0, begin)) + std::string(tag.substr(end));
    }
    return std::string(tag);
}

} // namespace workbook
