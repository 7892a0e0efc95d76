// SPDX-License-Identifier: Apache-2.0
//
// What a sheet of the binary formats adds to a stored one.
#include "workbook/xls/xls_sheet.h"

#include <algorithm>

#include "workbook/error.h"
#include "workbook/xls/reading/formula_reader.h"
#include "workbook/xls/writing/sheet_rewriter.h"

namespace workbook {

XlsSheet::XlsSheet(XlsContents& contents, XlsSheetEntry& entry, RowSpan rows)
    : StoredSheet(contents), contents_(contents), entry_(entry) {
    loaded_rows_ = rows;
    try {
        contents_.load_rows_of(entry_, rows, cells_, tail_);
    } catch (const Error& error) {
        throw error.in_sheet(utf8_name());
    }
    if (!entry_.has_cells)
        refuse_changes("it cannot be changed, since the file lists it without cells: add a sheet");
}

XlsSheet::XlsSheet(XlsContents& contents, XlsSheetEntry& entry)
    : StoredSheet(contents), contents_(contents), entry_(entry) {}

XlsSheet::XlsSheet(const XlsSheet& original, XlsSheetEntry& entry)
    : StoredSheet(original), contents_(original.contents_), entry_(entry) {}

std::uint64_t XlsSheet::added_string_cells() const {
    std::uint64_t count = 0;
    cells_.cells.for_each([&count](int, const StoredCell& cell) {
        if (cell.stored_kind() == StoredKind::AddedString) ++count;
    });
    return count;
}

std::string XlsSheet::write(std::string_view stream, std::size_t position,
                            const AddedStrings& strings) const {
    return rewrite_sheet({.stream = stream,
                          .position = position,
                          .version = contents_.globals.version,
                          .default_format = static_cast<std::uint16_t>(contents_.default_format),
                          .cells = cells_.cells,
                          .changes = changes_,
                          .strings = strings});
}

std::uint32_t XlsSheet::formats_end() const {
    std::uint32_t end = cells_.formats_end;
    for (const ColumnSpan& span : cells_.columns.spans)
        if (span.has_format) end = std::max(end, span.format + 1);
    return end;
}

std::optional<Rectangle> XlsSheet::named_cells(std::u16string_view name) const {
    const auto loaded = entry_.original ? entry_.original : entry_.copy_of;
    if (!loaded) return {};
    return contents_.globals.names.find(name, static_cast<int>(*loaded));
}

void XlsSheet::read_other_rows(SheetCells& cells) const {
    SheetTail known;
    contents_.read_rows(entry_, {}, cells, known);
    contents_.need_strings(cells.shared_strings_end);
}

bool XlsSheet::visit_formulas(int first_row, int last_row, const FormulaVisitor& visit) const {
    if (!entry_.has_cells || (!entry_.original && !entry_.copy_of)) return true;
    try {
        read_xls_formulas(contents_.source.bytes, entry_.position, {first_row, last_row},
                          contents_.formula_context(), visit);
        return true;
    } catch (const Error& error) {
        return fail(error.kind(), error.what());
    }
}

bool XlsSheet::set_name(std::u16string_view name) {
    try {
        contents_.rename_sheet(entry_, name);
        return true;
    } catch (const Error& error) {
        contents_.error.set(error); // it names the sheet
        return false;
    }
}

bool XlsSheet::set_hidden(SheetState state) {
    try {
        contents_.set_sheet_state(entry_, state);
        return true;
    } catch (const Error& error) {
        contents_.error.set(error); // it names the sheet
        return false;
    }
}

} // namespace workbook
