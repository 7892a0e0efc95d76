// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/google_workbook.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/service_requests.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/value_blocks.h"
#include "spreadsheet/limits.h"
#include "spreadsheet/trace.h"

namespace spreadsheet {

namespace {

using gsheet::Array;
using gsheet::Object;
using gsheet::SheetProperties;

constexpr const char* kEverything =
    "properties(title),sheets.properties(title,sheetId,sheetType,index,hidden,gridProperties),"
    "sheets.protectedRanges";
constexpr const char* kNames = "sheets.properties(title,sheetId)";

std::vector<SheetProperties> parse_sheets(const Object& reply) {
    const Array* const sheets = gsheet::array_in(reply, "sheets");
    // Every spreadsheet has a sheet: a reply without any is not about one.
    if (sheets == nullptr) throw Exception(error_id::internal);
    std::vector<SheetProperties> parsed;
    for (const auto& sheet : *sheets)
        if (sheet.is_object()) parsed.push_back(gsheet::parse_sheet(sheet.get_object()));
    return parsed;
}

std::string title_body(const std::u16string& title) {
    Object properties;
    properties["title"] = gsheet::json_text(title);
    Object body;
    body["properties"] = std::move(properties);
    return foundation::json::to_text(std::move(body));
}

int last_index(std::size_t count) {
    return static_cast<int>(std::min<std::size_t>(count, kMaxGoogleCells)) - 1;
}

} // namespace

GoogleSheetWorkbook::GoogleSheetWorkbook(std::u16string id) : id_(std::move(id)) {}

std::shared_ptr<GoogleSheetWorkbook> GoogleSheetWorkbook::create(const std::u16string& title) {
    const Trace trace;
    auto request = gsheet::createAuthorizedRequest(
        foundation::http::HttpMethod::Post, gsheet::endpoints().sheets + u"/v4/spreadsheets");
    request.setRequestBody(title_body(title));
    const Object reply = gsheet::executeRequestAndParseJsonResponse(std::move(request));
    const std::u16string id = gsheet::text_in(reply, "spreadsheetId");
    if (id.empty()) throw Exception(error_id::internal);
    auto workbook = std::make_shared<GoogleSheetWorkbook>(id);
    workbook->load_metadata();
    return workbook;
}

// --- Metadata

void GoogleSheetWorkbook::need(Known level) {
    if (known_ < level) fetch(level);
}

void GoogleSheetWorkbook::fetch(Known level) {
    const bool all = level == Known::everything;
    const Object reply = gsheet::get_spreadsheet(id_, {{"fields", all ? kEverything : kNames}});
    take_over(parse_sheets(reply), level);
    const Object* const properties = gsheet::object_in(reply, "properties");
    if (properties != nullptr) title_ = gsheet::text_in(*properties, "title");
}

void GoogleSheetWorkbook::take_over(std::vector<SheetProperties> sheets, Known level) {
    std::vector<Entry> entries;
    entries.reserve(sheets.size());
    for (SheetProperties& sheet : sheets) {
        const auto known =
            std::find_if(sheets_.begin(), sheets_.end(), [&](const Entry& candidate) {
                return candidate.properties != nullptr &&
                       candidate.properties->sheet_id == sheet.sheet_id;
            });
        if (known == sheets_.end()) {
            entries.push_back(make_entry(std::move(sheet)));
            continue;
        }
        *known->properties = std::move(sheet);
        entries.push_back(std::exchange(*known, Entry()));
    }
    for (const Entry& gone : sheets_)
        if (gone.properties != nullptr) gone.properties->removed = true;
    sheets_ = std::move(entries);
    known_ = level;
    ++revision_;
}

GoogleSheetWorkbook::Entry GoogleSheetWorkbook::make_entry(SheetProperties properties) const {
    auto shared = std::make_shared<SheetProperties>(std::move(properties));
    auto worksheet = std::make_shared<GoogleSheetWorksheet>(id_, shared);
    return {std::move(shared), std::move(worksheet)};
}

void GoogleSheetWorkbook::load_names() {
    const Trace trace;
    fetch(Known::names);
}

void GoogleSheetWorkbook::load_metadata() {
    const Trace trace;
    fetch(Known::everything);
}

const std::u16string& GoogleSheetWorkbook::title() {
    const Trace trace;
    need(Known::everything);
    return title_;
}

std::size_t GoogleSheetWorkbook::sheet_count(bool names_only) {
    const Trace trace;
    need(names_only ? Known::names : Known::everything);
    return sheets_.size();
}

std::vector<std::u16string> GoogleSheetWorkbook::sheet_names(bool names_only) {
    const Trace trace;
    need(names_only ? Known::names : Known::everything);
    std::vector<std::u16string> names;
    for (const Entry& sheet : sheets_)
        names.push_back(sheet.properties->title);
    return names;
}

std::optional<std::u16string> GoogleSheetWorkbook::sheet_name(int index, bool names_only) {
    const Trace trace;
    need(names_only ? Known::names : Known::everything);
    if (index < 0 || static_cast<std::size_t>(index) >= sheets_.size()) return std::nullopt;
    return sheets_[static_cast<std::size_t>(index)].properties->title;
}

GoogleSheetWorkbook::Entry& GoogleSheetWorkbook::entry(std::size_t index) {
    need(Known::everything);
    if (index >= sheets_.size()) throw Exception(error_id::sheet_not_found);
    return sheets_[index];
}

gsheet::SheetKind GoogleSheetWorkbook::sheet_kind(std::size_t index) {
    const Trace trace;
    return entry(index).properties->kind;
}

std::shared_ptr<GoogleSheetWorksheet> GoogleSheetWorkbook::worksheet(std::size_t index) {
    const Trace trace;
    const Entry& sheet = entry(index);
    return sheet.properties->kind == gsheet::SheetKind::other ? nullptr : sheet.worksheet;
}

std::size_t GoogleSheetWorkbook::index_of(std::int64_t sheet_id) {
    const auto found = std::find_if(sheets_.begin(), sheets_.end(), [&](const Entry& sheet) {
        return sheet.properties->sheet_id == sheet_id;
    });
    if (found == sheets_.end()) throw Exception(error_id::sheet_not_created);
    return static_cast<std::size_t>(found - sheets_.begin());
}

// --- Beyond the interface of books

std::optional<std::size_t> GoogleSheetWorkbook::sheet_with_id(std::int64_t sheet_id) {
    const Trace trace;
    need(Known::names);
    for (std::size_t index = 0; index < sheets_.size(); ++index)
        if (sheets_[index].properties->sheet_id == sheet_id) return index;
    return {};
}

std::vector<Range> GoogleSheetWorkbook::used_ranges(const std::vector<std::size_t>& sheet_indices) {
    const Trace trace;
    std::vector<Range> used(sheet_indices.size(), Range{0, 0, -1, -1});
    Array filters;
    for (const std::size_t index : sheet_indices) {
        const SheetProperties& sheet = *entry(index).properties;
        if (sheet.kind != gsheet::SheetKind::grid) continue;
        Object grid({{"sheetId", sheet.sheet_id}});
        Object filter;
        filter["gridRange"] = std::move(grid);
        filters.emplace_back(std::move(filter));
    }
    if (filters.empty()) return used;
    Object body;
    body["dataFilters"] = std::move(filters);
    body["majorDimension"] = "ROWS";
    auto request = gsheet::createAuthorizedRequest(
        foundation::http::HttpMethod::Post,
        gsheet::spreadsheet_url(id_, u"/values:batchGetByDataFilter"),
        {{"fields", "valueRanges(dataFilters.gridRange.sheetId,valueRange.values)"}});
    request.setRequestBody(foundation::json::to_text(std::move(body)));
    const std::vector<gsheet::ValueBlock> blocks =
        gsheet::executeRequestAndReadJsonResponse(std::move(request), gsheet::measure_value_blocks);
    for (std::size_t i = 0; i < sheet_indices.size(); ++i) {
        const Entry& sheet = entry(sheet_indices[i]);
        for (const gsheet::ValueBlock& block : blocks) {
            if (block.sheet_id != sheet.properties->sheet_id || block.columns == 0) continue;
            used[i] = {0, 0, last_index(block.rows), last_index(block.columns)};
            sheet.worksheet->note_used_range(used[i]);
        }
    }
    return used;
}

std::optional<GoogleSheetWorkbook::NamedCells>
GoogleSheetWorkbook::find_name(const std::u16string& name) {
    const Trace trace;
    need(Known::everything);
    const Object reply = gsheet::get_spreadsheet(id_, {{"fields", "namedRanges"}});
    const Object* const range = gsheet::find_named_range(reply, name);
    if (range == nullptr) return {};
    const auto index = sheet_with_id(gsheet::integer_in(*range, "sheetId").value_or(0));
    if (!index) return {};
    const std::optional<Range> cells = gsheet::cells_of(*range, *sheets_[*index].properties);
    if (!cells) return {};
    return NamedCells{*index, *cells};
}

// --- Changes

std::size_t GoogleSheetWorkbook::add_sheet(std::size_t index, const std::u16string& name) {
    const Trace trace;
    need(Known::everything);
    Object properties;
    properties["title"] = gsheet::json_text(name);
    properties["index"] = index;
    Object request;
    request["properties"] = std::move(properties);
    const Object reply = send_new_sheet(name, "addSheet", std::move(request));
    const Object* const added = gsheet::first_reply(reply, "addSheet");
    const Object* const told = added != nullptr ? gsheet::object_in(*added, "properties") : nullptr;
    if (told == nullptr) {
        known_ = Known::nothing; // the sheet is there, whatever the reply left out
        need(Known::everything);
        const auto added_at = std::find_if(sheets_.begin(), sheets_.end(), [&](const Entry& sheet) {
            return sheet.properties->title == name;
        });
        if (added_at == sheets_.end()) return std::min(index, sheets_.size() - 1);
        return static_cast<std::size_t>(added_at - sheets_.begin());
    }
    const std::int64_t end = static_cast<std::int64_t>(sheets_.size());
    const std::int64_t place = std::clamp<std::int64_t>(
        gsheet::integer_in(*told, "index").value_or(static_cast<std::int64_t>(index)), 0, end);
    sheets_.insert(sheets_.begin() + place, make_entry(gsheet::parse_sheet_properties(*told)));
    return static_cast<std::size_t>(place);
}

void GoogleSheetWorkbook::duplicate_sheet(std::size_t source, std::size_t index,
                                          const std::u16string& name) {
    const Trace trace;
    Object request(
        {{"sourceSheetId", entry(source).properties->sheet_id}, {"insertSheetIndex", index}});
    request["newSheetName"] = gsheet::json_text(name);
    send_new_sheet(name, "duplicateSheet", std::move(request));
    known_ = Known::nothing; // the reply does not say what the copy has of the protection
}

Object GoogleSheetWorkbook::send_new_sheet(const std::u16string& name, const char* request_name,
                                           Object request) {
    const auto has_name = [&name](const Entry& sheet) {
        return foundation::unicode::equal_ignoring_case(sheet.properties->title, name);
    };
    const bool was_there = std::any_of(sheets_.begin(), sheets_.end(), has_name);
    try {
        return gsheet::batch_update(id_, request_name, std::move(request));
    } catch (const Exception&) {
        if (was_there || !gsheet::last_request_was_repeated()) throw;
        try {
            fetch(Known::everything);
        } catch (const std::exception&) {
            known_ = Known::nothing; // whether the sheet is there is for the next question
        }
        if (std::none_of(sheets_.begin(), sheets_.end(), has_name)) throw;
        return {};
    }
}

std::size_t GoogleSheetWorkbook::copy_sheet(std::size_t source, std::size_t index,
                                            const std::u16string& name) {
    const Trace trace;
    const std::int64_t sheet_id = send_copy(source);
    place_copy(sheet_id, index, name);
    known_ = Known::nothing; // protection travels with the copy, and the reply does not tell of it
    need(Known::everything);
    return index_of(sheet_id);
}

std::int64_t GoogleSheetWorkbook::send_copy(std::size_t source) {
    const std::u16string source_title = entry(source).properties->title;
    const std::u16string path =
        u"/sheets/" +
        foundation::unicode::to_utf16(std::to_string(entry(source).properties->sheet_id)) +
        u":copyTo";
    Object destination;
    destination["destinationSpreadsheetId"] = gsheet::json_text(id_);
    std::optional<std::int64_t> kept;
    std::exception_ptr failure;
    try {
        const Object reply = gsheet::post_to_spreadsheet(
            id_, path, foundation::json::to_text(std::move(destination)));
        kept = gsheet::integer_in(reply, "sheetId");
        if (!kept) throw Exception(error_id::internal);
    } catch (const Exception&) {
        if (!gsheet::last_request_was_repeated()) throw;
        failure = std::current_exception();
    }
    if (!gsheet::last_request_was_repeated()) return *kept;
    Array deletions;
    try {
        for (const std::int64_t copy : ids_of_new_copies(source_title)) {
            if (!kept) kept = copy; // one that was made although the service reported a failure
            if (copy == *kept) continue;
            Object named;
            named["deleteSheet"] = Object({{"sheetId", copy}});
            deletions.emplace_back(std::move(named));
        }
        if (!deletions.empty()) gsheet::batch_update(id_, std::move(deletions));
    } catch (const std::exception&) {
        known_ = Known::nothing; // superfluous copies stay; the next question finds them
    }
    if (!kept) std::rethrow_exception(failure);
    return *kept;
}

std::vector<std::int64_t>
GoogleSheetWorkbook::ids_of_new_copies(const std::u16string& source_title) {
    const Object reply =
        gsheet::get_spreadsheet(id_, {{"fields", "sheets.properties(sheetId,title)"}});
    const std::u16string begin = u"Copy of " + source_title; // as the service names them
    std::vector<std::int64_t> ids;
    for (const SheetProperties& sheet : parse_sheets(reply)) {
        const bool is_known =
            std::any_of(sheets_.begin(), sheets_.end(), [&](const Entry& candidate) {
                return candidate.properties->sheet_id == sheet.sheet_id;
            });
        if (!is_known && sheet.title.starts_with(begin)) ids.push_back(sheet.sheet_id);
    }
    return ids;
}

void GoogleSheetWorkbook::place_copy(std::int64_t sheet_id, std::size_t index,
                                     const std::u16string& name) {
    Object properties;
    properties["sheetId"] = sheet_id;
    properties["title"] = gsheet::json_text(name);
    properties["index"] = index;
    try {
        gsheet::batch_update(
            id_, "updateSheetProperties",
            Object({{"properties", std::move(properties)}, {"fields", "title,index"}}));
    } catch (...) {
        try {
            gsheet::batch_update(id_, "deleteSheet", Object({{"sheetId", sheet_id}}));
        } catch (const std::exception&) {
            known_ = Known::nothing; // the copy stays; the next question finds it
        }
        throw;
    }
}

void GoogleSheetWorkbook::remove_sheet(std::size_t index) {
    const Trace trace;
    const std::int64_t sheet_id = entry(index).properties->sheet_id;
    gsheet::batch_update(id_, "deleteSheet", Object({{"sheetId", sheet_id}}));
    sheets_[index].properties->removed = true;
    sheets_.erase(sheets_.begin() + static_cast<std::ptrdiff_t>(index));
}

void GoogleSheetWorkbook::move_sheet(std::size_t from, std::size_t to) {
    const Trace trace;
    Object properties;
    properties["sheetId"] = entry(from).properties->sheet_id;
    // The service counts positions before the sheet has left its own.
    properties["index"] = to > from ? to + 1 : to;
    gsheet::batch_update(id_, "updateSheetProperties",
                         Object({{"properties", std::move(properties)}, {"fields", "index"}}));
    const auto at = [this](std::size_t index) {
        return sheets_.begin() + static_cast<std::ptrdiff_t>(index);
    };
    if (from < to)
        std::rotate(at(from), at(from + 1), at(to + 1));
    else
        std::rotate(at(to), at(from), at(from + 1));
}

} // namespace spreadsheet
