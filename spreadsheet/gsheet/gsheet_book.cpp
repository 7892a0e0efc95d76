// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/gsheet_book.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/gsheet_chart_sheet.h"
#include "spreadsheet/gsheet/gsheet_sheet.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/trace.h"

namespace spreadsheet {
namespace {

using gsheet::SheetKind;

[[noreturn]] void refuse(std::string_view reason, error_id id) {
    gsheet::log_line(foundation::log::error, reason);
    throw Exception(id);
}

} // namespace

GSheetWorkbook::GSheetWorkbook(book::format format) : format_(format) {}

GSheetWorkbook::~GSheetWorkbook() {
    const Trace trace;
}

GoogleSheetWorkbook& GSheetWorkbook::implementation() const {
    if (implementation_ == nullptr) throw Exception(error_id::book_not_loaded);
    return *implementation_;
}

// --- What the book tells about itself

bool GSheetWorkbook::is_interactive() const {
    const Trace trace;
    return loaded_;
}

book::format GSheetWorkbook::format() const {
    const Trace trace;
    return format_;
}

bool GSheetWorkbook::are_dates_1904() const {
    const Trace trace;
    return false;
}

std::size_t GSheetWorkbook::num_sheets() const {
    const Trace trace;
    return implementation().sheet_count(sheet_names_only_);
}

std::optional<std::u16string> GSheetWorkbook::get_sheet_name(const int index) const {
    const Trace trace;
    return implementation().sheet_name(index, sheet_names_only_);
}

sheet::type GSheetWorkbook::sheet_type(std::size_t index) const {
    const Trace trace;
    switch (implementation().sheet_kind(index)) {
    case SheetKind::grid:
        return sheet::type::worksheet;
    case SheetKind::object:
        return sheet::type::chart;
    default:
        throw Exception(error_id::sheet_type_unknown);
    }
}

const std::u16string GSheetWorkbook::get_file_name(bool) {
    const Trace trace;
    return implementation_ != nullptr ? implementation_->id() : std::u16string();
}

bool GSheetWorkbook::is_loaded() const {
    const Trace trace;
    return implementation_ != nullptr;
}

bool GSheetWorkbook::is_sheet_loaded() const {
    const Trace trace;
    return false;
}

bool GSheetWorkbook::sheet_names_only_required() const {
    const Trace trace;
    return sheet_names_only_;
}

std::vector<std::u16string> GSheetWorkbook::get_sheet_names() const {
    const Trace trace;
    return implementation().sheet_names(sheet_names_only_);
}

// --- Sheets

std::shared_ptr<ISheet> GSheetWorkbook::sheet(std::size_t index) const {
    const Trace trace;
    const Sheets& sheets = listed_sheets();
    return index < sheets.size() ? sheets[index] : nullptr;
}

std::shared_ptr<ISheet> GSheetWorkbook::sheet(const std::u16string& name) const {
    const Trace trace;
    const std::size_t index = index_of(name);
    const Sheets& sheets = listed_sheets();
    return index < sheets.size() ? sheets[index] : nullptr;
}

/// The names come from the metadata: chart sheets do not tell theirs.
std::size_t GSheetWorkbook::index_of(const std::u16string& name) const {
    const std::vector<std::u16string> names = implementation().sheet_names(sheet_names_only_);
    const auto found = std::find_if(names.begin(), names.end(), [&](const auto& candidate) {
        return foundation::unicode::equal_ignoring_case(candidate, name);
    });
    return static_cast<std::size_t>(found - names.begin());
}

std::shared_ptr<ISheet>
GSheetWorkbook::object_of(const std::shared_ptr<GoogleSheetWorksheet>& worksheet,
                          SheetKind kind) const {
    const auto known = std::find(worksheets_.begin(), worksheets_.end(), worksheet);
    if (known != worksheets_.end())
        return sheets_[static_cast<std::size_t>(known - worksheets_.begin())];
    if (kind == SheetKind::object) return std::make_shared<GSheetChartSheet>(worksheet);
    return std::make_shared<GSheetWorksheet>(worksheet);
}

void GSheetWorkbook::init_sheets() const {
    Sheets sheets;
    Worksheets worksheets;
    const std::size_t count = implementation().sheet_count(false);
    for (std::size_t index = 0; index < count; ++index) {
        auto worksheet = implementation().worksheet(index);
        if (worksheet == nullptr) {
            gsheet::log_line(foundation::log::error, "Unsupported sheet type.");
            break;
        }
        sheets.push_back(object_of(worksheet, implementation().sheet_kind(index)));
        worksheets.push_back(std::move(worksheet));
    }
    sheets_ = std::move(sheets);
    worksheets_ = std::move(worksheets);
    listed_revision_ = implementation().revision();
}

const GSheetWorkbook::Sheets& GSheetWorkbook::listed_sheets() const {
    if (sheets_.empty()) return sheets_; // only names were asked for, or there is no book
    implementation().sheet_count(false);
    if (listed_revision_ != implementation().revision()) init_sheets();
    return sheets_;
}

std::shared_ptr<ISheet> GSheetWorkbook::add_sheet(std::size_t index, const std::u16string& name,
                                                  const std::u16string& second_name) {
    const Trace trace;
    std::size_t place = index;
    if (second_name.empty()) {
        place = implementation().add_sheet(index, name);
    } else {
        const std::size_t source = index_of(second_name);
        place = implementation().copy_sheet(source, index, name);
    }
    init_sheets();
    return sheet(place);
}

void GSheetWorkbook::remove_sheet(std::size_t index) {
    const Trace trace;
    implementation().remove_sheet(index);
    init_sheets();
}

std::shared_ptr<ISheet> GSheetWorkbook::move_sheet(const std::shared_ptr<ISheet>& sheet,
                                                   std::size_t index) {
    const Trace trace;
    if (index >= implementation().sheet_count(false))
        throw Exception(error_id::iterator_out_of_bounds);
    const Sheets& sheets = listed_sheets();
    const auto found = std::find(sheets.begin(), sheets.end(), sheet);
    if (found == sheets.end()) throw Exception(error_id::sheet_not_found);
    const auto current = static_cast<std::size_t>(found - sheets.begin());
    if (current == index) return sheet;
    // The caller may have passed an element of the list.
    std::shared_ptr<ISheet> moved = sheet;
    implementation().move_sheet(current, index);
    init_sheets();
    return moved;
}

void GSheetWorkbook::reorder_sheet(std::size_t from, std::size_t to) {
    const Trace trace;
    const std::size_t count = implementation().sheet_count(false);
    const Sheets& sheets = listed_sheets();
    if (from >= std::min(count, sheets.size()) || to >= count)
        throw Exception(error_id::sheet_not_found);
    move_sheet(sheets[from], to);
}

// --- Beyond the interface of books

std::u16string GSheetWorkbook::title() {
    const Trace trace;
    return implementation().title();
}

std::optional<std::size_t> GSheetWorkbook::sheet_with_id(std::int64_t id) {
    const Trace trace;
    return implementation().sheet_with_id(id);
}

std::vector<Range> GSheetWorkbook::used_ranges(const std::vector<std::size_t>& sheet_indices) {
    const Trace trace;
    return implementation().used_ranges(sheet_indices);
}

std::optional<OnlineBook::NamedCells> GSheetWorkbook::find_name(const std::u16string& name) {
    const Trace trace;
    const auto found = implementation().find_name(name);
    if (!found) return {};
    return NamedCells{found->sheet_index, found->range};
}

void GSheetWorkbook::copy_sheet(std::size_t source, std::size_t index, const std::u16string& name) {
    const Trace trace;
    implementation().duplicate_sheet(source, index, name);
}

// --- Loading and saving

void GSheetWorkbook::init_with(std::shared_ptr<GoogleSheetWorkbook> implementation) {
    implementation->sheet_count(false); // what fails, fails before anything has changed
    implementation_ = std::move(implementation);
    sheet_names_only_ = false;
    init_sheets();
}

void GSheetWorkbook::init_from_file(const std::u16string&, book::format) {
    const Trace trace;
    refuse("Loading the entire spreadsheet from Google Sheets is not supported.",
           error_id::google_unsupported);
}

void GSheetWorkbook::init_from_file_with_sheet(const std::u16string& id, book::format,
                                               std::size_t) {
    const Trace trace;
    init_with(std::make_shared<GoogleSheetWorkbook>(id));
}

void GSheetWorkbook::init_from_file_with_range(const std::u16string& id, book::format, std::size_t,
                                               std::size_t, std::size_t) {
    const Trace trace;
    init_with(std::make_shared<GoogleSheetWorkbook>(id));
}

void GSheetWorkbook::init_from_file_only_sheetNames(const std::u16string& id, book::format) {
    const Trace trace;
    auto names = std::make_shared<GoogleSheetWorkbook>(id);
    names->load_names();
    implementation_ = std::move(names);
    sheet_names_only_ = true;
    sheets_.clear();
    worksheets_.clear();
}

void GSheetWorkbook::init_new(std::size_t, book::format, const std::u16string& title) {
    const Trace trace;
    init_with(GoogleSheetWorkbook::create(title));
}

void GSheetWorkbook::init_from_memory(const void*, std::size_t, book::format) {
    const Trace trace;
    refuse("Loading from memory is not supported with Google Sheets.",
           error_id::load_from_memory_unsupported);
}

void GSheetWorkbook::save(const std::u16string&) {
    const Trace trace;
}

void GSheetWorkbook::save_to_memory(std::vector<unsigned char>&) {
    const Trace trace;
    refuse("Saving to memory is not a supported operation with Google Sheets.",
           error_id::save_to_memory_unsupported);
}

} // namespace spreadsheet
