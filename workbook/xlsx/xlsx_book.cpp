// SPDX-License-Identifier: Apache-2.0
//
// Errors end here: every load turns them into the book's message.
#include "workbook/xlsx/xlsx_book.h"

#include <algorithm>
#include <new>

#include "foundation/files.h"
#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/xlsx_sheet.h"

namespace workbook {

namespace {

std::unique_ptr<OpcPackage> open_package(std::u16string_view path) {
    try {
        return std::make_unique<OpcPackage>(foundation::files::open_for_reading(path));
    } catch (const foundation::files::FileError& error) {
        throw Error::file(error.what());
    }
}

} // namespace

XlsxBook::XlsxBook() = default;
XlsxBook::~XlsxBook() = default;

template <class ReadCells>
bool XlsxBook::open(std::u16string_view path, const ReadCells& read_cells) {
    contents_.reset();
    try {
        auto contents = std::make_unique<BookContents>(open_package(path), error_message_);
        read_cells(*contents);
        contents->close_package();
        contents_ = std::move(contents);
        return true;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        error_message_ = error.what();
        return false;
    }
}

bool XlsxBook::load(std::u16string_view path) {
    return open(path, [](BookContents& contents) { contents.load_sheets(); });
}

bool XlsxBook::load_sheet(std::u16string_view path, int sheet_index) {
    return load_rows(path, sheet_index, {});
}

bool XlsxBook::load_partially(std::u16string_view path, int sheet_index, int first_row,
                              int last_row) {
    return load_rows(path, sheet_index, {std::max(first_row, 0), std::min(last_row, kMaxRows - 1)});
}

bool XlsxBook::load_rows(std::u16string_view path, int sheet_index, RowSpan rows) {
    return open(path, [&](BookContents& contents) { contents.load_rows(sheet_index, rows); });
}

bool XlsxBook::load_info(std::u16string_view path) {
    return open(path, [](BookContents&) {});
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
        error_message_ = "the workbook has no sheet of index " + std::to_string(index);
        return nullptr;
    }
    XlsxSheet* sheet = contents_->sheets[static_cast<std::size_t>(index)].get();
    if (sheet != nullptr) return sheet;
    const char* reason = found->kind == SheetKind::Chart ? "it is a chart sheet"
                         : found->kind == SheetKind::Unknown
                             ? "its kind is unknown or its part is missing"
                             : "its cells were not loaded";
    error_message_ = "sheet \"" + foundation::unicode::to_utf8(found->name) + "\": " + reason;
    return nullptr;
}

std::u16string_view XlsxBook::get_sheet_name(int index) const {
    const SheetEntry* found = entry(index);
    if (found != nullptr) return found->name;
    error_message_ = "the workbook has no sheet of index " + std::to_string(index);
    return {};
}

SheetKind XlsxBook::sheet_type(int index) const {
    const SheetEntry* found = entry(index);
    return found == nullptr ? SheetKind::Unknown : found->kind;
}

int XlsxBook::format_size() const {
    return contents_ == nullptr ? 0 : static_cast<int>(contents_->formats.size());
}

Format* XlsxBook::format(int index) {
    if (index < 0 || index >= format_size()) {
        error_message_ = "the workbook has no cell format " + std::to_string(index);
        return nullptr;
    }
    return &contents_->formats[static_cast<std::size_t>(index)];
}

Format* XlsxBook::add_format() {
    if (contents_ == nullptr || contents_->styles.size() >= kMaxCellFormats) {
        error_message_ = "the workbook can hold no more cell formats";
        return nullptr;
    }
    const std::size_t index = contents_->styles.add_format();
    return &contents_->formats.emplace_back(contents_->styles, index);
}

bool XlsxBook::set_date_1904(bool) {
    return false;
}

Sheet* XlsxBook::insert_sheet(int, std::u16string_view, const Sheet*) {
    return nullptr;
}

bool XlsxBook::delete_sheet(int) {
    return false;
}

bool XlsxBook::move_sheet(int, int) {
    return false;
}

bool XlsxBook::save(std::u16string_view) {
    return false;
}

bool XlsxBook::is_date_1904() const {
    return contents_ != nullptr && contents_->workbook.date_1904;
}

} // namespace workbook
