// SPDX-License-Identifier: Apache-2.0
//
// Making, changing and saving a workbook file.
#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/libxl/library_failure.h"
#include "spreadsheet/libxl/libxl_book.h"
#include "spreadsheet/libxl/libxl_sheet.h"

namespace spreadsheet {
namespace {

/// Runs one change of the library; memory that runs out is a failure like any other.
template <class Change>
auto run_change(std::string_view tag, error_id id, Change change) {
    try {
        return change();
    } catch (const std::bad_alloc&) {
        libxl::fail_without_memory(tag, id);
    }
}

constexpr std::string_view kAddCopyTag =
    "[LIBXL BOOK OBJ ADD_SHEET, SHEET TO COPY IS NOT EMPTY, MSG]:";
constexpr std::string_view kAddEmptyTag =
    "[LIBXL BOOK OBJ ADD_SHEET, SHEET TO COPY IS EMPTY, MSG]:";

} // namespace

std::shared_ptr<ISheet> LibXLBook::cached(const workbook::Sheet* handle) const {
    const auto found = std::find_if(sheets_.begin(), sheets_.end(), [handle](const auto& sheet) {
        return handle_of(*sheet) == handle;
    });
    return found == sheets_.end() ? nullptr : *found;
}

void LibXLBook::init_new(std::size_t count, book::format format, const std::u16string& base_name) {
    create_library_book(format);
    dates_1904_ = false;
    book_->set_date_1904(false);
    sheet_loaded_ = false;
    sheet_names_only_ = false;
    find_date_format(format);
    const std::u16string stem = base_name.empty() ? u"Sheet" : base_name;
    for (std::size_t i = 0; i < count; ++i)
        insert_sheet(i, stem + foundation::unicode::to_utf16(std::to_string(i + 1)), nullptr);
    init_sheets();
}

workbook::Sheet* LibXLBook::insert_sheet(std::size_t index, const std::u16string& name,
                                         const workbook::Sheet* source) {
    const std::string_view tag = source != nullptr ? kAddCopyTag : kAddEmptyTag;
    return run_change(tag, error_id::sheet_not_created, [&] {
        workbook::Sheet* sheet = book_->insert_sheet(libxl::library_index(index), name, source);
        if (sheet == nullptr) libxl::fail(tag, *book_, error_id::sheet_not_created);
        return sheet;
    });
}

std::shared_ptr<ISheet> LibXLBook::add_sheet(std::size_t index, const std::u16string& name,
                                             const std::u16string& second_name) {
    const workbook::Sheet* source = nullptr;
    if (!second_name.empty()) {
        const std::shared_ptr<ISheet> found = sheet(second_name);
        if (!found) throw Exception(error_id::sheet_not_found);
        source = handle_of(*found);
    }
    if (!date_format_) find_date_format(format_); // none is looked for when only names are loaded
    const workbook::Sheet* inserted = insert_sheet(index, name, source);
    init_sheets();
    return cached(inserted);
}

void LibXLBook::remove_sheet(std::size_t index) {
    constexpr std::string_view tag = "[LIBXL BOOK OBJ REMOVE_SHEET MSG]:";
    delete_sheet(libxl::library_index(index), tag, error_id::sheet_not_deleted);
    init_sheets();
}

void LibXLBook::delete_sheet(int index, std::string_view tag, error_id id) {
    const workbook::Sheet* handle = book_->get_sheet(index);
    const std::shared_ptr<ISheet> object = handle != nullptr ? cached(handle) : nullptr;
    if (!run_change(tag, id, [&] { return book_->delete_sheet(index); }))
        libxl::fail(tag, *book_, id);
    if (object) static_cast<LibXLSheet&>(*object).detach();
}

std::shared_ptr<ISheet> LibXLBook::move_sheet(const std::shared_ptr<ISheet>& sheet,
                                              std::size_t new_index) {
    const auto found = std::find(sheets_.begin(), sheets_.end(), sheet);
    if (found == sheets_.end()) throw Exception(error_id::sheet_not_found);
    const auto position_number = static_cast<int>(found - sheets_.begin()) + 1;

    constexpr std::string_view insert_tag = "[LIBXL BOOK OBJ MOVE_SHEET INSERTSHEET FAILURE MSG]:";
    const workbook::Sheet* source = handle_of(*sheet);
    if (source == nullptr) throw Exception(error_id::chart_sheet_unsupported);
    const std::u16string name(source->name());
    const bool is_copied = run_change(insert_tag, error_id::sheet_not_copied, [&] {
        return book_->insert_sheet(libxl::library_index(new_index), name, source) != nullptr;
    });
    if (!is_copied) libxl::fail(insert_tag, *book_, error_id::sheet_not_copied);

    // One behind the position that the copy may have pushed the original to: callers count on it.
    delete_sheet(position_number + 1, "[LIBXL BOOK OBJ MOVE_SHEET DELSHEET FAILURE MSG]:",
                 error_id::old_sheet_not_deleted);
    init_sheets();
    return this->sheet(new_index);
}

void LibXLBook::reorder_sheet(std::size_t from, std::size_t to) {
    constexpr std::string_view tag = "[LIBXL BOOK OBJ REORDER_SHEET MSG]:";
    const std::size_t count = num_sheets();
    if (from >= count || to >= count) throw Exception(error_id::sheet_not_found);
    const bool is_moved = run_change(tag, error_id::sheet_not_copied, [&] {
        return book_->move_sheet(libxl::library_index(from), libxl::library_index(to));
    });
    if (!is_moved) libxl::fail(tag, *book_, error_id::sheet_not_copied);
    init_sheets();
}

void LibXLBook::save(const std::u16string& name) {
    constexpr std::string_view tag = "[LIBXL BOOK SAVE METHOD]:";
    if (!run_change(tag, error_id::book_not_saved, [&] { return book_->save(name); }))
        libxl::fail(tag, *book_, error_id::book_not_saved);
}

workbook::SaveCounts LibXLBook::last_save() const {
    return book_ ? book_->last_save() : workbook::SaveCounts{};
}

void LibXLBook::save_to_memory(std::vector<unsigned char>&) {
    throw Exception(error_id::save_to_memory_unsupported);
}

} // namespace spreadsheet
