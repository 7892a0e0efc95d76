// SPDX-License-Identifier: Apache-2.0
//
// Errors end here: they become the book's last error.
#include "workbook/file_book.h"

#include <algorithm>
#include <new>
#include <utility>

#include "foundation/files.h"
#include "foundation/unicode.h"
#include "workbook/error.h"

namespace workbook {

namespace {

/// Why a sheet that is there is not handed out.
const char* reason_without_cells(SheetKind kind) {
    switch (kind) {
    case SheetKind::Chart:
        return "it is a chart sheet";
    case SheetKind::Unknown:
        return "its kind is unknown or its part is missing";
    default:
        return "its cells were not loaded";
    }
}

} // namespace

template <class Action>
bool FileBook::attempt(const Action& action) const {
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

// --- Loading

template <class ReadCells>
bool FileBook::load_with(BookSource source, const ReadCells& read_cells) {
    loaded_.reset();
    load_failed_ = true;
    return attempt([&] {
        if (source.file == nullptr) source.file = foundation::files::open_for_reading(source.path);
        auto opened = open(std::move(source.file), std::move(source.path), error_);
        read_cells(*opened);
        opened->close_file();
        loaded_ = std::move(opened);
        load_failed_ = false;
    });
}

bool FileBook::load(BookSource source) {
    return load_with(std::move(source), [](LoadedBook& book) { book.load_sheets(); });
}

bool FileBook::load_sheet(BookSource source, int sheet_index) {
    return load_with(std::move(source), [&](LoadedBook& book) { book.load_rows(sheet_index, {}); });
}

bool FileBook::load_partially(BookSource source, int sheet_index, int first_row, int last_row) {
    return load_with(std::move(source), [&](LoadedBook& book) {
        book.load_rows(sheet_index,
                       {std::max(first_row, 0), std::min(last_row, book.limits.rows - 1)});
    });
}

bool FileBook::load_info(BookSource source) {
    return load_with(std::move(source), [](LoadedBook&) {});
}

std::vector<std::string> FileBook::load_warnings() const {
    return loaded_ == nullptr ? std::vector<std::string>{} : loaded_->warnings();
}

// --- Sheets and formats

int FileBook::sheet_count() const {
    return loaded_ == nullptr ? 0 : static_cast<int>(loaded_->sheet_count());
}

bool FileBook::has_sheet(int index) const {
    return index >= 0 && index < sheet_count();
}

bool FileBook::need_sheet(int index) const {
    if (has_sheet(index)) return true;
    error_.set(ErrorKind::Missing, "the workbook has no sheet of index " + std::to_string(index));
    return false;
}

Sheet* FileBook::get_sheet(int index) {
    if (!need_sheet(index)) return nullptr;
    const auto at = static_cast<std::size_t>(index);
    Sheet* sheet = loaded_->sheet(at);
    if (sheet == nullptr)
        error_.set(ErrorKind::Missing, "sheet \"" +
                                           foundation::unicode::to_utf8(loaded_->sheet_name(at)) +
                                           "\": " + reason_without_cells(loaded_->sheet_kind(at)));
    return sheet;
}

std::u16string_view FileBook::get_sheet_name(int index) const {
    if (!need_sheet(index)) return {};
    return loaded_->sheet_name(static_cast<std::size_t>(index));
}

SheetKind FileBook::sheet_type(int index) const {
    return has_sheet(index) ? loaded_->sheet_kind(static_cast<std::size_t>(index))
                            : SheetKind::Unknown;
}

std::optional<SheetScan> FileBook::scan_sheet(int index) {
    std::optional<SheetScan> scan;
    if (need_sheet(index) && sheet_type(index) == SheetKind::Worksheet)
        attempt([&] { scan = loaded_->scan_sheet(static_cast<std::size_t>(index)); });
    return scan;
}

std::vector<NamedCells> FileBook::named_cells() {
    std::vector<NamedCells> named;
    if (loaded_ != nullptr) attempt([&] { named = loaded_->named_cells(); });
    return named;
}

int FileBook::format_size() const {
    if (loaded_ == nullptr) return 0;
    attempt([&] { loaded_->need_formats(); });
    return static_cast<int>(loaded_->formats.size());
}

Format* FileBook::format(int index) {
    if (index >= 0 && index < format_size())
        return &loaded_->formats[static_cast<std::size_t>(index)];
    error_.set(ErrorKind::Missing, "the workbook has no cell format " + std::to_string(index));
    return nullptr;
}

bool FileBook::is_date_1904() const {
    return loaded_ != nullptr && loaded_->is_date_1904();
}

// --- Changes

template <class Change>
bool FileBook::try_change(const Change& change) {
    return attempt([&] {
        if (load_failed_) throw Error::refused("no workbook is loaded, since the last load failed");
        if (loaded_ == nullptr) loaded_ = make_new(error_);
        change(*loaded_);
    });
}

Format* FileBook::add_format() {
    Format* added = nullptr;
    try_change([&](LoadedBook& book) { added = &book.add_format(); });
    return added;
}

bool FileBook::set_date_1904(bool on) {
    return try_change([&](LoadedBook& book) { book.set_date_1904(on); });
}

Sheet* FileBook::insert_sheet(int index, std::u16string_view name, const Sheet* source) {
    Sheet* inserted = nullptr;
    try_change([&](LoadedBook& book) { inserted = &book.insert_sheet(index, name, source); });
    return inserted;
}

bool FileBook::delete_sheet(int index) {
    return try_change([&](LoadedBook& book) { book.delete_sheet(index); });
}

bool FileBook::move_sheet(int from, int to) {
    return try_change([&](LoadedBook& book) { book.move_sheet(from, to); });
}

bool FileBook::save(std::u16string_view path) {
    return try_change([&](LoadedBook& book) { last_save_ = book.save(path); });
}

bool FileBook::save(foundation::files::OutputFile& out, std::u16string_view extension) {
    return try_change([&](LoadedBook& book) { last_save_ = book.save(out, extension); });
}

} // namespace workbook
