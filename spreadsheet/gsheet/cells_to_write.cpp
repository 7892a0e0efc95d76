// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/cells_to_write.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "foundation/json.h"
#include "foundation/unicode.h"
#include "spreadsheet/range_walk.h"

namespace spreadsheet {

namespace {

void append_number(std::string& json, double value) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    json.append(text.data(), end);
}

/// Elements of a JSON array.
template <class AppendElement>
void append_array(std::string& json, std::size_t count, AppendElement append_element) {
    json += '[';
    for (std::size_t index = 0; index < count; ++index) {
        if (index != 0) json += ',';
        append_element(index);
    }
    json += ']';
}

} // namespace

CellsToWrite::CellsToWrite(const Range& range, const cell_type* types, const CellProvider& provider)
    : range_(range),
      rows_(extent(range.first_row, range.last_row)),
      columns_(extent(range.first_column, range.last_column)) {
    cells_.reserve(rows_ * columns_);
    for (std::size_t index = 0; index < rows_ * columns_; ++index)
        take_cell(provider, types[index], [this](const auto& value) { append(value); });
}

void CellsToWrite::add(cell_type type, double number) {
    cells_.push_back(std::isfinite(number) ? Cell{type, number, 0} : Cell{});
}

void CellsToWrite::append(double number) {
    add(cell_type::number, number);
}

void CellsToWrite::append(SerialDatenum date) {
    add(cell_type::date, date.value);
}

void CellsToWrite::append(bool value) {
    add(cell_type::boolean, value ? 1.0 : 0.0);
}

void CellsToWrite::append(const std::u16string& text) {
    cells_.push_back({cell_type::text, 0.0, static_cast<std::uint32_t>(texts_.size())});
    texts_.push_back(foundation::unicode::to_utf8(text));
}

void CellsToWrite::append(NoValue) {
    cells_.emplace_back();
}

void CellsToWrite::append_value(std::string& json, const Cell& cell) const {
    switch (cell.type) {
    case cell_type::number:
    case cell_type::date:
        return append_number(json, cell.number);
    case cell_type::boolean:
        json += cell.number != 0.0 ? "true" : "false";
        return;
    case cell_type::text:
        json += foundation::json::to_text(foundation::json::Value(texts_[cell.text]));
        return;
    default:
        json += "\"\"";
    }
}

void CellsToWrite::append_object(std::string& json, const Cell& cell) const {
    constexpr std::string_view kDateFormat =
        R"(,"userEnteredFormat":{"numberFormat":{"type":"DATE_TIME"}})";
    const auto append = [&](std::string_view key) {
        json.append(R"({"userEnteredValue":{")").append(key).append("\":");
        append_value(json, cell);
        json += '}';
        if (cell.type == cell_type::date) json += kDateFormat;
        json += '}';
    };
    switch (cell.type) {
    case cell_type::number:
    case cell_type::date:
        return append("numberValue");
    case cell_type::boolean:
        return append("boolValue");
    case cell_type::text:
        return append("stringValue");
    default:
        json += "{}";
    }
}

std::size_t CellsToWrite::filled_columns(std::size_t row) const {
    std::size_t count = columns_;
    while (count > 0 && at(row, count - 1).type == cell_type::empty)
        --count;
    return count;
}

std::string CellsToWrite::rows_text(bool trimmed) const {
    std::size_t rows = rows_;
    while (trimmed && rows > 0 && filled_columns(rows - 1) == 0)
        --rows;
    std::string json;
    append_array(json, rows, [&](std::size_t row) {
        const std::size_t columns = trimmed ? filled_columns(row) : columns_;
        json += R"({"values":)";
        append_array(json, columns,
                     [&](std::size_t column) { append_object(json, at(row, column)); });
        json += '}';
    });
    return json;
}

std::string CellsToWrite::columns_text() const {
    std::string json;
    append_array(json, columns_, [&](std::size_t column) {
        append_array(json, rows_, [&](std::size_t row) { append_value(json, at(row, column)); });
    });
    return json;
}

std::vector<Range> CellsToWrite::date_runs() const {
    std::vector<Range> runs;
    for (std::size_t column = 0; column < columns_; ++column) {
        const int place = range_.first_column + static_cast<int>(column);
        bool is_open = false;
        for (std::size_t row = 0; row < rows_; ++row) {
            const int line = range_.first_row + static_cast<int>(row);
            const bool is_date = at(row, column).type == cell_type::date;
            if (is_date && is_open) runs.back().last_row = line;
            if (is_date && !is_open) runs.push_back({line, place, line, place});
            is_open = is_date;
        }
    }
    return runs;
}

/// An empty text is not a value to the service, which leaves it out at the end of its values.
bool CellsToWrite::has_value(const Cell& cell) const {
    if (cell.type == cell_type::text) return !texts_[cell.text].empty();
    return cell.type != cell_type::empty;
}

std::optional<Range> CellsToWrite::filled() const {
    std::optional<Range> filled;
    for (std::size_t index = 0; index < cells_.size(); ++index) {
        if (!has_value(cells_[index])) continue;
        const int row = range_.first_row + static_cast<int>(index % rows_);
        const int column = range_.first_column + static_cast<int>(index / rows_);
        if (!filled) filled = Range{row, column, row, column};
        filled->first_row = std::min(filled->first_row, row);
        filled->last_row = std::max(filled->last_row, row);
        filled->last_column = column;
    }
    return filled;
}

} // namespace spreadsheet
