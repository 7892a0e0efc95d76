// SPDX-License-Identifier: Apache-2.0
//
// Errors end here: they become the book's last error.
#include "workbook/xls/xls_book.h"

#include <algorithm>
#include <new>
#include <utility>

#include "foundation/files.h"
#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/xls/writing/book_saver.h"
#include "workbook/xls/xls_limits.h"
#include "workbook/xls/xls_sheet.h"

namespace workbook {

XlsBook::XlsBook() = default;
XlsBook::~XlsBook() = default;

template <class Action>
bool XlsBook::attempt(const Action& action) {
    try {
        action();
        return true;
    } catch (const std::bad_alloc& error) {
        error_.set(error);
        throw;
    } catch (const std::exception& error) {
        error_.set(error);
        return false;
    }
}

template <class ReadCells>
bool XlsBook::open(BookSource source, const ReadCells& read_cells) {
    contents_.reset();
    load_failed_ = true;
    return attempt([&] {
        if (source.file == nullptr) source.file = foundation::files::open_for_reading(source.path);
        auto opened = std::make_unique<XlsContents>(read_workbook_stream(std::move(source.file)),
                                                    source.path, error_);
        read_cells(*opened);
        // Nobody is kept from replacing the file: all of the stream is in memory.
        if (opened->source.container != nullptr && !source.path.empty())
            opened->source.container->close_file();
        contents_ = std::move(opened);
        load_failed_ = false;
    });
}

bool XlsBook::load(BookSource source) {
    return open(std::move(source), [](XlsContents& contents) { contents.load_sheets(); });
}

bool XlsBook::load_sheet(BookSource source, int sheet_index) {
    return load_rows(std::move(source), sheet_index, {});
}

bool XlsBook::load_partially(BookSource source, int sheet_index, int first_row, int last_row) {
    return load_rows(std::move(source), sheet_index,
                     {std::max(first_row, 0), std::min(last_row, kXlsLimits.rows - 1)});
}

bool XlsBook::load_rows(BookSource source, int sheet_index, RowSpan rows) {
    return open(std::move(source),
                [&](XlsContents& contents) { contents.load_rows(sheet_index, rows); });
}

bool XlsBook::load_info(BookSource source) {
    return open(std::move(source), [](XlsContents&) {});
}

std::vector<std::string> XlsBook::load_warnings() const {
    return contents_ == nullptr ? std::vector<std::string>{} : contents_->globals.warnings;
}

const XlsSheetEntry* XlsBook::entry(int index) const {
    if (index >= 0 && index < sheet_count())
        return contents_->entries[static_cast<std::size_t>(index)].get();
    error_.set(ErrorKind::Missing, "the workbook has no sheet of index " + std::to_string(index));
    return nullptr;
}

int XlsBook::sheet_count() const {
    return contents_ == nullptr ? 0 : static_cast<int>(contents_->entries.size());
}

Sheet* XlsBook::get_sheet(int index) {
    const XlsSheetEntry* found = entry(index);
    if (found == nullptr) return nullptr;
    XlsSheet* sheet = contents_->sheets[static_cast<std::size_t>(index)].get();
    if (sheet != nullptr) return sheet;
    const char* reason = found->kind == SheetKind::Chart ? "\": it is a chart sheet"
                                                         : "\": its cells were not loaded";
    error_.set(ErrorKind::Missing, "sheet \"" + foundation::unicode::to_utf8(found->name) + reason);
    return nullptr;
}

std::u16string_view XlsBook::get_sheet_name(int index) const {
    const XlsSheetEntry* found = entry(index);
    return found == nullptr ? std::u16string_view{} : found->name;
}

SheetKind XlsBook::sheet_type(int index) const {
    const XlsSheetEntry* found = entry(index);
    return found == nullptr ? SheetKind::Unknown : found->kind;
}

std::optional<SheetScan> XlsBook::scan_sheet(int index) {
    const XlsSheetEntry* const found = entry(index);
    if (found == nullptr || found->kind != SheetKind::Worksheet) return std::nullopt;
    std::optional<SheetScan> scan;
    attempt([&] { scan = contents_->scan_sheet(*found); });
    return scan;
}

std::vector<NamedCells> XlsBook::named_cells() {
    return contents_ == nullptr ? std::vector<NamedCells>{} : contents_->named_cells();
}

int XlsBook::format_size() const {
    return contents_ == nullptr ? 0 : static_cast<int>(contents_->formats.size());
}

Format* XlsBook::format(int index) {
    if (index >= 0 && index < format_size())
        return &contents_->formats[static_cast<std::size_t>(index)];
    error_.set(ErrorKind::Missing, "the workbook has no cell format " + std::to_string(index));
    return nullptr;
}

Format* XlsBook::add_format() {
    Format* added = nullptr;
    try_change([&](XlsContents& contents) { added = &contents.add_format(); });
    return added;
}

bool XlsBook::is_date_1904() const {
    return contents_ != nullptr && contents_->date_1904;
}

// --- Changes

template <class Action>
bool XlsBook::try_change(const Action& action) {
    return attempt([&] {
        if (load_failed_) throw Error::refused("no workbook is loaded, since the last load failed");
        if (contents_ == nullptr) contents_ = std::make_unique<XlsContents>(error_);
        action(*contents_);
    });
}

bool XlsBook::set_date_1904(bool on) {
    return try_change([&](XlsContents& contents) { contents.date_1904 = on; });
}

Sheet* XlsBook::insert_sheet(int index, std::u16string_view name, const Sheet* source) {
    Sheet* inserted = nullptr;
    try_change(
        [&](XlsContents& contents) { inserted = &contents.insert_sheet(index, name, source); });
    return inserted;
}

bool XlsBook::delete_sheet(int index) {
    return try_change([&](XlsContents& contents) { contents.delete_sheet(index); });
}

bool XlsBook::move_sheet(int from, int to) {
    return try_change([&](XlsContents& contents) { contents.move_sheet(from, to); });
}

bool XlsBook::save(std::u16string_view path) {
    return try_change([&](XlsContents& contents) { last_save_ = save_book(contents, path); });
}

bool XlsBook::save(foundation::files::OutputFile& out, std::u16string_view) {
    return try_change([&](XlsContents& contents) { last_save_ = save_book(contents, out); });
}

} // namespace workbook
