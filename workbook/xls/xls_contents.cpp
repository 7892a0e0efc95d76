// SPDX-License-Identifier: Apache-2.0
//
// Loading: globals, wanted sheets, then the shared strings that their cells need. Changes to the
// list of sheets are made here at once; records follow when the book is saved.
#include "workbook/xls/xls_contents.h"

#include <algorithm>
#include <utility>

#include "foundation/case_folding.h"
#include "foundation/unicode.h"
#include "workbook/cells/sheet_facts.h"
#include "workbook/cells/sheet_name_rules.h"
#include "workbook/error.h"
#include "workbook/xls/reading/formula_context_reader.h"
#include "workbook/xls/reading/shared_strings.h"
#include "workbook/xls/writing/blank_workbook.h"
#include "workbook/xls/writing/book_saver.h"
#include "workbook/xls/xls_limits.h"
#include "workbook/xls/xls_sheet.h"

namespace workbook {

XlsContents::XlsContents(WorkbookStream opened, std::u16string path, bool is_new_book,
                         LastError& last_error)
    : LoadedBook(kXlsLimits, last_error),
      is_new(is_new_book),
      source_path(std::move(path)),
      source(std::move(opened)),
      globals(read_globals(source.bytes)),
      date_1904(globals.date_1904),
      sheets(globals.sheets.size()) {
    for (const XlsSheetEntry& sheet : globals.sheets) {
        entries.push_back(std::make_unique<XlsSheetEntry>(sheet));
        entries.back()->original = entries.size() - 1;
    }
    add_formats();
}

XlsContents::XlsContents(WorkbookStream opened, std::u16string path, LastError& last_error)
    : XlsContents(std::move(opened), std::move(path), false, last_error) {}

XlsContents::XlsContents(LastError& last_error)
    : XlsContents({blank_globals(), {}, nullptr, u"Workbook", {}}, {}, true, last_error) {}

XlsContents::~XlsContents() = default;

void XlsContents::add_formats() {
    for (const NumberFormat& format : globals.formats.number_formats())
        cell_formats.define_number_format(format.identifier, format.code);
    for (const CellFormat& format : globals.formats.cell_formats())
        add_cell_format(format);
    // The first formats are those of styles (MS-XLS 2.4.353).
    constexpr std::uint32_t kFirstCellFormat = 15;
    if (formats.size() > kFirstCellFormat) default_format = kFirstCellFormat;
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
    XlsSheetEntry& entry = *entries[index];
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

void XlsContents::load_rows_of(const XlsSheetEntry& sheet, RowSpan rows, SheetCells& cells,
                               SheetTail& tail) {
    const SheetEnd end = read_rows(sheet, rows, cells, tail);
    loaded_bytes_ += end.position - sheet.position;
    if (loaded_bytes_ / kMaxSheetOverlap > source.bytes.size())
        throw Error::damaged("the workbook stream", "its sheets have their records in common");
    if (!end.is_stated)
        globals.warnings.push_back("sheet \"" + foundation::unicode::to_utf8(sheet.name) +
                                   "\" has no end; the file may be incomplete");
}

SheetEnd XlsContents::read_rows(const XlsSheetEntry& sheet, RowSpan rows, SheetCells& cells,
                                SheetTail& tail) {
    if (!sheet.has_cells) return {sheet.position, true};
    const CellContext context{globals.version, sheet.first_format,
                              globals.formats.has_xf_records()};
    return read_sheet(source.bytes, sheet.position, context, rows, globals.byte_text, cells, tail);
}

const biff::FormulaContext& XlsContents::formula_context() {
    if (!formula_context_) formula_context_ = read_formula_context(source.bytes, globals);
    return *formula_context_;
}

SheetScan XlsContents::scan_sheet(std::size_t index) {
    const XlsSheetEntry& sheet = *entries[index];
    SheetScan scan;
    SheetCells cells(kXlsLimits.columns);
    cells.cells.keep_bounds_only();
    SheetTail tail;
    read_rows(sheet, {}, cells, tail);
    fill_scan(cells, tail, scan);
    scan.state = sheet.state;
    return scan;
}

std::vector<NamedCells> XlsContents::named_cells() {
    std::vector<NamedCells> named;
    for (const XlsName& name : globals.names.names()) {
        const auto sheet = name.sheet ? name.sheet : name.scope;
        if (!name.cells || !sheet || name.name.starts_with(u"_xlnm._")) continue;
        named.push_back(make_named_cells(name.name, *sheet, name.scope, *name.cells));
    }
    return named;
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

Sheet* XlsContents::sheet(std::size_t index) const {
    return sheets[index].get();
}

// The stream is in memory; other streams are copied when the book is saved.
void XlsContents::close_file() {
    if (source.container != nullptr && !source_path.empty()) source.container->close_file();
}

// --- Changes

void XlsContents::check_name(std::u16string_view name, const XlsSheetEntry* own) const {
    check_sheet_name(name);
    for (const auto& entry : entries)
        if (entry.get() != own && foundation::unicode::equal_ignoring_case(entry->name, name))
            refuse_sheet_name(name, "another sheet of the book has this name");
}

void XlsContents::check_not_last_visible(const XlsSheetEntry& sheet) const {
    if (sheet.state != SheetState::Visible) return;
    const bool has_other = std::any_of(entries.begin(), entries.end(), [&](const auto& entry) {
        return entry.get() != &sheet && entry->state == SheetState::Visible;
    });
    if (has_other) return;
    throw Error::refused("sheet \"" + foundation::unicode::to_utf8(sheet.name) +
                         "\" is the only visible one, and a workbook needs a visible sheet");
}

// Formulas of older books name sheets themselves.
void XlsContents::check_list_can_change() const {
    if (globals.version < BiffVersion::Biff8)
        throw Error::refused("the sheets of a workbook as old as BIFF5 cannot be renamed, added, "
                             "moved or removed");
}

Sheet& XlsContents::insert_sheet(int index, std::u16string_view name, const Sheet* original) {
    check_list_can_change();
    const std::size_t at = checked_index(index, entries.size() + 1);
    check_name(name, nullptr);
    if (entries.size() >= kMaxXlsSheets)
        throw Error::refused("a workbook holds at most " + std::to_string(kMaxXlsSheets) +
                             " sheets");
    const auto found = std::find_if(sheets.begin(), sheets.end(), [original](const auto& sheet) {
        return sheet != nullptr && sheet.get() == original;
    });
    if (original != nullptr && found == sheets.end())
        throw Error::missing("the sheet to copy is not one of this workbook");
    if (original != nullptr && !(*found)->entry().has_cells)
        throw Error::refused("the sheet to copy is listed in the file without cells");
    auto entry = std::make_unique<XlsSheetEntry>();
    if (original != nullptr) *entry = (*found)->entry();
    entry->name = name;
    entry->state = SheetState::Visible;
    if (entry->original) entry->copy_of = entry->original;
    entry->original.reset();
    auto inserted = original == nullptr ? std::make_unique<XlsSheet>(*this, *entry)
                                        : std::make_unique<XlsSheet>(**found, *entry);
    const auto offset = static_cast<std::ptrdiff_t>(at);
    entries.reserve(entries.size() + 1);
    sheets.insert(sheets.begin() + offset, std::move(inserted));
    entries.insert(entries.begin() + offset, std::move(entry));
    return *sheets[at];
}

void XlsContents::delete_sheet(int index) {
    check_list_can_change();
    const std::size_t at = checked_index(index, entries.size());
    if (entries.size() == 1) throw Error::refused("a workbook needs at least one sheet");
    check_not_last_visible(*entries[at]);
    const auto offset = static_cast<std::ptrdiff_t>(at);
    sheets.erase(sheets.begin() + offset);
    entries.erase(entries.begin() + offset);
}

void XlsContents::move_sheet(int from, int to) {
    const std::size_t first = checked_index(from, entries.size());
    const std::size_t last = checked_index(to, entries.size());
    if (first == last) return;
    check_list_can_change();
    move_element(entries, first, last);
    move_element(sheets, first, last);
}

void XlsContents::rename_sheet(XlsSheetEntry& sheet, std::u16string_view name) {
    check_name(name, &sheet);
    check_list_can_change();
    sheet.name = name;
}

void XlsContents::set_sheet_state(XlsSheetEntry& sheet, SheetState state) {
    if (state == sheet.state) return;
    check_list_can_change();
    if (state != SheetState::Visible) check_not_last_visible(sheet);
    sheet.state = state;
}

SaveCounts XlsContents::save(std::u16string_view path) {
    return save_book(*this, path);
}

SaveCounts XlsContents::save(foundation::files::OutputFile& out, std::u16string_view) {
    return save_book(*this, out);
}

} // namespace workbook
