// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/xls_sheet.h"

#include <algorithm>

#include "workbook/error.h"

namespace workbook {

namespace {

constexpr const char* kNoChanges = "sheets of XLS workbooks cannot be renamed, shown or hidden yet";

} // namespace

XlsSheet::XlsSheet(XlsContents& contents, const XlsSheetEntry& entry, RowSpan rows)
    : StoredSheet(contents), contents_(contents), entry_(entry) {
    loaded_rows_ = rows;
    try {
        contents_.read_rows(entry_, rows, cells_, tail_);
    } catch (const Error& error) {
        throw error.in_sheet(utf8_name());
    }
}

std::uint32_t XlsSheet::formats_end() const {
    std::uint32_t end = cells_.formats_end;
    for (const ColumnSpan& span : cells_.columns.spans)
        if (span.has_format) end = std::max(end, span.format + 1);
    return end;
}

std::optional<Rectangle> XlsSheet::named_cells(std::u16string_view name) const {
    return contents_.globals.names.find(name, contents_.index_of(entry_));
}

void XlsSheet::read_other_rows(SheetCells& cells) const {
    SheetTail known;
    contents_.read_rows(entry_, {}, cells, known);
    contents_.need_strings(cells.shared_strings_end);
}

bool XlsSheet::set_name(std::u16string_view) {
    return fail(ErrorKind::Refused, kNoChanges);
}

bool XlsSheet::set_hidden(SheetState) {
    return fail(ErrorKind::Refused, kNoChanges);
}

} // namespace workbook
