// SPDX-License-Identifier: Apache-2.0
//
// The fast half of SheetDataRewriter: rows without a change are copied block by block. Only where a
// row begins is looked at, for as long as rows have ascending numbers in plain XML.
#include <algorithm>

#include "workbook/xlsx/writing/sheet_data_rewriter.h"
#include "workbook/xlsx/xlsx_limits.h"
#include "workbook/xml/find_byte.h"
#include "workbook/xml/simple_types.h"

namespace workbook {

namespace {

// A mark that is cut off by the window's end is looked at again.
constexpr std::ptrdiff_t kLongestMark = 64;

bool begins_with(const char* p, const char* end, std::string_view text) {
    return static_cast<std::size_t>(end - p) >= text.size() &&
           std::string_view(p, text.size()) == text;
}

} // namespace

// The next row that has to be rewritten or adjusted.
int SheetDataRewriter::next_row_to_look_at() {
    const int next = places_.next_row();
    if (next >= kMaxRows) return kMaxRows;
    int row = changed_.next_cleared_row(next);
    if (next_row_ < cells_.row_count()) row = std::min(row, cells_.row_at(next_row_).row);
    if (next <= groups_.last_row()) row = std::min(row, std::max(next, groups_.first_row()));
    return row;
}

// Stops before the next row that is to be looked at, and before anything that is not plain: the end
// of sheetData, rows without a number or out of order.
void SheetDataRewriter::copy_plain_rows() {
    const int stop = next_row_to_look_at();
    // Where rows are out of order, a changed one may come again.
    if (stop <= places_.next_row() || highest_row_ >= places_.next_row() ||
        row_prefix_.size() > kReadAhead / 4)
        return;
    const char* p = window_.cursor();
    // Where the next tag is not a plain row's, rows may have another form altogether.
    if (find_mark(p) != skip_spaces(p)) return;
    for (;;) {
        const char* const mark = find_mark(p);
        if (window_.end() - mark < kLongestMark && !window_.at_part_end()) {
            copy_to(mark);
            window_.refill();
            p = window_.cursor();
            continue;
        }
        if (begins_with(mark, window_.end(), "<!") || begins_with(mark, window_.end(), "<?")) {
            copy_to(mark);
            scanner_.next(); // a comment or CDATA, which may hold anything
            out_.append(scanner_.raw());
            p = window_.cursor();
            continue;
        }
        int row = 0;
        const char* const after = plain_row_number(mark, row);
        if (after == nullptr || row < places_.next_row() || row >= stop) {
            copy_to(mark);
            return;
        }
        places_.set_row(row);
        written_.set_row(row);
        p = after;
    }
}

void SheetDataRewriter::copy_to(const char* p) {
    const char* const begin = window_.cursor();
    out_.append({begin, static_cast<std::size_t>(p - begin)});
    window_.set_cursor(p);
}

// The first '<' at or after `p` that begins a row, the end of sheetData, a comment, CDATA or an
// instruction, or that is cut off; the window's end when there is none.
const char* SheetDataRewriter::find_mark(const char* p) const {
    const char* const end = window_.end();
    const std::size_t skip = 1 + row_prefix_.size();
    const auto is_name_end = [](char c) { return is_space(c) || c == '>' || c == '/'; };
    for (;; ++p) {
        p = find_byte(p, end, '<');
        if (p == end || p[1] == '!' || p[1] == '?') return p;
        if (p[skip] == 'r' && begins_with(p + skip, end, "row") && is_name_end(p[skip + 3]))
            return p;
        if (p[1] == '/' && p[skip + 1] == 's' && begins_with(p + skip + 1, end, "sheetData"))
            return p;
        if (end - p < kLongestMark && !window_.at_part_end()) return p;
    }
}

// At "<row r="7"": the place after the digits; null when something else is there.
const char* SheetDataRewriter::plain_row_number(const char* p, int& row) const {
    const std::string_view text(p, static_cast<std::size_t>(window_.end() - p));
    if (!text.starts_with('<') || !text.substr(1).starts_with(row_prefix_)) return nullptr;
    p += 1 + row_prefix_.size();
    if (!begins_with(p, window_.end(), "row r=\"")) return nullptr;
    p += 7;
    int number = 0;
    while (*p >= '0' && *p <= '9' && number <= kMaxRows)
        number = number * 10 + (*p++ - '0');
    row = number - 1;
    return *p == '"' && number > 0 && number <= kMaxRows ? p : nullptr;
}

} // namespace workbook
