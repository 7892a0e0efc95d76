// SPDX-License-Identifier: Apache-2.0
//
// Operations check first and change then. The model changes at once, parts when they are written.
#include "workbook/xlsx/structure/workbook_editor.h"

#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/xlsx/structure/workbook_editor_state.h"

namespace workbook {

namespace {

constexpr const char* kSharedStringsType =
    "application/vnd.openxmlformats-officedocument.spreadsheetml.sharedStrings+xml";
constexpr const char* kStylesType =
    "application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml";

std::u16string name_at(const WorkbookPart& workbook, std::size_t index) {
    return index < workbook.sheets.size() ? workbook.sheets[index]->name : std::u16string{};
}

std::size_t index_of(const WorkbookPart& workbook, const SheetEntry& sheet) {
    std::size_t index = 0;
    while (workbook.sheets[index].get() != &sheet)
        ++index;
    return index;
}

} // namespace

WorkbookEditor::WorkbookEditor(OpcPackage& package, WorkbookPart& workbook)
    : state_(std::make_unique<State>(package, workbook)) {}

WorkbookEditor::~WorkbookEditor() = default;

SheetEntry& WorkbookEditor::insert_sheet(std::size_t index, std::u16string_view name) {
    State& state = *state_;
    state.sheets.check_room(index);
    state.sheets.check_name(name, nullptr);
    auto entry = state.make_entry(name);
    entry->part = state.new_sheet_part();
    SheetRecord& record = state.sheets.insert(index, std::move(entry));
    record.sheet_id = state.new_sheet_id();
    record.relationship_id = state.new_relationship_id();
    state.names.sheet_inserted(index);
    state.sheets_changed();
    return *record.entry;
}

SheetEntry& WorkbookEditor::copy_sheet(std::size_t index, std::u16string_view name,
                                       const SheetEntry& source) {
    State& state = *state_;
    state.sheets.check_room(index);
    state.sheets.check_name(name, nullptr);
    if (source.part.empty())
        throw Error::refused("sheet \"" + foundation::unicode::to_utf8(source.name) +
                             "\" cannot be copied: its kind is unknown or its part is missing");
    const SheetRecord& original = state.sheets.record(source);
    if (original.package_part.empty()) {
        SheetEntry& copy = insert_sheet(index, name);
        copy.state = source.state;
        return copy;
    }
    auto entry = state.make_entry(name);
    entry->kind = source.kind;
    entry->state = source.state;
    entry->part = state.new_parts.fresh(original.package_part);
    SheetCopyPlan plan =
        plan_sheet_copy(state.package, original.package_part, entry->part, state.new_parts);
    if (has_tables(plan)) name_copied_tables(state.package, plan, state.table_names());

    SheetRecord& record = state.sheets.insert(index, std::move(entry));
    record.package_part = original.package_part;
    record.copied_from = original.is_in_package ? &original : original.copied_from;
    record.copy = std::move(plan);
    record.sheet_id = state.new_sheet_id();
    record.relationship_id = state.new_relationship_id();
    state.names.sheet_inserted(index);
    state.names.sheet_copied(index_of(state.workbook, source), index);
    state.sheets_changed();
    return *record.entry;
}

void WorkbookEditor::remove_sheet(std::size_t index) {
    State& state = *state_;
    state.sheets.check_index(index);
    if (state.workbook.sheets.size() == 1)
        throw Error::refused("a workbook needs at least one sheet: add another one first");
    const SheetEntry& sheet = *state.workbook.sheets[index];
    state.sheets.check_not_last_visible(sheet);
    const std::u16string name = sheet.name;
    const std::u16string left = index > 0 ? name_at(state.workbook, index - 1) : std::u16string{};
    const std::u16string right = name_at(state.workbook, index + 1);
    state.sheets.remove(index);
    state.names.sheet_removed(index, name, left, right);
    state.sheets_changed();
}

void WorkbookEditor::move_sheet(std::size_t from, std::size_t to) {
    State& state = *state_;
    state.sheets.check_index(from);
    state.sheets.check_index(to);
    state.sheets.move(from, to);
    state.names.sheet_moved(from, to);
    state.sheets_changed();
}

void WorkbookEditor::rename_sheet(SheetEntry& sheet, std::u16string_view name) {
    State& state = *state_;
    state.sheets.check_name(name, &sheet);
    const std::u16string old_name = sheet.name;
    state.sheets.rename(sheet, std::u16string(name));
    state.names.sheet_renamed(old_name, sheet.name);
    state.sheets_changed();
}

void WorkbookEditor::set_state(SheetEntry& sheet, SheetState sheet_state) {
    if (sheet_state != SheetState::Visible) state_->sheets.check_not_last_visible(sheet);
    sheet.state = sheet_state;
    state_->sheets_changed();
}

void WorkbookEditor::set_date_1904(bool on) {
    state_->workbook.date_1904 = on;
}

void WorkbookEditor::recalculate_on_load() {
    state_->recalculates = true;
}

void WorkbookEditor::drop_calculation_chain() {
    state_->drops_calculation_chain = true;
}

void WorkbookEditor::set_document_type(std::optional<DocumentType> type) {
    state_->document_type = type;
}

void WorkbookEditor::begin_save() {
    for (State::AddedPart& added : state_->added)
        added.is_needed = false;
    state_->columns = {};
    state_->sheets_changed();
}

std::vector<TableHeader> WorkbookEditor::table_headers(const SheetEntry& sheet) {
    const SheetRecord& record = state_->sheets.record(sheet);
    if (record.package_part.empty()) return {};
    std::vector<TableHeader> headers = read_table_headers(state_->package, record.package_part);
    for (TableHeader& header : headers) {
        const auto copy = record.copy.tables.find(header.part);
        if (copy == record.copy.tables.end()) continue;
        header.table = copy->second.name;
        header.part = record.copy.copy_of.at(header.part);
    }
    return headers;
}

void WorkbookEditor::name_columns(const TableHeader& table, const std::vector<std::string>& names) {
    state_->columns.add(table, names);
    state_->sheets_changed();
}

std::string WorkbookEditor::need_shared_strings_part() {
    return state_->need_part(state_->workbook.shared_strings_part, "sharedstrings.xml",
                             "sharedStrings", kSharedStringsType);
}

std::string WorkbookEditor::need_styles_part() {
    return state_->need_part(state_->workbook.styles_part, "styles.xml", "styles", kStylesType);
}

std::unique_ptr<ByteSource> WorkbookEditor::open_sheet(const SheetEntry& sheet) {
    return state_->open(state_->sheets.record(sheet));
}

void WorkbookEditor::rebase(OpcPackage& package) {
    WorkbookPart& workbook = state_->workbook;
    workbook.defined_names = read_workbook_part(package).defined_names;
    state_ = std::make_unique<State>(package, workbook);
}

} // namespace workbook
