// SPDX-License-Identifier: Apache-2.0
//
// Errors end here: they become the book's message.
#include "workbook/xlsx/xlsx_book.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

#include "foundation/files.h"
#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/xlsx/writing/blank_package.h"
#include "workbook/xlsx/writing/book_saver.h"
#include "workbook/xlsx/xlsx_limits.h"
#include "workbook/xlsx/xlsx_sheet.h"

namespace workbook {

namespace {

std::unique_ptr<OpcPackage> open_package(BookSource& source) {
    if (source.file == nullptr) source.file = foundation::files::open_for_reading(source.path);
    return std::make_unique<OpcPackage>(std::move(source.file));
}

} // namespace

XlsxBook::XlsxBook() = default;
XlsxBook::~XlsxBook() = default;

template <class Action>
bool XlsxBook::attempt(const Action& action) {
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
bool XlsxBook::open(BookSource source, const ReadCells& read_cells) {
    contents_.reset();
    load_failed_ = true;
    return attempt([&] {
        auto opened = std::make_unique<BookContents>(open_package(source), source.path, error_);
        read_cells(*opened);
        opened->close_package();
        contents_ = std::move(opened);
        load_failed_ = false;
    });
}

BookContents& XlsxBook::contents() {
    if (load_failed_) throw Error::refused("no workbook is loaded, since the last load failed");
    if (contents_ == nullptr) {
        contents_ = std::make_unique<BookContents>(
            make_blank_package(std::chrono::system_clock::now()), u"", error_);
        contents_->is_new = true;
        contents_->load_sheets();
    }
    return *contents_;
}

template <class Change>
bool XlsxBook::try_change(const Change& change) {
    return attempt([&] { change(contents()); });
}

bool XlsxBook::load(BookSource source) {
    return open(std::move(source), [](BookContents& contents) { contents.load_sheets(); });
}

bool XlsxBook::load_sheet(BookSource source, int sheet_index) {
    return load_rows(std::move(source), sheet_index, {});
}

bool XlsxBook::load_partially(BookSource source, int sheet_index, int first_row, int last_row) {
    return load_rows(std::move(source), sheet_index,
                     {std::max(first_row, 0), std::min(last_row, kMaxRows - 1)});
}

bool XlsxBook::load_rows(BookSource source, int sheet_index, RowSpan rows) {
    return open(std::move(source),
                [&](BookContents& contents) { contents.load_rows(sheet_index, rows); });
}

bool XlsxBook::load_info(BookSource source) {
    return open(std::move(source), [](BookContents&) {});
}

std::vector<std::string> XlsxBook::load_warnings() const {
    return contents_ == nullptr ? std::vector<std::string>{} : contents_->workbook.warnings;
}

const SheetEntry* XlsxBook::entry(int index) const {
    if (contents_ == nullptr || index < 0 ||
        static_cast<std::size_t>(index) >= contents_->workbook.sheets.size())
        return nullptr;
    return contents_->workbook.sheets[static_cast<std::size_t>(index)].get();
}

int XlsxBook::sheet_count() const {
    return contents_ == nullptr ? 0 : static_cast<int>(contents_->workbook.sheets.size());
}

Sheet* XlsxBook::get_sheet(int index) {
    const SheetEntry* found = entry(index);
    if (found == nullptr) {
        error_.set(ErrorKind::Missing,
                   "the workbook has no sheet of index " + std::to_string(index));
        return nullptr;
    }
    XlsxSheet* sheet = contents_->sheets[static_cast<std::size_t>(index)].get();
    if (sheet != nullptr) return sheet;
    const char* reason = found->kind == SheetKind::Chart ? "it is a chart sheet"
                         : found->kind == SheetKind::Unknown
                             ? "its kind is unknown or its part is missing"
                             : "its cells were not loaded";
    error_.set(ErrorKind::Missing,
               "sheet \"" + foundation::unicode::to_utf8(found->name) + "\": " + reason);
    return nullptr;
}

std::u16string_view XlsxBook::get_sheet_name(int index) const {
    const SheetEntry* found = entry(index);
    if (found != nullptr) return found->name;
    error_.set(ErrorKind::Missing, "the workbook has no sheet of index " + std::to_string(index));
    return {};
}

SheetKind XlsxBook::sheet_type(int index) const {
    const SheetEntry* found = entry(index);
    return found == nullptr ? SheetKind::Unknown : found->kind;
}

std::optional<SheetScan> XlsxBook::scan_sheet(int index) {
    const SheetEntry* const found = entry(index);
    if (found == nullptr || found->kind != SheetKind::Worksheet) return std::nullopt;
    std::optional<SheetScan> scan;
    attempt([&] { scan = contents_->scan_sheet(*found); });
    return scan;
}

std::vector<NamedCells> XlsxBook::named_cells() {
    std::vector<NamedCells> named;
    if (contents_ != nullptr) attempt([&] { named = contents_->named_cells(); });
    return named;
}

int XlsxBook::format_size() const {
    if (contents_ == nullptr) return 0;
    try {
        contents_->need_styles();
    } catch (const Error& error) {
        error_.set(error);
    }
    return static_cast<int>(contents_->formats.size());
}

Format* XlsxBook::format(int index) {
    if (index < 0 || index >= format_size()) {
        error_.set(ErrorKind::Missing, "the workbook has no cell format " + std::to_string(index));
        return nullptr;
    }
    return &contents_->formats[static_cast<std::size_t>(index)];
}

Format* XlsxBook::add_format() {
    Format* added = nullptr;
    try_change([&added](BookContents& contents) { added = &contents.add_format(); });
    return added;
}

bool XlsxBook::is_date_1904() const {
    return contents_ != nullptr && contents_->workbook.date_1904;
}

// --- Changes

bool XlsxBook::set_date_1904(bool on) {
    return try_change([on](BookContents& contents) { contents.set_date_1904(on); });
}

Sheet* XlsxBook::insert_sheet(int index, std::u16string_view name, const Sheet* source) {
    Sheet* inserted = nullptr;
    try_change(
        [&](BookContents& contents) { inserted = &contents.insert_sheet(index, name, source); });
    return inserted;
}

bool XlsxBook::delete_sheet(int index) {
    return try_change([index](BookContents& contents) { contents.delete_sheet(index); });
}

bool XlsxBook::move_sheet(int from, int to) {
    return try_change([from, to](BookContents& contents) { contents.move_sheet(from, to); });
}

bool XlsxBook::save(std::u16string_view path) {
    return try_change([&](BookContents& contents) { last_save_ = save_book(contents, path); });
}

bool XlsxBook::save(foundation::files::OutputFile& out, std::u16string_view extension) {
    return try_change(
        [&](BookContents& contents) { last_save_ = save_book(contents, out, extension); });
}

} // namespace workbook
