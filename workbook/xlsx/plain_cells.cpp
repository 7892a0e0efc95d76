// SPDX-License-Identifier: Apache-2.0
//
// The fast half of SheetDataReader: plain mark-up taken off the text window. The zero bytes behind
// the window end every loop and fail every comparison, so an element that is cut off is never
// mistaken for a whole one.
#include <charconv>
#include <cstring>

#include "workbook/xlsx/plain_number.h"
#include "workbook/xlsx/sheet_data_reader.h"

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

const char* skip_spaces(const char* p) {
    while (*p == ' ' || *p == '\n' || *p == '\r' || *p == '\t')
        ++p;
    return p;
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

// The place of "</c>" when nothing, or an element without a value, stands before it.
const char* skip_missing_value(const char* p) {
    if (has(p, "</c>")) return p;
    if (has(p, "<v></v></c>")) return p + 7;
    if (has(p, "<v/></c>")) return p + 4;
    if (has(p, "<v /></c>")) return p + 5;
    return nullptr;
}

// Passes over a formula, whose text is not kept here.
const char* skip_plain_formula(const char* p, const char* end) {
    p = find_byte(p, end, '>');
    if (p == end) return nullptr;
    if (p[-1] == '/') return p + 1;
    p = find_byte(p, end, '<');
    return has(p, "</f>") ? p + 4 : nullptr;
}

} // namespace

void SheetDataReader::take_plain_markup() {
    do
        window_.set_cursor(take_plain_run(window_.cursor()));
    while (!stopped_ && window_.refill_if_short());
}

// Takes plain elements for as long as they come; returns the place behind the last one.
const char* SheetDataReader::take_plain_run(const char* p) {
    for (;;) {
        const char* const mark = *p == '<' ? p : skip_spaces(p);
        const char* next = nullptr;
        if (in_row_ && !skipping_ && has(mark, "<c ")) {
            next = take_plain_cell(mark);
        } else if (in_row_ && has(mark, "</row>")) {
            close_row();
            scanner_.leave_element();
            next = mark + 6;
        } else if (!in_row_ && has(mark, "<row ")) {
            next = take_plain_row_tag(mark);
            if (stopped_) return p;
        }
        if (next == nullptr) return p;
        p = next;
    }
}

const char* SheetDataReader::take_plain_row_tag(const char* p) {
    std::uint32_t number = 0;
    if (!has(p, "<row r=\"")) return nullptr;
    const char* const behind = take_digits(p + 8, number);
    if (behind == nullptr || number == 0 || number > kMaxRows) return nullptr;
    const char* const close = find_byte(behind, window_.end(), '>');
    if (close == window_.end() || (close[-1] != '"' && close[-1] != '/')) return nullptr;
    open_row(static_cast<int>(number) - 1);
    if (stopped_) return nullptr;
    if (close[-1] == '/') {
        close_row();
        return close + 1;
    }
    scanner_.enter_element();
    if (!skipping_) return close + 1;
    window_.set_cursor(close + 1);
    scanner_.skip_to("</row>");
    return window_.cursor();
}

const char* SheetDataReader::take_plain_cell(const char* p) {
    StoredCell* const cell = cells_.next_cell();
    if (cell == nullptr) return nullptr;
    CellHead head;
    std::uint32_t column = next_column_;
    p = take_plain_head(p, column, head);
    if (p == nullptr) return nullptr;
    if (*p == '/') {
        if (p[1] != '>') return nullptr;
        cell->kind = static_cast<std::uint32_t>(StoredKind::Blank);
        p += 2;
    } else {
        p = take_plain_value(p + 1, head.type, *cell);
        if (p == nullptr || !has(p, "</c>")) return nullptr;
        p += 4;
    }
    cell->column = column;
    cell->format = head.format & kMaxStoredFormat;
    cells_.keep_cell();
    next_column_ = column + 1;
    return p;
}

// The tag's attributes; returns the place of its '>' or "/>".
const char* SheetDataReader::take_plain_head(const char* p, std::uint32_t& column, CellHead& head) {
    p += 2;
    while (*p == ' ') {
        if (p[2] != '=' || p[3] != '"') return nullptr;
        const char name = p[1];
        p += 4;
        if (name == 'r') {
            p = take_plain_reference(p, column);
        } else if (name == 's') {
            p = take_digits(p, head.format);
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

// What stands between the tags of a cell; returns the place of "</c>".
const char* SheetDataReader::take_plain_value(const char* p, CellType type, StoredCell& cell) {
    if (p[0] == '<' && p[1] == 'f') {
        p = skip_plain_formula(p, window_.end());
        if (p == nullptr) return nullptr;
    }
    if (const char* const behind = skip_missing_value(p)) {
        // An empty value of a formula's text is an empty text.
        if (behind != p && type == CellType::FormulaString) return nullptr;
        cell.kind = static_cast<std::uint32_t>(StoredKind::Blank);
        return behind;
    }
    if (!has(p, "<v>")) return take_plain_inline_text(p, cell);
    p += 3;
    switch (type) {
    case CellType::Number:
        cell.kind = static_cast<std::uint32_t>(StoredKind::Number);
        p = parse_plain_number(p, window_.end(), cell.value.number);
        break;
    case CellType::SharedString: {
        std::uint32_t index = 0;
        p = take_digits(p, index);
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
        p = take_plain_text(p, "</v></c>", cell);
        break;
    case CellType::Error: {
        bool as_it_stands;
        const char* const close = find_text_end(p, window_.end(), as_it_stands);
        if (close == nullptr || close == p || !as_it_stands) return nullptr;
        store_error(cell, {p, static_cast<std::size_t>(close - p)});
        p = close;
        break;
    }
    default:
        return nullptr;
    }
    return p != nullptr && has(p, "</v>") ? p + 4 : nullptr;
}

// Stores the text at `p`, which must end with `close`; returns the place of that.
const char* SheetDataReader::take_plain_text(const char* p, std::string_view close,
                                             StoredCell& cell) {
    bool as_it_stands;
    const char* const end = find_text_end(p, window_.end(), as_it_stands);
    if (end == nullptr || std::memcmp(end, close.data(), close.size()) != 0) return nullptr;
    std::string_view text(p, static_cast<std::size_t>(end - p));
    if (!as_it_stands) text = decoder_.decode(text);
    if (text.data() == nullptr) return nullptr;
    store_text(cell, text);
    return end;
}

const char* SheetDataReader::take_plain_inline_text(const char* p, StoredCell& cell) {
    if (has(p, "<is><t>"))
        p += 7;
    else if (has(p, "<is><t xml:space=\"preserve\">"))
        p += 28;
    else
        return nullptr;
    p = take_plain_text(p, "</t></is></c>", cell);
    return p == nullptr ? nullptr : p + 9;
}

} // namespace workbook
