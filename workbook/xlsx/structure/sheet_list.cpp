// SPDX-License-Identifier: Apache-2.0
//
// Which names a sheet may have, and where it is.
#include "workbook/xlsx/structure/sheet_list.h"

#include <algorithm>

#include "foundation/case_folding.h"
#include "foundation/unicode.h"
#include "workbook/cells/sheet_name_rules.h"
#include "workbook/error.h"
#include "workbook/limits.h"

namespace workbook {

SheetList::SheetList(WorkbookPart& workbook) : workbook_(workbook) {
    records_.reserve(workbook.sheets.size());
    for (const std::unique_ptr<SheetEntry>& entry : workbook.sheets) {
        auto record = std::make_unique<SheetRecord>();
        record->entry = entry.get();
        record->is_in_package = true;
        record->package_name = entry->name;
        record->package_state = entry->state;
        record->part = record->package_part = entry->part;
        record->element = records_.size();
        by_entry_.emplace(entry.get(), record.get());
        folded_names_.insert(foundation::unicode::fold_case(entry->name));
        records_.push_back(std::move(record));
    }
}

void SheetList::check_name(std::u16string_view name, const SheetEntry* own) const {
    check_sheet_name(name);
    if (own != nullptr && foundation::unicode::equal_ignoring_case(own->name, name)) return;
    if (folded_names_.contains(foundation::unicode::fold_case(name)))
        refuse_sheet_name(name, "another sheet of the book has this name");
}

void SheetList::check_room(std::size_t index) const {
    if (index > entries().size())
        throw Error::missing("the workbook has no place of index " + std::to_string(index) +
                             " for a sheet");
    if (entries().size() >= kMaxSheets)
        throw Error::limit("the workbook", "more than " + std::to_string(kMaxSheets) + " sheets");
}

void SheetList::check_index(std::size_t index) const {
    if (index >= entries().size())
        throw Error::missing("the workbook has no sheet of index " + std::to_string(index));
}

void SheetList::check_not_last_visible(const SheetEntry& sheet) const {
    if (sheet.state != SheetState::Visible) return;
    const auto is_other = [&sheet](const std::unique_ptr<SheetEntry>& entry) {
        return entry.get() != &sheet && entry->state == SheetState::Visible;
    };
    if (std::none_of(entries().begin(), entries().end(), is_other))
        throw Error::refused("sheet \"" + foundation::unicode::to_utf8(sheet.name) +
                             "\" is the only visible one: show or add another sheet first");
}

SheetRecord& SheetList::insert(std::size_t index, std::unique_ptr<SheetEntry> entry) {
    records_.push_back(std::make_unique<SheetRecord>());
    SheetRecord& record = *records_.back();
    record.entry = entry.get();
    record.part = entry->part;
    by_entry_.emplace(entry.get(), &record);
    folded_names_.insert(foundation::unicode::fold_case(entry->name));
    workbook_.sheets.insert(workbook_.sheets.begin() + static_cast<std::ptrdiff_t>(index),
                            std::move(entry));
    return record;
}

void SheetList::remove(std::size_t index) {
    auto& sheets = workbook_.sheets;
    SheetRecord& gone = record(*sheets[index]);
    gone.before = index > 0 ? &record(*sheets[index - 1]) : nullptr;
    gone.after = index + 1 < sheets.size() ? &record(*sheets[index + 1]) : nullptr;
    gone.entry = nullptr;
    by_entry_.erase(sheets[index].get());
    folded_names_.erase(foundation::unicode::fold_case(sheets[index]->name));
    sheets.erase(sheets.begin() + static_cast<std::ptrdiff_t>(index));
}

void SheetList::move(std::size_t from, std::size_t to) {
    const auto begin = workbook_.sheets.begin();
    const auto at = [begin](std::size_t index) {
        return begin + static_cast<std::ptrdiff_t>(index);
    };
    if (from < to)
        std::rotate(at(from), at(from + 1), at(to + 1));
    else
        std::rotate(at(to), at(from), at(from + 1));
}

void SheetList::rename(SheetEntry& sheet, std::u16string_view name) {
    folded_names_.erase(foundation::unicode::fold_case(sheet.name));
    sheet.name = name;
    folded_names_.insert(foundation::unicode::fold_case(name));
}

bool SheetList::has_changed() const {
    std::size_t index = 0;
    for (const std::unique_ptr<SheetEntry>& entry : entries()) {
        const SheetRecord& here = record(*entry);
        if (!here.is_in_package || here.element != index++ || here.package_name != entry->name)
            return true;
    }
    return std::any_of(records_.begin(), records_.end(), [](const auto& record) {
        return record->is_in_package && record->entry == nullptr;
    });
}

} // namespace workbook
