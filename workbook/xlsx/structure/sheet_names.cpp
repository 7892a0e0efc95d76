// SPDX-License-Identifier: Apache-2.0
//
// A name leads to a record and the record to its present name. A span whose end went ends at the
// sheet that was next to that one, as far as the span reaches.
#include "workbook/xlsx/structure/sheet_names.h"

#include "foundation/case_folding.h"
#include "foundation/unicode.h"

namespace workbook {

namespace {

std::u16string folded(std::string_view name) {
    return foundation::unicode::fold_case(foundation::unicode::to_utf16(name));
}

/// The first sheet that is there, from `record` on in one direction; null when there is none.
const SheetRecord* first_left(const SheetRecord* record, SheetRecord* SheetRecord::*direction) {
    while (record != nullptr && record->entry == nullptr)
        record = record->*direction;
    return record;
}

std::string text_of(const SheetRecord& record, std::string_view as_written) {
    // Another case of the same name is as good as the name.
    if (record.is_in_package && record.entry->name == record.package_name)
        return std::string{as_written};
    return foundation::unicode::to_generalized_utf8(record.entry->name);
}

} // namespace

SheetNames::SheetNames(const SheetList& sheets, const RenamedColumns& columns)
    : columns_(columns), are_unchanged_(columns.empty()) {
    for (const std::unique_ptr<SheetRecord>& record : sheets.records()) {
        if (!record->is_in_package) continue;
        by_package_name_.emplace(foundation::unicode::fold_case(record->package_name),
                                 record.get());
        are_unchanged_ = are_unchanged_ && record->entry != nullptr &&
                         record->entry->name == record->package_name;
    }
    for (const std::unique_ptr<SheetEntry>& entry : sheets.entries())
        positions_.emplace(&sheets.record(*entry), positions_.size());
}

const SheetRecord* SheetNames::find(std::string_view package_name) const {
    const auto found = by_package_name_.find(folded(package_name));
    return found == by_package_name_.end() ? nullptr : found->second;
}

std::optional<std::string> SheetNames::name(std::string_view package_name,
                                            const SheetRecord* copy) const {
    const SheetRecord* record = find(package_name);
    if (record == nullptr) return std::string{package_name};
    if (copy != nullptr && record == copy->copied_from) record = copy;
    if (record->entry == nullptr) return {};
    return text_of(*record, package_name);
}

std::optional<SheetPrefixNames> SheetNames::span(const SheetPrefixNames& package_names) const {
    const SheetRecord* first = find(package_names.first);
    const SheetRecord* last = find(package_names.last);
    if (first == nullptr || last == nullptr) return package_names;
    const bool was_reversed = last->element < first->element;
    const auto inwards = was_reversed ? &SheetRecord::before : &SheetRecord::after;
    const auto back = was_reversed ? &SheetRecord::after : &SheetRecord::before;
    const SheetRecord* first_now = first_left(first, inwards);
    const SheetRecord* last_now = first_left(last, back);
    if (first_now == nullptr || last_now == nullptr) return {};
    if (first_now != first || last_now != last) {
        // Ends that passed each other: nothing between them is left.
        const std::size_t a = positions_.at(first_now), b = positions_.at(last_now);
        if (was_reversed ? a < b : b < a) return {};
    }
    SheetPrefixNames now;
    now.first = first_now == first
                    ? text_of(*first, package_names.first)
                    : foundation::unicode::to_generalized_utf8(first_now->entry->name);
    if (first_now == last_now && first != last) return now;
    now.last = last_now == last ? text_of(*last, package_names.last)
                                : foundation::unicode::to_generalized_utf8(last_now->entry->name);
    return now;
}

std::shared_ptr<PartEdits> edits_for(std::shared_ptr<const SheetNames> names,
                                     const SheetRecord* copy) {
    auto edits = std::make_shared<PartEdits>();
    edits->sheet_name = [names, copy](std::string_view name) -> std::optional<std::string> {
        const std::optional<std::string> now = names->name(name, copy);
        if (!now) return "#REF!";
        return *now == name ? std::nullopt : now;
    };
    edits->formula = [names, copy](std::string_view formula) -> std::optional<std::string> {
        const auto name = [&](std::string_view sheet) { return names->name(sheet, copy); };
        const auto span = [&](const SheetPrefixNames& ends) { return names->span(ends); };
        std::optional<std::string> edited = rename_sheets(formula, name, span);
        const auto then = [&](std::optional<std::string> next) {
            if (next) edited = std::move(next);
        };
        const auto table = [&](std::string_view text) { return copy->copy.table_name(text); };
        if (copy != nullptr && !copy->copy.tables.empty())
            then(rename_tables(edited ? *edited : formula, table));
        then(names->columns().edited(edited ? *edited : formula));
        return edited;
    };
    edits->is_sheet_copy = edits->clears_tab_selected = copy != nullptr;
    return edits;
}

} // namespace workbook
