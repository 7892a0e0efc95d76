// SPDX-License-Identifier: Apache-2.0
//
// The reading side of a sheet of the service: what is asked for, and the conversion of fetched
// cells.
#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/unicode.h"
#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/failure.h"
#include "spreadsheet/gsheet/cell_conversion.h"
#include "spreadsheet/gsheet/cell_reply.h"
#include "spreadsheet/gsheet/google_worksheet.h"
#include "spreadsheet/gsheet/service_requests.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/limits.h"
#include "spreadsheet/range_walk.h"
#include "spreadsheet/trace.h"
#include "spreadsheet/typed_cells.h"

namespace spreadsheet {

namespace {

using foundation::unicode::to_utf16;
using foundation::unicode::to_utf8;
using gsheet::CachedCell;
using gsheet::Object;

/// The most rows that one reply is asked for, counted as last minus first.
constexpr std::int64_t kMaxRowSpan = 500'000;
/// No sheet has a cell there.
constexpr int kEndIndex = static_cast<int>(kMaxGoogleCells);

constexpr const char* kCellFields =
    "sheets.data.rowData.values(userEnteredFormat/numberFormat,userEnteredValue,effectiveValue,"
    "effectiveFormat/numberFormat)";

void check_row_span(const Range& range) {
    const std::int64_t span = std::int64_t{range.last_row} - range.first_row;
    if (span <= kMaxRowSpan) return;
    gsheet::log_line(foundation::log::error,
                     "Read Request Row size exceeds : " + std::to_string(span));
    throw Exception(error_id::google_rows_too_many);
}

/// The smallest range with all cells of a walk.
template <class Cells>
Range bounds_of(const Cells& cells) {
    Range bounds{kEndIndex, kEndIndex, -1, -1};
    for (const CellIterator::Indices at : cells) {
        bounds.first_row = std::min(bounds.first_row, at.row);
        bounds.last_row = std::max(bounds.last_row, at.row);
        bounds.first_column = std::min(bounds.first_column, at.column);
        bounds.last_column = std::max(bounds.last_column, at.column);
    }
    return bounds;
}

Range bounds_of(const CellTypeIterator& cells) {
    if (cells.size() == 0) return {0, 0, -1, -1};
    const auto [first, last] =
        std::minmax_element(cells.column_indices().begin(), cells.column_indices().end());
    return {cells.row_blocks().front(), *first, cells.row_blocks().back(), *last};
}

/// Whether the service refused the name that was the request's only argument. The message alone
/// tells that from other refusals: there is no reason beside it, nor is there one beside those.
bool is_unknown_range(const Exception& failure) {
    const ServiceReason service = failure_of(failure).service;
    return service.http_status == 400 && service.status == "INVALID_ARGUMENT" &&
           service.reason.empty() && service.message.starts_with("Unable to parse range");
}

} // namespace

GoogleSheetWorksheet::GoogleSheetWorksheet(std::u16string spreadsheet_id,
                                           std::shared_ptr<gsheet::SheetProperties> properties)
    : spreadsheet_id_(std::move(spreadsheet_id)), properties_(std::move(properties)) {}

const gsheet::SheetProperties& GoogleSheetWorksheet::properties() const {
    const Trace trace;
    return sheet();
}

gsheet::SheetProperties& GoogleSheetWorksheet::sheet() const {
    if (properties_->removed) throw Exception(error_id::sheet_not_found);
    return *properties_;
}

// --- Fetching

void GoogleSheetWorksheet::fetch(const Range& range) {
    check_row_span(range);
    gsheet::check_range(range);
    if (range.last_row >= kEndIndex || range.last_column >= kEndIndex)
        throw Exception(error_id::google_range_too_large);
    const std::u16string where = gsheet::qualified_range(sheet().title, range);
    cells_ = gsheet::executeRequestAndReadJsonResponse(
        gsheet::spreadsheet_get(spreadsheet_id_,
                                {{"ranges", to_utf8(where)}, {"fields", kCellFields}}),
        [&](std::string_view body) { return gsheet::parse_cells(body, range); });
}

void GoogleSheetWorksheet::hold(const Range& range) {
    sheet();
    if (!cells_.holds(range)) fetch(range);
}

void GoogleSheetWorksheet::forget_cells() {
    cells_ = {};
}

int GoogleSheetWorksheet::count_of(const char* major_dimension) const {
    const std::u16string suffix = u"/values/" + to_utf16(gsheet::encoded_title(sheet().title));
    const std::size_t count = gsheet::executeRequestAndReadJsonResponse(
        gsheet::createAuthorizedRequest(
            foundation::http::HttpMethod::Get, gsheet::spreadsheet_url(spreadsheet_id_, suffix),
            {{"fields", "values"}, {"majorDimension", major_dimension}}),
        gsheet::count_values);
    return static_cast<int>(std::min<std::size_t>(count, kEndIndex));
}

Range GoogleSheetWorksheet::used_range() {
    const Trace trace;
    sheet();
    if (used_range_known_) return used_range_;
    const int columns = count_of("COLUMNS");
    const int rows = count_of("ROWS");
    const Range used{0, 0, rows - 1, columns - 1};
    if (rows >= 1 && columns >= 1) {
        used_range_ = used;
        used_range_known_ = true;
    }
    return used;
}

void GoogleSheetWorksheet::note_used_range(const Range& used) {
    used_range_known_ = !is_empty(used);
    if (used_range_known_) used_range_ = used;
}

Range GoogleSheetWorksheet::named_range(const std::u16string& name) const {
    const Trace trace;
    const gsheet::SheetProperties& self = sheet();
    std::optional<Object> reply;
    try {
        reply = gsheet::get_spreadsheet(spreadsheet_id_,
                                        {{"ranges", to_utf8(name)}, {"fields", "namedRanges"}});
    } catch (const Exception& failure) {
        if (is_unknown_range(failure)) throw Exception(error_id::named_range_not_found);
        throw;
    }
    const Object* const range = gsheet::find_named_range(*reply, name);
    const bool is_here =
        range != nullptr && gsheet::integer_in(*range, "sheetId").value_or(0) == self.sheet_id;
    if (!is_here) throw Exception(error_id::named_range_not_found);
    const std::optional<Range> cells = gsheet::cells_of(*range, self);
    if (!cells) throw Exception(error_id::named_range_not_found);
    return *cells;
}

// --- Types and typed reads

void GoogleSheetWorksheet::fetch_types(const Range& range, cell_type* out) {
    const Trace trace;
    sheet();
    if (is_empty(range)) return;
    fetch(range);
    if (out == nullptr) return;
    for_each_cell(range, [&](int row, int column) { *out++ = cells_.at(row, column).type(); });
}

void GoogleSheetWorksheet::cell_types(const CellIterator& cells, cell_type* out) {
    const Trace trace;
    const Range bounds = bounds_of(cells);
    sheet();
    if (is_empty(bounds)) return;
    fetch(bounds);
    for (const CellIterator::Indices at : cells)
        *out++ = cells_.at(at.row, at.column).type();
}

GoogleSheetWorksheet::ReadFunction
GoogleSheetWorksheet::allReadFunction(const ReadTarget& target) const {
    const Trace trace;
    const auto cell = [this](int row, int column) { return cells_.at(row, column); };
    if (std::holds_alternative<double*>(target))
        return [cell](ReadTarget& out, int row, int column) {
            *std::get<double*>(out)++ = gsheet::number_of(cell(row, column));
        };
    if (std::holds_alternative<SerialDatenum*>(target))
        return [cell](ReadTarget& out, int row, int column) {
            (std::get<SerialDatenum*>(out)++)->value = gsheet::serial_of(cell(row, column));
        };
    if (std::holds_alternative<bool*>(target))
        return [cell](ReadTarget& out, int row, int column) {
            *std::get<bool*>(out)++ = gsheet::boolean_of(cell(row, column));
        };
    if (std::holds_alternative<unsigned char*>(target))
        return [cell](ReadTarget& out, int row, int column) {
            *std::get<unsigned char*>(out)++ = gsheet::boolean_of(cell(row, column)) ? 1 : 0;
        };
    return [this, text = std::u16string()](ReadTarget& out, int row, int column) mutable {
        const StringBuilder& builder = std::get<StringBuilder>(out);
        gsheet::assign_text(text, cells_, cells_.at(row, column));
        builder.append(builder.context, text);
    };
}

void GoogleSheetWorksheet::read(const Range& range, ReadTarget target) {
    const Trace trace;
    sheet();
    if (is_empty(range)) return;
    hold(range);
    const ReadFunction append = allReadFunction(target);
    for_each_cell(range, [&](int row, int column) { append(target, row, column); });
}

void GoogleSheetWorksheet::read(const Range& range, const cell_type* types,
                                const CellBuilder& builder) {
    const Trace trace;
    sheet();
    if (is_empty(range)) return;
    hold(range);
    gsheet::CachedValue value(cells_);
    for_each_cell(range, [&](int row, int column) {
        deliver(builder, *types++, value.select(cells_.at(row, column)));
    });
}

void GoogleSheetWorksheet::read_cell_array(CellTypeIterator& cells,
                                           output::CellOutputBuilder& builder,
                                           bool dates_as_numbers) {
    const Trace trace;
    sheet();
    const Range bounds = bounds_of(cells);
    if (!is_empty(bounds)) hold(bounds);
    builder.begin(cells.rows(), cells.columns());
    gsheet::CachedValue value(cells_);
    for (cells.rewind(); !cells.at_end(); ++cells)
        deliver(builder, cells.type(), dates_as_numbers,
                value.select(cells_.at((*cells).row, (*cells).column)));
}

} // namespace spreadsheet
