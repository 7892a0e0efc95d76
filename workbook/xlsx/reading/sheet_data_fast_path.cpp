// SPDX-License-Identifier: Apache-2.0
//
// The fast half of SheetDataReader: plain XML taken off the text window. The zero bytes after
// the window end every loop and fail every comparison, so an element that is cut off is never
// mistaken for a whole one.
#include <algorithm>
#include <charconv>
#include <cstring>

#include "workbook/xlsx/reading/decimal_number.h"
#include "workbook/xlsx/reading/sheet_data_reader.h"
#include "workbook/xlsx/xlsx_limits.h"
#include "workbook/xml/simple_types.h"

namespace workbook {

namespace {

// Compares with a literal; the compiler makes one or two loads of it.
template <std::size_t Size>
bool has(const char* p, const char (&literal)[Size]) {
    return std::memcmp(p, literal, Size - 1) == 0;
}

bool is_digit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

// At most nine digits, so that the value cannot overflow; null when there are none or more.
const char* take_digits(const char* p, std::uint32_t& out) {
    const char* const begin = p;
    std::uint32_t value = 0;
    while (is_digit(*p))
        value = value * 10 + static_cast<std::uint32_t>(*p++ - '0');
    out = value;
    return p == begin || p - begin > 9 ? nullptr : p;
}

// Whether the '>' at `close` ends the tag whose attributes begin at the closing quote `p`. Within a
// value it does not.
bool ends_tag(const char* p, const char* close) {
    unsigned quotes = 0, other_quotes = 0;
    for (; p < close; ++p) {
        quotes += *p == '"';
        other_quotes += *p == '\'';
    }
    return quotes % 2 == 1 && other_quotes == 0;
}

} // namespace

void SheetDataReader::take_plain_markup() {
    do
        window_.set_cursor(take_plain_run(window_.cursor()));
    while (!stopped_ && window_.refill_if_short());
}

// Takes plain elements for as long as they come; returns the place after the last one.
const char* SheetDataReader::take_plain_run(const char* p) {
    for (;;) {
        const char* const mark = *p == '<' ? p : skip_spaces(p);
        const char* next = nullptr;
        if (!in_row_)
            next = take_plain_row_tag(mark);
        else if (mark[1] == '/')
            next = take_plain_row_end(mark);
        else if (!skipping_)
            next = take_plain_cell(mark);
        if (next == nullptr) return p;
        p = next;
    }
}

const char* SheetDataReader::take_plain_row_end(const char* p) {
    const char* const after = tag_.close(p, "row>");
    if (after == nullptr) return nullptr;
    close_row();
    scanner_.leave_element();
    return after;
}

const char* SheetDataReader::take_plain_row_tag(const char* p) {
    std::uint32_t number = 0;
    p = tag_.open(p, "row r=\"");
    if (p != nullptr) p = take_digits(p, number);
    if (p == nullptr || *p != '"' || number == 0 || number > kMaxRows) return nullptr;
    const char* const close = find_byte(p, window_.end(), '>');
    if (close == window_.end() || (close[-1] != '"' && close[-1] != '/') || !ends_tag(p, close))
        return nullptr;
    if (find_byte(p, close, 'F') != close) return nullptr; // customFormat
    open_row(static_cast<int>(number) - 1);
    if (stopped_) return nullptr;
    if (close[-1] == '/') {
        close_row();
        return close + 1;
    }
    scanner_.enter_element();
    if (!skipping_) return close + 1;
    window_.set_cursor(close + 1);
    scanner_.skip_to(tag_.end_tag("row"));
    return window_.cursor();
}

const char* SheetDataReader::take_plain_cell(const char* p) {
    StoredCell* const cell = cells_.next_cell();
    if (cell == nullptr) return nullptr;
    CellHead head;
    std::uint32_t column = next_column_;
    has_plain_formula_ = false;
    p = tag_.open(p, "c");
    if (p != nullptr) p = take_plain_head(p, column, head);
    if (p == nullptr) return nullptr;
    if (*p == '/') {
        if (p[1] != '>') return nullptr;
        cell->kind = static_cast<std::uint32_t>(StoredKind::Blank);
        p += 2;
    } else {
        p = take_plain_value(p + 1, head.type, *cell);
        if (p != nullptr) p = tag_.close(p, "c>");
        if (p == nullptr) return nullptr;
    }
    cell->column = column;
    cell->format = head.format & kMaxStoredFormat;
    if (has_plain_formula_) {
        const bool has_result = cell->stored_kind() != StoredKind::Blank;
        count_formula(has_result);
        if (!has_result) cell->kind = static_cast<std::uint32_t>(StoredKind::Formula);
    }
    cells_.keep_cell();
    next_column_ = column + 1;
    return p;
}

// The tag's attributes; returns the place of its '>' or "/>".
const char* SheetDataReader::take_plain_head(const char* p, std::uint32_t& column, CellHead& head) {
    while (*p == ' ') {
        if (p[2] != '=' || p[3] != '"') return nullptr;
        const char name = p[1];
        p += 4;
        if (name == 'r') {
            p = take_plain_reference(p, column);
        } else if (name == 's') {
            p = take_digits(p, head.format);
            head.format = std::min(head.format, kMaxStoredFormat);
            out_.formats_end = std::max(out_.formats_end, head.format + 1);
        } else if (name != 't') {
            return nullptr;
        } else if (p[1] == '"' && *p != 'd') {
            switch (*p++) {
            case 's':
                head.type = CellType::SharedString;
                break;
            case 'n':
                break;
            case 'b':
                head.type = CellType::Boolean;
                break;
            case 'e':
                head.type = CellType::Error;
                break;
            default:
                return nullptr;
            }
        } else if (has(p, "str\"")) {
            head.type = CellType::FormulaString;
            p += 3;
        } else if (has(p, "inlineStr\"")) {
            head.type = CellType::InlineString;
            p += 9;
        } else {
            return nullptr;
        }
        if (p == nullptr || *p++ != '"') return nullptr;
    }
    return column < kMaxColumns && (*p == '>' || *p == '/') ? p : nullptr;
}

// Letters of a column and the digits of the open row; returns the place of the closing quote.
const char* SheetDataReader::take_plain_reference(const char* p, std::uint32_t& column) const {
    std::uint32_t number = 0;
    while (static_cast<unsigned char>(*p - 'A') < 26 && number < kMaxColumns)
        number = number * 26 + static_cast<std::uint32_t>(*p++ - 'A' + 1);
    std::uint64_t digits;
    std::memcpy(&digits, p, sizeof digits);
    if (number == 0 || (digits & row_digits_mask_) != row_digits_) return nullptr;
    column = number - 1;
    while (*p != '"')
        ++p;
    return p;
}

// Passes over a formula, whose text is not kept here.
const char* SheetDataReader::take_plain_formula(const char* p) const {
    p = find_byte(p, window_.end(), '>');
    if (p == window_.end()) return nullptr;
    if (p[-1] == '/') return p + 1;
    return tag_.close(find_byte(p, window_.end(), '<'), "f>");
}

// Takes an element without a value, or nothing, before a cell's end tag; returns the place of that.
const char* SheetDataReader::take_missing_value(const char* p, bool& is_element) const {
    const char* after = tag_.open(p, "v/>");
    if (after == nullptr) after = tag_.open(p, "v />");
    if (after == nullptr) {
        after = tag_.open(p, "v>");
        if (after != nullptr) after = tag_.close(after, "v>");
    }
    is_element = after != nullptr;
    if (!is_element) after = p;
    return tag_.close(after, "c>") != nullptr ? after : nullptr;
}

// What is between the tags of a cell; returns the place of its end tag.
const char* SheetDataReader::take_plain_value(const char* p, CellType type, StoredCell& cell) {
    if (const char* const formula = tag_.open(p, "f")) {
        p = take_plain_formula(formula);
        if (p == nullptr) return nullptr;
        has_plain_formula_ = true;
    }
    const char* const value = tag_.open(p, "v>");
    if (value == nullptr || *value == '<') {
        bool is_element = false;
        const char* const after = take_missing_value(p, is_element);
        if (after == nullptr) return take_plain_inline_text(p, cell);
        // An empty value of a cell with text is an empty text.
        const bool is_text = type == CellType::FormulaString || type == CellType::InlineString;
        if (is_element && is_text) return nullptr;
        cell.kind = static_cast<std::uint32_t>(StoredKind::Blank);
        return after;
    }
    p = value;
    switch (type) {
    case CellType::Number:
        cell.kind = static_cast<std::uint32_t>(StoredKind::Number);
        p = parse_plain_number(p, window_.end(), cell.value.number);
        break;
    case CellType::SharedString: {
        std::uint32_t index = 0;
        p = take_digits(p, index);
        if (p == nullptr || *p != '<') return nullptr;
        cell.kind = static_cast<std::uint32_t>(StoredKind::String);
        cell.value.text = index;
        if (index >= out_.shared_strings_end) out_.shared_strings_end = std::uint64_t{index} + 1;
        break;
    }
    case CellType::Boolean:
        if (*p != '0' && *p != '1') return nullptr;
        cell.kind = static_cast<std::uint32_t>(StoredKind::Boolean);
        cell.value.number = *p++ - '0';
        break;
    case CellType::FormulaString:
        p = take_plain_text(p, false, cell);
        break;
    case CellType::Error: {
        bool is_plain;
        const char* const close = find_text_end(p, window_.end(), is_plain);
        if (close == nullptr || !is_plain || *p != '#' || is_space(close[-1])) return nullptr;
        store_error(cell, {p, static_cast<std::size_t>(close - p)});
        p = close;
        break;
    }
    default:
        return nullptr;
    }
    return p != nullptr ? tag_.close(p, "v>") : nullptr;
}

// Stores the text at `p` and returns the place of the '<' after it. Nothing is stored when that
// does not begin the tags that end a cell; `is_item`: the text is in an item's `t`.
const char* SheetDataReader::take_plain_text(const char* p, bool is_item, StoredCell& cell) {
    bool is_plain;
    const char* const end = find_text_end(p, window_.end(), is_plain);
    if (end == nullptr) return nullptr;
    const char* close = is_item ? tag_.close(end, "t>") : tag_.close(end, "v>");
    if (is_item && close != nullptr) close = tag_.close(close, "is>");
    if (close == nullptr || tag_.close(close, "c>") == nullptr) return nullptr;
    std::string_view text(p, static_cast<std::size_t>(end - p));
    if (!is_plain) text = decoder_.decode(text);
    if (text.data() == nullptr) return nullptr;
    store_text(cell, text);
    return end;
}

const char* SheetDataReader::take_plain_inline_text(const char* p, StoredCell& cell) {
    p = tag_.open(p, "is>");
    if (p == nullptr) return nullptr;
    const char* text = tag_.open(p, "t>");
    if (text == nullptr) text = tag_.open(p, "t xml:space=\"preserve\">");
    if (text == nullptr) return nullptr;
    p = take_plain_text(text, true, cell);
    return p == nullptr ? nullptr : tag_.close(tag_.close(p, "t>"), "is>");
}

} // namespace workbook
