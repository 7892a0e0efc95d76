// SPDX-License-Identifier: Apache-2.0
//
// Loading: package, workbook part, wanted sheets, then the shared strings that their cells need.
#include "workbook/xlsx/book_contents.h"

#include <algorithm>

#include "foundation/case_folding.h"
#include "foundation/unicode.h"
#include "workbook/cells/sheet_facts.h"
#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/formula/formula_text.h"
#include "workbook/xlsx/formula/formula_tokens.h"
#include "workbook/xlsx/reading/shared_strings.h"
#include "workbook/xlsx/reading/sheet_tables.h"
#include "workbook/xlsx/reading/styles_reader.h"
#include "workbook/xlsx/reading/worksheet_reader.h"
#include "workbook/xlsx/structure/workbook_editor.h"
#include "workbook/xlsx/writing/book_saver.h"
#include "workbook/xlsx/xlsx_limits.h"
#include "workbook/xlsx/xlsx_sheet.h"

namespace workbook {

BookContents::BookContents(std::unique_ptr<OpcPackage> opened, std::u16string_view path,
                           LastError& last_error)
    : LoadedBook(kXlsxLimits, last_error),
      package(std::move(opened)),
      source_path(path),
      workbook(read_workbook_part(*package)),
      sheets(workbook.sheets.size()) {}

BookContents::~BookContents() = default;

void BookContents::load_sheets() {
    need_formats();
    for (std::size_t i = 0; i < sheets.size(); ++i)
        read_sheet(i, {});
    read_strings();
}

void BookContents::load_rows(int sheet_index, RowSpan rows) {
    need_formats();
    read_sheet(wanted_sheet(sheet_index), rows);
    read_strings();
}

int BookContents::index_of(const SheetEntry& sheet) const {
    const auto found = std::find_if(workbook.sheets.begin(), workbook.sheets.end(),
                                    [&sheet](const auto& entry) { return entry.get() == &sheet; });
    return static_cast<int>(found - workbook.sheets.begin());
}

std::optional<std::string> BookContents::missing_in(std::string_view formula) {
    using foundation::unicode::equal_ignoring_case;
    std::optional<std::string> missing;
    const auto look_up = [&missing](const char* what, std::string_view name, const auto& known) {
        const std::u16string wanted = foundation::unicode::to_utf16(name);
        const bool is_known = std::any_of(known.begin(), known.end(), [&](const auto& other) {
            return equal_ignoring_case(other, wanted);
        });
        if (!is_known && !missing) missing = std::string(what) + " \"" + std::string(name) + '"';
    };
    if (formula.find('!') != std::string_view::npos) {
        std::vector<std::u16string_view> known;
        for (const auto& entry : workbook.sheets)
            known.push_back(entry->name);
        rename_sheets(formula, [&](std::string_view name) -> std::optional<std::string> {
            look_up("sheet", name, known);
            return std::string(name);
        });
    }
    if (formula.find('[') == std::string_view::npos) return missing;
    std::vector<std::u16string> tables;
    for (NamedCells& named : named_cells())
        if (named.is_table) tables.push_back(std::move(named.name));
    FormulaTokenizer tokenizer(formula);
    for (FormulaToken token = tokenizer.next(); !token.text.empty(); token = tokenizer.next()) {
        const std::size_t bracket = token.text.find('[');
        if (token.kind == FormulaTokenKind::Name && bracket != std::string_view::npos)
            look_up("table", token.text.substr(0, bracket), tables);
    }
    return missing;
}

void BookContents::need_formats() {
    if (has_styles_) return;
    const PackageReading reading(*this);
    read_styles();
    has_styles_ = true;
}

// Damaged files have cells with formats that they do not define. A format that is added must not
// become theirs, so their indexes go to formats that change nothing.
StoredFormat& BookContents::add_format() {
    need_formats();
    if (claimed_formats_.empty()) {
        claimed_formats_.resize(kMaxCellFormats);
        for (const auto& sheet : sheets)
            if (sheet != nullptr) sheet->mark_formats(cell_formats.size(), claimed_formats_);
    }
    for (bool is_claimed = true; is_claimed;) {
        if (cell_formats.size() >= kMaxCellFormats)
            throw Error::limit("the workbook",
                               "more than " + std::to_string(kMaxCellFormats) + " cell formats");
        is_claimed = claimed_formats_[cell_formats.size()];
        add_cell_format();
    }
    return formats.back();
}

void BookContents::read_styles() {
    const std::string& part = workbook.styles_part;
    if (!part.empty()) cell_formats = workbook::read_styles(*package->open_part(part));
    formats_in_file = cell_formats.size();
    // Cells without a format have format 0, which a file need not define: a format added later must
    // not become theirs.
    if (cell_formats.size() == 0) cell_formats.add();
    for (std::size_t i = 0; i < cell_formats.size(); ++i)
        formats.emplace_back(cell_formats, i);
}

void BookContents::read_sheet(std::size_t index, RowSpan rows) {
    SheetEntry& entry = *workbook.sheets[index];
    if (entry.kind != SheetKind::Worksheet) return;
    sheets[index] = entry.part.empty() ? std::make_unique<XlsxSheet>(*this, entry)
                                       : std::make_unique<XlsxSheet>(*this, entry, rows);
}

void BookContents::read_strings() {
    std::uint64_t wanted = 0;
    for (const auto& sheet : sheets)
        if (sheet != nullptr) wanted = std::max(wanted, sheet->shared_strings_end());
    need_strings(wanted);
    for (const auto& sheet : sheets)
        if (sheet != nullptr) sheet->check_shared_strings();
}

void BookContents::need_strings(std::uint64_t end) {
    const std::string& part = workbook.shared_strings_part;
    if (end <= shared_strings.size() || part.empty()) return;
    StringPool strings;
    read_shared_strings(*package->open_part(part), end, strings);
    shared_strings = std::move(strings);
}

std::unique_ptr<ByteSource> BookContents::open_sheet_part(const SheetEntry& sheet) {
    return editor_ != nullptr ? editor_->open_sheet(sheet) : package->open_part(sheet.part);
}

Sheet* BookContents::sheet(std::size_t index) const {
    return sheets[index].get();
}

SheetScan BookContents::scan_sheet(std::size_t index) {
    const SheetEntry& sheet = *workbook.sheets[index];
    SheetScan scan;
    scan.state = sheet.state;
    if (sheet.part.empty()) return scan;
    SheetCells cells(kMaxColumns);
    cells.cells.keep_bounds_only();
    SheetTail tail;
    try {
        const PackageReading reading(*this);
        read_worksheet(*open_sheet_part(sheet), {}, date_base(workbook), cells, tail);
    } catch (const Error& failure) {
        throw failure.in_sheet(foundation::unicode::to_utf8(sheet.name));
    }
    fill_scan(cells, tail, scan);
    return scan;
}

std::vector<NamedCells> BookContents::named_cells() {
    std::vector<NamedCells> named;
    for (const DefinedName& name : workbook.defined_names) {
        if (name.is_hidden || name.name.starts_with(u"_xlnm._")) continue;
        const auto area = parse_named_area(name.formula);
        if (!area) continue;
        const auto sheet = area->sheet.empty() ? name.sheet_index : sheet_of_name(area->sheet);
        if (sheet)
            named.push_back(make_named_cells(name.name, *sheet, name.sheet_index, area->cells));
    }
    const PackageReading reading(*this);
    for (std::size_t i = 0; i < workbook.sheets.size(); ++i)
        for (const SheetTable& table : read_tables(*package, workbook.sheets[i]->part)) {
            named.push_back(
                make_named_cells(table.name, static_cast<int>(i), std::nullopt, table.cells));
            named.back().is_table = true;
        }
    return named;
}

std::optional<int> BookContents::sheet_of_name(std::u16string_view name) const {
    for (std::size_t i = 0; i < workbook.sheets.size(); ++i)
        if (foundation::unicode::equal_ignoring_case(workbook.sheets[i]->name, name))
            return static_cast<int>(i);
    return std::nullopt;
}

// --- Changes

void BookContents::open_package() {
    if (package->is_open()) return;
    if (!saved_bytes_) {
        package->reopen(open_source());
        return;
    }
    auto file = open_source();
    if (file->size() != *saved_bytes_)
        throw Error::file("the file has been changed on disk since it was saved");
    package = std::make_unique<OpcPackage>(std::move(file));
    if (editor_ != nullptr) editor_->rebase(*package);
    saved_bytes_.reset();
}

std::unique_ptr<foundation::files::RandomAccessFile> BookContents::open_source() const {
    try {
        return foundation::files::open_for_reading(source_path);
    } catch (const foundation::files::FileError& problem) {
        throw Error::file(problem, "the file that was loaded cannot be opened again");
    }
}

void BookContents::close_package() {
    const bool is_complete = std::all_of(sheets.begin(), sheets.end(), [](const auto& sheet) {
        return sheet == nullptr || sheet->is_tail_read();
    });
    if (is_complete && !source_path.empty()) package->close_file();
}

WorkbookEditor& BookContents::editor() {
    open_package();
    if (editor_ == nullptr) editor_ = std::make_unique<WorkbookEditor>(*package, workbook);
    return *editor_;
}

Sheet& BookContents::insert_sheet(int index, std::u16string_view name, const Sheet* source) {
    const std::size_t at = checked_index(index, workbook.sheets.size() + 1);
    const auto original = std::find_if(sheets.begin(), sheets.end(), [source](const auto& sheet) {
        return sheet != nullptr && sheet.get() == source;
    });
    if (source != nullptr && original == sheets.end())
        throw Error::missing("the sheet to copy is not one of this workbook");
    if (source != nullptr && !source->need_tail())
        throw Error::damaged("the sheet to copy", error.message());
    need_formats();
    std::unique_ptr<XlsxSheet> inserted;
    if (source == nullptr)
        inserted = std::make_unique<XlsxSheet>(*this, editor().insert_sheet(at, name));
    else
        inserted = std::make_unique<XlsxSheet>(**original,
                                               editor().copy_sheet(at, name, (*original)->entry()));
    return **sheets.insert(sheets.begin() + static_cast<std::ptrdiff_t>(at), std::move(inserted));
}

void BookContents::delete_sheet(int index) {
    const std::size_t at = checked_index(index, workbook.sheets.size());
    editor().remove_sheet(at);
    sheets.erase(sheets.begin() + static_cast<std::ptrdiff_t>(at));
}

void BookContents::move_sheet(int from, int to) {
    const std::size_t first = checked_index(from, workbook.sheets.size());
    const std::size_t last = checked_index(to, workbook.sheets.size());
    editor().move_sheet(first, last);
    move_element(sheets, first, last);
}

void BookContents::rename_sheet(SheetEntry& sheet, std::u16string_view name) {
    editor().rename_sheet(sheet, name);
}

void BookContents::set_sheet_state(SheetEntry& sheet, SheetState state) {
    editor().set_state(sheet, state);
}

void BookContents::set_date_1904(bool on) {
    editor().set_date_1904(on);
}

SaveCounts BookContents::save(std::u16string_view path) {
    return save_book(*this, path);
}

SaveCounts BookContents::save(foundation::files::OutputFile& out, std::u16string_view extension) {
    return save_book(*this, out, extension);
}

// The save is done; whether the file can be opened again is a matter of the next call that needs
// it.
void BookContents::continue_with_saved_file(std::uint64_t file_bytes) {
    saved_bytes_ = file_bytes;
    formats_in_file = std::max(formats_in_file, used_formats_end);
}

} // namespace workbook
