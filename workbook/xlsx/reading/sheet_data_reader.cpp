// SPDX-License-Identifier: Apache-2.0
//
// Rows, and cells that go through the scanner.
#include "workbook/xlsx/reading/sheet_data_reader.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>

#include "foundation/ascii_case.h"
#include "workbook/cells/cell_name.h"
#include "workbook/error.h"
#include "workbook/xlsx/cell_reference.h"
#include "workbook/xlsx/reading/iso_date.h"
#include "workbook/xlsx/reading/text_collector.h"
#include "workbook/xlsx/xlsx_limits.h"
#include "workbook/xml/simple_types.h"

namespace workbook {

namespace {

using Token = XmlScanner::Token;

// A book has some ten kinds of error; a file that makes up thousands gets them stored one by one.
constexpr std::size_t kKnownErrors = 32;

// Anything but 0 counts as true; some producers write words, in any case.
bool is_false(std::string_view text) {
    return text == "0" || foundation::unicode::equal_ignoring_ascii_case(text, "false");
}

// The whole text as a finite number; what is too small for a double is 0.
std::optional<double> parse_number(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    if (digits.empty() || digits[0] == 'i' || digits[0] == 'n' || digits[0] == 'I' ||
        digits[0] == 'N')
        return std::nullopt;
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (end != text.data() + text.size()) return std::nullopt;
    if (error == std::errc::result_out_of_range) {
        const std::size_t exponent = text.find_first_of("eE");
        const bool tiny = exponent != std::string_view::npos && text.substr(exponent + 1, 1) == "-";
        return tiny ? std::optional(0.0) : std::nullopt;
    }
    return error == std::errc() ? std::optional(value) : std::nullopt;
}

std::uint32_t stored_format(double number) {
    return static_cast<std::uint32_t>(std::clamp(number, 0.0, double{kMaxStoredFormat}));
}

} // namespace

bool SheetDataReader::read() {
    const int depth = scanner_.depth();
    for (;;) {
        take_plain_markup();
        if (stopped_) return false;
        const Token token = scanner_.next();
        if (token == Token::End && scanner_.depth() < depth) return true;
        if (token == Token::End && scanner_.depth() == depth) close_row();
        if (token != Token::Start) continue;
        if (scanner_.depth() == depth + 1 && scanner_.name() == "row")
            read_row_tag();
        else if (scanner_.depth() == depth + 2 && scanner_.name() == "c" && in_row_ && !skipping_)
            read_cell();
        else
            scanner_.skip_element();
        if (stopped_) return false;
    }
}

void SheetDataReader::open_row(int row) {
    stopped_ = row > rows_.last;
    if (stopped_) return;
    row_ = row;
    in_row_ = true;
    skipping_ = row < rows_.first;
    next_column_ = 0;
    if (skipping_) return;
    cells_.begin_row(row);
    char digits[sizeof row_digits_] = {};
    char* const end = std::to_chars(digits, digits + sizeof digits - 1, row + 1).ptr;
    *end = '"';
    std::memcpy(&row_digits_, digits, sizeof digits);
    std::memset(digits, 0xFF, static_cast<std::size_t>(end - digits) + 1);
    std::memset(end + 1, 0, static_cast<std::size_t>(digits + sizeof digits - (end + 1)));
    std::memcpy(&row_digits_mask_, digits, sizeof digits);
}

void SheetDataReader::close_row() {
    if (in_row_ && !skipping_) cells_.end_row();
    in_row_ = false;
    skipping_ = false;
}

// A row without a number follows the row before it.
void SheetDataReader::read_row_tag() {
    int row = row_ + 1;
    if (const std::string_view number = scanner_.attribute("r"); number.data() != nullptr) {
        const auto value = parse_number(trim(number));
        if (!value || *value < 1 || *value > kMaxRows || *value != static_cast<int>(*value))
            scanner_.fail("row number \"" + std::string(number.substr(0, 20)) +
                          "\" is not one from 1 to " + std::to_string(kMaxRows));
        row = static_cast<int>(*value) - 1;
    }
    if (row >= kMaxRows) scanner_.fail("the sheet has more rows than a sheet can have");
    open_row(row);
    if (in_row_ && !skipping_ && is_true(scanner_.attribute("customFormat"))) {
        const auto format = parse_number(trim(scanner_.attribute("s")));
        out_.row_formats.push_back({row, stored_format(format.value_or(0.0))});
        out_.formats_end = std::max(out_.formats_end, out_.row_formats.back().format + 1);
    }
    if (!skipping_) return;
    scanner_.skip_element();
    close_row();
}

void SheetDataReader::read_cell() {
    const int depth = scanner_.depth();
    const CellHead head = read_head();
    bool has_value = false, has_text = false, has_formula = false;
    value_.clear();
    inline_text_.clear();
    for (;;) {
        const Token token = scanner_.next();
        if (token == Token::End && scanner_.depth() < depth) break;
        if (token != Token::Start) continue;
        if (scanner_.name() == "v") {
            has_value = true;
            append_element_text(scanner_, value_);
        } else if (scanner_.name() == "is") {
            has_text = true;
            append_item_text(scanner_, inline_text_);
        } else {
            has_formula |= scanner_.name() == "f";
            scanner_.skip_element();
        }
    }
    if (has_formula && !skipping_) count_formula(has_value);
    store_value(head, has_value, has_text, has_formula ? StoredKind::Formula : StoredKind::Blank);
}

// Reads the attributes and moves to the cell's place.
SheetDataReader::CellHead SheetDataReader::read_head() {
    CellHead head;
    if (const std::string_view reference = scanner_.attribute("r"); reference.data() != nullptr)
        move_to(trim(reference));
    if (next_column_ >= kMaxColumns)
        fail_at_cell("the row has more cells than a sheet has columns");
    if (const auto format = parse_number(trim(scanner_.attribute("s"))))
        head.format = stored_format(*format);
    out_.formats_end = std::max(out_.formats_end, head.format + 1);
    const std::string_view type = scanner_.attribute("t");
    if (type == "s")
        head.type = CellType::SharedString;
    else if (type == "str")
        head.type = CellType::FormulaString;
    else if (type == "inlineStr")
        head.type = CellType::InlineString;
    else if (type == "b")
        head.type = CellType::Boolean;
    else if (type == "e")
        head.type = CellType::Error;
    else if (type == "d")
        head.type = CellType::Date;
    else if (type.data() != nullptr && type != "n")
        fail_at_cell("cell type \"" + std::string(type.substr(0, 20)) + "\" is not known");
    return head;
}

// A reference into another row than the open one goes before the row's number.
void SheetDataReader::move_to(std::string_view reference) {
    const auto place = parse_cell_reference(reference);
    if (!place)
        scanner_.fail("\"" + std::string(reference.substr(0, 20)) + "\" is not a cell of a sheet");
    if (place->row != row_) {
        cells_.end_row();
        const int row = row_;
        open_row(place->row);
        if (stopped_ || skipping_) { // keep the row open, but out of the store
            stopped_ = false;
            in_row_ = skipping_ = true;
            row_ = row;
        }
    }
    next_column_ = static_cast<std::uint32_t>(place->column);
}

/// `without` is the kind of a cell that has no value.
void SheetDataReader::store_value(const CellHead& head, bool has_value, bool has_text,
                                  StoredKind without) {
    if (skipping_) return;
    StoredCell* const cell = cells_.next_cell();
    if (cell == nullptr) fail_at_cell("the row has more cells than a sheet has columns");
    cell->column = next_column_;
    cell->format = head.format & kMaxStoredFormat;
    cell->kind = static_cast<std::uint32_t>(without);
    const bool is_text =
        head.type == CellType::FormulaString || head.type == CellType::InlineString;
    if (has_text) {
        store_text(*cell, inline_text_);
    } else if (has_value && is_text) {
        std::string text;
        append_unescaped(text, value_);
        store_text(*cell, text);
    } else if (has_value && !trim(value_).empty()) {
        switch (head.type) {
        case CellType::SharedString:
            store_shared_string(*cell);
            break;
        case CellType::Error:
            store_error(*cell, trim(value_));
            break;
        case CellType::Date:
            store_date(*cell);
            break;
        case CellType::Boolean:
            cell->kind = static_cast<std::uint32_t>(StoredKind::Boolean);
            cell->value.number = is_false(trim(value_)) ? 0.0 : 1.0;
            break;
        default:
            store_number(*cell);
            break;
        }
    }
    cells_.keep_cell();
    ++next_column_;
}

// What is not a number where one belongs ("NaN", "1E999") is kept as the string that it is.
void SheetDataReader::store_number(StoredCell& cell) {
    const auto number = parse_number(trim(value_));
    if (!number) return store_text(cell, trim(value_));
    cell.kind = static_cast<std::uint32_t>(StoredKind::Number);
    cell.value.number = *number;
}

void SheetDataReader::store_shared_string(StoredCell& cell) {
    const auto index = parse_number(trim(value_));
    if (!index || *index < 0 || *index > 0xFFFFFFFEu ||
        *index != static_cast<std::uint32_t>(*index))
        fail_at_cell("its shared string index is not a number");
    cell.kind = static_cast<std::uint32_t>(StoredKind::String);
    cell.value.text = static_cast<std::uint32_t>(*index);
    out_.shared_strings_end = std::max(out_.shared_strings_end, cell.value.text + 1);
}

void SheetDataReader::store_text(StoredCell& cell, std::string_view text) {
    cell.kind = static_cast<std::uint32_t>(StoredKind::OwnString);
    if (!is_scan_) cell.value.text = out_.own_strings.add(text);
}

void SheetDataReader::store_error(StoredCell& cell, std::string_view text) {
    cell.kind = static_cast<std::uint32_t>(StoredKind::Error);
    if (is_scan_) return;
    for (const auto& [known, index] : error_texts_)
        if (known == text) {
            cell.value.text = index;
            return;
        }
    const std::uint32_t index = out_.own_strings.add(text);
    if (error_texts_.size() < kKnownErrors) error_texts_.emplace_back(text, index);
    cell.value.text = index;
}

// What is not an ISO date is kept as a string.
void SheetDataReader::store_date(StoredCell& cell) {
    const auto serial = parse_iso_date(trim(value_), date_base_);
    if (!serial) return store_text(cell, trim(value_));
    cell.kind = static_cast<std::uint32_t>(StoredKind::StrictDate);
    cell.value.number = *serial;
}

void SheetDataReader::fail_at_cell(std::string_view what) const {
    scanner_.fail("cell " + cell_name(row_, static_cast<int>(next_column_)) + ": " +
                  std::string(what));
}

} // namespace workbook
