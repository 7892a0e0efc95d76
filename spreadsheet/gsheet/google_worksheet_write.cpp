// SPDX-License-Identifier: Apache-2.0
//
// The writing side of a sheet of the service. Every change is sent at once; changes of the grid
// stay when what follows them fails.
#include <algorithm>
#include <string>
#include <utility>

#include "foundation/json.h"
#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/cells_to_write.h"
#include "spreadsheet/gsheet/google_worksheet.h"
#include "spreadsheet/gsheet/service_requests.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/range_walk.h"
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

Object append_dimension(std::int64_t sheet_id, const char* dimension, std::int64_t length) {
    return Object({{"sheetId", sheet_id}, {"dimension", dimension}, {"length", length}});
}

/// Deletes the rows or columns from `begin` to before `end`.
Object delete_dimension(std::int64_t sheet_id, const char* dimension, std::int64_t begin,
                        std::int64_t end) {
    Object range({{"sheetId", sheet_id},
                  {"dimension", dimension},
                  {"startIndex", begin},
                  {"endIndex", end}});
    Object request;
    request["range"] = std::move(range);
    return request;
}

std::optional<gsheet::SheetProperties> find_sheet(const Object& reply, std::int64_t sheet_id) {
    const Array* const sheets = gsheet::array_in(reply, "sheets");
    if (sheets == nullptr) return {};
    for (const auto& sheet : *sheets) {
        if (!sheet.is_object()) continue;
        gsheet::SheetProperties parsed = gsheet::parse_sheet(sheet.get_object());
        if (parsed.sheet_id == sheet_id) return parsed;
    }
    return {};
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
    note_filled(cells);
}

void GoogleSheetWorksheet::note_filled(const CellsToWrite& cells) {
    const std::optional<Range> filled = cells.filled();
    if (!used_range_known_ || !filled) return;
    used_range_.last_row = std::max(used_range_.last_row, filled->last_row);
    used_range_.last_column = std::max(used_range_.last_column, filled->last_column);
}

void GoogleSheetWorksheet::replace(const Range& range, const cell_type* types,
                                   const CellProvider& provider, bool keep_formats) {
    const Trace trace;
    gsheet::SheetProperties& self = sheet();
    const gsheet::GridSize before{self.row_count, self.column_count};
    const gsheet::GridPlan plan = gsheet::plan_grid(before, range, [this] { return used_range(); });
    const bool is_cut = plan.cut.rows < before.rows || plan.cut.columns < before.columns;
    if (is_cut &&
        (used_range().last_row >= plan.cut.rows || used_range().last_column >= plan.cut.columns))
        throw Exception(error_id::google_range_too_large);
    const CellsToWrite cells(range, types, provider);
    Array around = grid_requests(plan);
    std::string body = R"({"requests":[)";
    for (const auto& request : around)
        body.append(to_text(request)) += ',';
    body += R"({"updateCells":{"range":)";
    body += to_text(grid_range_json(self.sheet_id, range));
    body += keep_formats ? R"(,"fields":"userEnteredValue","rows":)"
                         : R"(,"fields":"userEnteredFormat,userEnteredValue","rows":)";
    body += cells.rows_text(true);
    body += "}}";
    if (keep_formats)
        for (const Range& run : cells.date_runs())
            (body += ',') += to_text(date_format_request(self.sheet_id, run));
    body += "]}";
    forget_cells(); // a write that fails may have taken effect
    gsheet::post_to_spreadsheet(spreadsheet_id_, u":batchUpdate", std::move(body));
    self.row_count = plan.wanted.rows;
    self.column_count = plan.wanted.columns;
    mend_repeated_growth(
        {plan.wanted.rows - plan.cut.rows, plan.wanted.columns - plan.cut.columns});
    note_filled(cells);
}

void GoogleSheetWorksheet::write_formulas(const Range& range, const std::string_view* formulas) {
    gsheet::check_range(range);
    const std::size_t rows = extent(range.first_row, range.last_row);
    const std::size_t columns = extent(range.first_column, range.last_column);
    std::string body = R"({"requests":[{"updateCells":{"range":)";
    body += to_text(grid_range_json(sheet().sheet_id, range));
    body += R"(,"fields":"userEnteredValue","rows":[)";
    for (std::size_t row = 0; row < rows; ++row) {
        body += row == 0 ? R"({"values":[)" : R"(,{"values":[)";
        for (std::size_t column = 0; column < columns; ++column) {
            if (column != 0) body += ',';
            const std::string text = "=" + std::string(formulas[column * rows + row]);
            body += R"({"userEnteredValue":{"formulaValue":)";
            body += to_text(foundation::json::Value(text));
            body += "}}";
        }
        body += "]}";
    }
    body += "]}}]}";
    forget_cells(); // a write that fails may have taken effect
    gsheet::post_to_spreadsheet(spreadsheet_id_, u":batchUpdate", std::move(body));
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
    log_grid_request("DeleteDimension", gsheet::batch_update_url(spreadsheet_id_));
    forget_cells();
    send("deleteDimension",
         delete_dimension(self.sheet_id, is_by_rows ? "ROWS" : "COLUMNS", left, count));
    count = left;
    if (!used_range_known_) return;
    int& last = is_by_rows ? used_range_.last_row : used_range_.last_column;
    last = std::min(last, static_cast<int>(left) - 1);
}

