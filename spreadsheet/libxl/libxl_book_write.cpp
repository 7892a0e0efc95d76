// SPDX-License-Identifier: Apache-2.0
//
// Making, changing and saving a workbook file.
#include <algorithm>
#include <string>
#include <utility>

#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/libxl/libxl_book.h"
#include "spreadsheet/libxl/libxl_sheet.h"
#include "spreadsheet/limits.h"

namespace spreadsheet {
namespace {

constexpr std::string_view kAddCopyTag =
    "[LIBXL BOOK OBJ ADD_SHEET, SHEET TO COPY IS NOT EMPTY, MSG]:";
constexpr std::string_view kAddEmptyTag =
    "[LIBXL BOOK OBJ ADD_SHEET, SHEET TO COPY IS EMPTY, MSG]:";

/// `stem` with a number after it, the stem cut where both together would be too long for a name.
std::u16string numbered_name(std::u16string stem, std::size_t number) {
    const std::u16string digits = foundation::unicode::to_utf16(std::to_string(number));
    if (stem.size() + digits.size() > kMaxSheetNameUnits) {
        stem.resize(kMaxSheetNameUnits - digits.size());
        const bool is_half_a_pair = stem.back() >= 0xD800 && stem.back() <= 0xDBFF;
        if (is_half_a_pair) stem.pop_back();
    }
    return stem + digits;
}

} // namespace

void LibXLBook::check_kinds(int removed) const {
    const int count = book_->sheet_count();
    for (int index = 0; index < count; ++index)
        if (index != removed && book_->sheet_type(index) == workbook::SheetKind::Unknown)
            throw Exception(error_id::format_unsupported);
}

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
        insert_sheet(i, numbered_name(stem, i + 1), nullptr);
    init_sheets();
}

workbook::Sheet* LibXLBook::insert_sheet(std::size_t index, const std::u16string& name,
                                         const workbook::Sheet* source) {
    const std::string_view tag = source != nullptr ? kAddCopyTag : kAddEmptyTag;
    return reporter_->run(tag, error_id::sheet_not_created, [&] {
        workbook::Sheet* sheet = book_->insert_sheet(libxl::library_index(index), name, source);
        if (sheet == nullptr) reporter_->fail(tag, error_id::sheet_not_created);
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
    check_kinds();
    if (!date_format_) find_date_format(format_); // none is looked for when only names are loaded
    const workbook::Sheet* inserted = insert_sheet(index, name, source);
    init_sheets();
    return cached(inserted);
}

void LibXLBook::remove_sheet(std::size_t index) {
    constexpr std::string_view tag = "[LIBXL BOOK OBJ REMOVE_SHEET MSG]:";
    check_kinds(libxl::library_index(index));
    delete_sheet(libxl::library_index(index), tag, error_id::sheet_not_deleted);
    init_sheets();
}

void LibXLBook::delete_sheet(int index, std::string_view tag, error_id id) {
    const workbook::Sheet* handle = book_->get_sheet(index);
    const std::shared_ptr<ISheet> object = handle != nullptr ? cached(handle) : nullptr;
    if (!reporter_->run(tag, id, [&] { return book_->delete_sheet(index); }))
        reporter_->fail(tag, id);
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
    check_kinds();
    const std::u16string name(source->name());
    const bool is_copied = reporter_->run(insert_tag, error_id::sheet_not_copied, [&] {
        return book_->insert_sheet(libxl::library_index(new_index), name, source) != nullptr;
    });
    if (!is_copied) reporter_->fail(insert_tag, error_id::sheet_not_copied);

    // One after the position that the copy may have pushed the original to: callers count on it.
    delete_sheet(position_number + 1, "[LIBXL BOOK OBJ MOVE_SHEET DELSHEET FAILURE MSG]:",
                 error_id::old_sheet_not_deleted);
    init_sheets();
    return this->sheet(new_index);
}

void LibXLBook::reorder_sheet(std::size_t from, std::size_t to) {
    constexpr std::string_view tag = "[LIBXL BOOK OBJ REORDER_SHEET MSG]:";
    const std::size_t count = num_sheets();
    if (from >= count || to >= count) throw Exception(error_id::sheet_not_found);
    check_kinds();
    const bool is_moved = reporter_->run(tag, error_id::sheet_not_copied, [&] {
        return book_->move_sheet(libxl::library_index(from), libxl::library_index(to));
    });
    if (!is_moved) reporter_->fail(tag, error_id::sheet_not_copied);
    init_sheets();
}

void LibXLBook::save(const std::u16string& name) {
    constexpr std::string_view tag = "[LIBXL BOOK SAVE METHOD]:";
    if (!reporter_->run(tag, error_id::book_not_saved, [&] { return book_->save(name); }))
        reporter_->fail(tag, error_id::book_not_saved, name);
}

SaveSummary LibXLBook::last_save() const {
    if (!book_) return {};
    const workbook::SaveCounts counts = book_->last_save();
    return {counts.kept, counts.written, counts.dropped};
}

std::optional<Failure> LibXLBook::take_unreported_failure() {
    return reporter_ ? reporter_->take_unreported() : std::nullopt;
}

void LibXLBook::save_to_memory(std::vector<unsigned char>&) {
    throw Exception(error_id::save_to_memory_unsupported);
}

} // namespace spreadsheet
