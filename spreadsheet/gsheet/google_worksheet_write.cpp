// SPDX-License-Identifier: Apache-2.0
//
// The writing side of a sheet of the service. Every change is sent at once; changes of the grid
// stay when what follows them fails.
#include <algorithm>
#include <string>
#include <utility>

#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/cells_to_write.h"
#include "spreadsheet/gsheet/google_worksheet.h"
#include "spreadsheet/gsheet/service_requests.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/trace.h"

namespace spreadsheet {

namespace {

using foundation::json::to_text;
using foundation::unicode::to_utf8;
using gsheet::Array;
using gsheet::grid_range_json;
using gsheet::Object;

void log_grid_request(const char* kind, const std::u16string& url) {
    gsheet::log_line(foundation::log::info,
                     "Request URL for " + std::string(kind) + " request:" + to_utf8(url));
}

/// Gives the cells of a run the format of a date and leaves their other formats alone.
Object date_format_request(std::int64_t sheet_id, const Range& run) {
    Object format({{"type", "DATE_TIME"}, {"pattern", "yyyy-mm-dd hh:mm:ss"}});
    Object entered;
    entered["numberFormat"] = std::move(format);
    Object cell;
    cell["userEnteredFormat"] = std::move(entered);
    Object request;
    request["range"] = grid_range_json(sheet_id, run);
    request["cell"] = std::move(cell);
    request["fields"] = "userEnteredFormat.numberFormat";
    Object named;
    named["repeatCell"] = std::move(request);
    return named;
}

} // namespace

void GoogleSheetWorksheet::send(std::string_view request_name, Object request) const {
    gsheet::batch_update(spreadsheet_id_, request_name, std::move(request));
}

// --- Cells

void GoogleSheetWorksheet::write(const Range& range, const cell_type* types,
                                 const CellProvider& provider, bool preserve_format) {
    const Trace trace;
    fit_grid(range);
    const CellsToWrite cells(range, types, provider);
    forget_cells(); // a write that fails may have taken effect
    if (preserve_format)
        write_preserve_format(range, cells);
    else
        write_clear_format(range, cells);
    const std::optional<Range> filled = cells.filled();
    if (!used_range_known_ || !filled) return;
    used_range_.last_row = std::max(used_range_.last_row, filled->last_row);
    used_range_.last_column = std::max(used_range_.last_column, filled->last_column);
}

void GoogleSheetWorksheet::write_clear_format(const Range& range, const CellsToWrite& cells) {
    std::string body = R"({"requests":[{"updateCells":{"range":)";
    body += to_text(grid_range_json(sheet().sheet_id, range));
    body += R"(,"fields":"userEnteredFormat, userEnteredValue","rows":)";
    body += cells.rows_text();
    body += "}}]}";
    gsheet::post_to_spreadsheet(spreadsheet_id_, u":batchUpdate", std::move(body));
}

void GoogleSheetWorksheet::write_preserve_format(const Range& range, const CellsToWrite& cells) {
    const gsheet::SheetProperties& self = sheet();
    auto request = gsheet::createAuthorizedRequest(
        foundation::http::HttpMethod::Put,
        gsheet::spreadsheet_url(spreadsheet_id_,
                                u"/values/" + gsheet::encoded_range(self.title, range)),
        {{"valueInputOption", "USER_ENTERED"}});
    std::string body = R"({"range":)";
    body += to_text(gsheet::json_text(gsheet::qualified_range(self.title, range)));
    body += R"(,"majorDimension":"COLUMNS","values":)";
    body += cells.columns_text();
    body += '}';
    request.setRequestBody(std::move(body));
    gsheet::executeRequestAndParseJsonResponse(std::move(request));
    Array formats;
    for (const Range& run : cells.date_runs())
        formats.emplace_back(date_format_request(self.sheet_id, run));
    if (!formats.empty()) gsheet::batch_update(spreadsheet_id_, std::move(formats));
}

void GoogleSheetWorksheet::clear(const Range& range) {
    const Trace trace;
    gsheet::check_range(range);
    const std::u16string suffix =
        u"/values/" + gsheet::encoded_range(sheet().title, range) + u":clear";
    forget_cells();
    gsheet::post_to_spreadsheet(spreadsheet_id_, suffix, "{}");
}

// --- The grid

void GoogleSheetWorksheet::fit_grid(const Range& range) {
    gsheet::SheetProperties& self = sheet();
    const gsheet::GridPlan plan = gsheet::plan_grid({self.row_count, self.column_count}, range,
                                                    [this] { return used_range(); });
    shrink_grid(plan);
    grow_grid("ROWS", plan.wanted.rows - self.row_count, self.row_count);
    grow_grid("COLUMNS", plan.wanted.columns - self.column_count, self.column_count);
}

void GoogleSheetWorksheet::shrink_grid(const gsheet::GridPlan& plan) {
    gsheet::SheetProperties& self = sheet();
    const bool is_by_rows = plan.cut.rows < self.row_count;
    if (!is_by_rows && plan.cut.columns >= self.column_count) return;
    std::int64_t& count = is_by_rows ? self.row_count : self.column_count;
    const std::int64_t left = is_by_rows ? plan.cut.rows : plan.cut.columns;
    Object range({{"sheetId", self.sheet_id},
                  {"dimension", is_by_rows ? "ROWS" : "COLUMNS"},
                  {"startIndex", left},
                  {"endIndex", count}});
    log_grid_request("DeleteDimension", gsheet::batch_update_url(spreadsheet_id_));
    Object request;
    request["range"] = std::move(range);
    forget_cells();
    send("deleteDimension", std::move(request));
    count = left;
    if (!used_range_known_) return;
    int& last = is_by_rows ? used_range_.last_row : used_range_.last_column;
    last = std::min(last, static_cast<int>(left) - 1);
}

void GoogleSheetWorksheet::grow_grid(const char* dimension, std::int64_t length,
                                     std::int64_t& count) {
    if (length <= 0) return;
    log_grid_request("AppendDimension", gsheet::batch_update_url(spreadsheet_id_));
    send("appendDimension",
         Object({{"sheetId", sheet().sheet_id}, {"dimension", dimension}, {"length", length}}));
    count += length;
}

// --- The sheet

void GoogleSheetWorksheet::rename(const std::u16string& title) {
    const Trace trace;
    Object properties;
    properties["sheetId"] = sheet().sheet_id;
    properties["title"] = gsheet::json_text(title);
    Object request;
    request["properties"] = std::move(properties);
    request["fields"] = "title";
    send("updateSheetProperties", std::move(request));
    sheet().title = title;
}

std::vector<gsheet::ProtectedRange>
GoogleSheetWorksheet::protected_ranges(const std::u16string& range) const {
    const Object reply = gsheet::get_spreadsheet(
        spreadsheet_id_, {{"ranges", to_utf8(range)}, {"fields", "sheets.protectedRanges"}});
    const Object* const first = gsheet::first_object_in(reply, "sheets");
    return first != nullptr ? gsheet::parse_protected_ranges(*first)
                            : std::vector<gsheet::ProtectedRange>();
}

bool GoogleSheetWorksheet::is_range_writeable(const Range& range) const {
    const Trace trace;
    gsheet::check_range(range);
    return gsheet::is_writeable(range,
                                protected_ranges(gsheet::qualified_range(sheet().title, range)));
}

void GoogleSheetWorksheet::set_protected(bool on) {
    const Trace trace;
    gsheet::SheetProperties& self = sheet();
    if (on) {
        Object range({{"sheetId", self.sheet_id}});
        Object protection;
        protection["range"] = std::move(range);
        Object request;
        request["protectedRange"] = std::move(protection);
        send("addProtectedRange", std::move(request));
        self.is_protected = true;
        return;
    }
    Array requests;
    for (const gsheet::ProtectedRange& entry : protected_ranges(gsheet::quoted_title(self.title))) {
        if (!entry.is_whole_sheet) continue;
        Object named;
        named["deleteProtectedRange"] = Object({{"protectedRangeId", entry.id}});
        requests.emplace_back(std::move(named));
    }
    if (!requests.empty()) gsheet::batch_update(spreadsheet_id_, std::move(requests));
    self.is_protected = false;
}

void GoogleSheetWorksheet::unmerge(const Range& range) {
    const Trace trace;
    gsheet::check_range(range);
    Object request;
    request["range"] = grid_range_json(sheet().sheet_id, range);
    forget_cells();
    send("unmergeCells", std::move(request));
}

void GoogleSheetWorksheet::auto_fit_column_widths(const Range& range) {
    const Trace trace;
    gsheet::check_range(range);
    Object dimensions({{"sheetId", sheet().sheet_id},
                       {"dimension", "COLUMNS"},
                       {"startIndex", range.first_column},
                       {"endIndex", std::int64_t{range.last_column} + 1}});
    Object request;
    request["dimensions"] = std::move(dimensions);
    send("autoResizeDimensions", std::move(request));
}

} // namespace spreadsheet
