// SPDX-License-Identifier: Apache-2.0
//
// Loading: package, workbook part, wanted sheets, then the shared strings that their cells need.
#include "workbook/xlsx/xlsx_book.h"

#include <algorithm>
#include <limits>
#include <new>

#include "foundation/files.h"
#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/shared_strings.h"
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

void read_styles(BookContents& contents) {
    const std::string& part = contents.workbook.styles_part;
    if (!part.empty()) contents.styles = Styles(*contents.package->open_part(part));
    // Cells without a format have format 0, which a file need not define: a format added later must
    // not become theirs.
    if (contents.styles.size() == 0) contents.styles.add_format();
    for (std::size_t i = 0; i < contents.styles.size(); ++i)
        contents.formats.emplace_back(contents.styles, i);
}

/// Reads the cells of one sheet when it is a worksheet whose part is there.
void read_sheet(BookContents& contents, std::size_t index, RowSpan rows) {
    if (contents.workbook.sheets[index].kind != SheetKind::Worksheet) return;
    contents.sheets[index] = std::make_unique<XlsxSheet>(contents, static_cast<int>(index), rows);
}

/// Reads as many shared strings as the loaded sheets need.
void read_strings(BookContents& contents) {
    std::uint64_t wanted = 0;
    for (const auto& sheet : contents.sheets)
        if (sheet != nullptr) wanted = std::max(wanted, sheet->shared_strings_end());
    const std::string& part = contents.workbook.shared_strings_part;
    if (wanted > 0 && !part.empty())
        read_shared_strings(*contents.package->open_part(part), wanted, contents.shared_strings);
    for (const auto& sheet : contents.sheets)
        if (sheet != nullptr) sheet->check_shared_strings();
}

/// Closes the package unless a sheet comes back to it.
void close_package(BookContents& contents) {
    const bool is_complete =
        std::all_of(contents.sheets.begin(), contents.sheets.end(),
                    [](const auto& sheet) { return sheet == nullptr || sheet->is_complete(); });
    if (is_complete) contents.package.reset();
}

std::size_t wanted_sheet(const BookContents& contents, int index) {
    const std::size_t count = contents.workbook.sheets.size();
    if (index >= 0 && static_cast<std::size_t>(index) < count)
        return static_cast<std::size_t>(index);
    if (count == 1) return 0;
    throw Error::missing("the workbook has no sheet " + std::to_string(index + std::int64_t{1}) +
                         ", it has " + std::to_string(count));
}

} // namespace

BookContents::BookContents(std::unique_ptr<OpcPackage> opened, std::string& error_text)
    : package(std::move(opened)),
      workbook(read_workbook_part(*package)),
      sheets(workbook.sheets.size()),
      error_message(error_text) {}

BookContents::~BookContents() = default;

XlsxBook::XlsxBook() = default;
XlsxBook::~XlsxBook() = default;

template <class ReadCells>
bool XlsxBook::open(std::u16string_view path, const ReadCells& read_cells) {
    contents_.reset();
    try {
        auto contents = std::make_unique<BookContents>(open_package(path), error_message_);
        read_cells(*contents);
        close_package(*contents);
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
    return open(path, [](BookContents& contents) {
        read_styles(contents);
        for (std::size_t i = 0; i < contents.sheets.size(); ++i)
            read_sheet(contents, i, {});
        read_strings(contents);
    });
}

bool XlsxBook::load_sheet(std::u16string_view path, int sheet_index) {
    return load_rows(path, sheet_index, {});
}

bool XlsxBook::load_partially(std::u16string_view path, int sheet_index, int first_row,
                              int last_row) {
    return load_rows(path, sheet_index, {std::max(first_row, 0), std::min(last_row, kMaxRows - 1)});
}

bool XlsxBook::load_rows(std::u16string_view path, int sheet_index, RowSpan rows) {
    return open(path, [&](BookContents& contents) {
        read_styles(contents);
        read_sheet(contents, wanted_sheet(contents, sheet_index), rows);
        read_strings(contents);
    });
}

bool XlsxBook::load_info(std::u16string_view path) {
    return open(path, [](BookContents&) {});
}

const SheetEntry* XlsxBook::entry(int index) const {
    if (contents_ == nullptr || index < 0 ||
        static_cast<std::size_t>(index) >= contents_->workbook.sheets.size())
        return nullptr;
    return &contents_->workbook.sheets[static_cast<std::size_t>(index)];
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
    if (index < 0 || index >= format_size()) return nullptr;
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

bool XlsxBook::is_date_1904() const {
    return contents_ != nullptr && contents_->workbook.date_1904;
}

} // namespace workbook
