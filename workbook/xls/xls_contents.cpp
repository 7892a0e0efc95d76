// SPDX-License-Identifier: Apache-2.0
//
// Loading: globals, wanted sheets, then the shared strings that their cells need.
#include "workbook/xls/xls_contents.h"

#include <algorithm>
#include <utility>

#include "workbook/error.h"
#include "workbook/xls/reading/shared_strings.h"
#include "workbook/xls/reading/sheet_reader.h"
#include "workbook/xls/xls_limits.h"
#include "workbook/xls/xls_sheet.h"

namespace workbook {

XlsContents::XlsContents(WorkbookStream opened, LastError& last_error)
    : StoredBook(kXlsLimits, last_error),
      source(std::move(opened)),
      globals(read_globals(source.bytes)),
      sheets(globals.sheets.size()) {
    add_formats();
}

XlsContents::~XlsContents() = default;

void XlsContents::add_formats() {
    for (const NumberFormat& format : globals.formats.number_formats())
        cell_formats.define_number_format(format.identifier, format.code);
    for (const CellFormat& format : globals.formats.cell_formats())
        add_cell_format(format);
}

void XlsContents::load_sheets() {
    for (std::size_t i = 0; i < sheets.size(); ++i)
        read_sheet_at(i, {});
    finish_sheets();
}

void XlsContents::load_rows(int sheet_index, RowSpan rows) {
    read_sheet_at(wanted_sheet(sheet_index), rows);
    finish_sheets();
}

void XlsContents::read_sheet_at(std::size_t index, RowSpan rows) {
    const XlsSheetEntry& entry = globals.sheets[index];
    if (entry.kind == SheetKind::Worksheet)
        sheets[index] = std::make_unique<XlsSheet>(*this, entry, rows);
}

// Damaged files have cells with formats that they do not define. A format that is added later must
// not become theirs.
void XlsContents::finish_sheets() {
    std::uint64_t strings_end = 0;
    std::uint32_t formats_end = 0;
    for (const auto& sheet : sheets) {
        if (sheet == nullptr) continue;
        strings_end = std::max(strings_end, sheet->shared_strings_end());
        formats_end = std::max(formats_end, sheet->formats_end());
    }
    while (formats.size() < formats_end)
        add_cell_format();
    need_strings(strings_end);
    for (const auto& sheet : sheets)
        if (sheet != nullptr) sheet->check_shared_strings();
}

void XlsContents::read_rows(const XlsSheetEntry& sheet, RowSpan rows, SheetCells& cells,
                            SheetTail& tail) {
    if (!sheet.has_cells) return;
    const CellContext context{globals.version, sheet.first_format,
                              globals.formats.has_xf_records()};
    read_sheet(source.bytes, sheet.position, context, rows, globals.byte_text, cells, tail);
}

void XlsContents::need_strings(std::uint64_t end) {
    if (end <= shared_strings.size() || !globals.shared_strings) return;
    StringPool strings;
    read_shared_strings(source.bytes, *globals.shared_strings, end, strings);
    shared_strings = std::move(strings);
}

StoredFormat& XlsContents::add_format() {
    if (formats.size() >= kMaxXlsFormats)
        throw Error::refused("the workbook can hold no more than " +
                             std::to_string(kMaxXlsFormats) + " cell formats");
    return add_cell_format();
}

int XlsContents::index_of(const XlsSheetEntry& sheet) const {
    return static_cast<int>(&sheet - globals.sheets.data());
}

std::size_t XlsContents::wanted_sheet(int index) const {
    const std::size_t count = globals.sheets.size();
    if (index >= 0 && static_cast<std::size_t>(index) < count)
        return static_cast<std::size_t>(index);
    if (count == 1) return 0;
    throw Error::missing("the workbook has no sheet " + std::to_string(index + std::int64_t{1}) +
                         ", it has " + std::to_string(count));
}

} // namespace workbook