void GoogleSheetWorksheet::grow_grid(const char* dimension, std::int64_t length,
                                     std::int64_t& count) {
    if (length <= 0) return;
    log_grid_request("AppendDimension", gsheet::batch_update_url(spreadsheet_id_));
    send("appendDimension", append_dimension(sheet().sheet_id, dimension, length));
    count += length;
    const bool are_rows = std::string_view(dimension) == "ROWS";
    mend_repeated_growth({are_rows ? length : 0, are_rows ? 0 : length});
}

Array GoogleSheetWorksheet::grid_requests(const gsheet::GridPlan& plan) const {
    const gsheet::SheetProperties& self = sheet();
    Array requests;
    const auto add = [&requests](const char* name, Object request) {
        Object named;
        named[name] = std::move(request);
        requests.emplace_back(std::move(named));
    };
    const auto fit = [&](const char* dimension, std::int64_t now, std::int64_t cut,
                         std::int64_t wanted) {
        if (cut < now) add("deleteDimension", delete_dimension(self.sheet_id, dimension, cut, now));
        if (wanted > cut)
            add("appendDimension", append_dimension(self.sheet_id, dimension, wanted - cut));
    };
    fit("ROWS", self.row_count, plan.cut.rows, plan.wanted.rows);
    fit("COLUMNS", self.column_count, plan.cut.columns, plan.wanted.columns);
    return requests;
}

void GoogleSheetWorksheet::mend_repeated_growth(const gsheet::GridSize& growth) {
    const bool has_grown = growth.rows > 0 || growth.columns > 0;
    if (!has_grown || !gsheet::last_request_was_repeated()) return;
    gsheet::SheetProperties& self = sheet();
    const Object reply = gsheet::get_spreadsheet(
        spreadsheet_id_, {{"fields", "sheets.properties(sheetId,gridProperties)"}});
    const std::optional<gsheet::SheetProperties> now = find_sheet(reply, self.sheet_id);
    if (!now) return;
    Array requests;
    // Only what is a multiple of the growth came from the repeats.
    const auto cut = [&](const char* dimension, std::int64_t& known, std::int64_t actual,
                         std::int64_t length) {
        const std::int64_t surplus = actual - known;
        if (length <= 0 || surplus <= 0 || surplus % length != 0) return;
        Object named;
        named["deleteDimension"] = delete_dimension(self.sheet_id, dimension, known, actual);
        requests.emplace_back(std::move(named));
    };
    cut("ROWS", self.row_count, now->row_count, growth.rows);
    cut("COLUMNS", self.column_count, now->column_count, growth.columns);
    if (!requests.empty()) gsheet::batch_update(spreadsheet_id_, std::move(requests));
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
    const gsheet::SheetProperties& self = sheet();
    // The service refuses ranges beyond the grid, which a write makes larger: the whole sheet is
    // asked about then.
    const bool is_inside = self.row_count == 0 || (range.last_row < self.row_count &&
                                                   range.last_column < self.column_count);
    const std::u16string where =
        is_inside ? gsheet::qualified_range(self.title, range) : gsheet::quoted_title(self.title);
    return gsheet::is_writeable(range, protected_ranges(where));
}

bool GoogleSheetWorksheet::may_write(const Range& range) const {
    const Trace trace;
    std::vector<gsheet::ProtectedRange> locked = sheet().protected_ranges;
    std::erase_if(locked, [](const auto& entry) { return entry.is_editable; });
    return gsheet::is_writeable(range, locked);
}

void GoogleSheetWorksheet::set_hidden(bool hidden) {
    const Trace trace;
    Object properties({{"sheetId", sheet().sheet_id}, {"hidden", hidden}});
    Object request;
    request["properties"] = std::move(properties);
    request["fields"] = "hidden";
    send("updateSheetProperties", std::move(request));
    sheet().hidden = hidden;
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
    std::erase_if(self.protected_ranges, [](const auto& entry) { return entry.is_whole_sheet; });
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
