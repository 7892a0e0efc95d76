// SPDX-License-Identifier: Apache-2.0
#include "zxsheet/cells_reader.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <boost/json.hpp>

#include "zxsheet/cell_guess.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/command_error.h"
#include "zxsheet/delimited_reader.h"
#include "zxsheet/range_reference.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

/// The longest text of a cell is a fifth of it when every character is escaped.
constexpr std::size_t kMaxLineBytes = 1 << 20;

std::optional<double> number_in(std::string_view text) {
    double value = 0.0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool is_number = failure == std::errc() && end == text.data() + text.size();
    return is_number && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

/// The inverse of `time_text`.
std::optional<double> days_in(std::string_view text) {
    const bool is_negative = text.starts_with('-');
    if (is_negative) text.remove_prefix(1);
    double seconds = 0.0;
    for (int part = 0; part < 3; ++part) {
        const std::size_t end = part < 2 ? text.find(':') : text.size();
        if (end == text.npos) return {};
        const std::string_view digits = text.substr(0, end);
        const bool is_plain =
            !digits.empty() && digits.find_first_not_of("0123456789.") == digits.npos;
        const auto value = is_plain ? number_in(digits) : std::nullopt;
        if (!value) return {};
        seconds = seconds * 60.0 + *value;
        text.remove_prefix(part < 2 ? end + 1 : end);
    }
    constexpr double kSecondsOfDay = 86'400.0;
    return (is_negative ? -seconds : seconds) / kSecondsOfDay;
}

std::optional<cell_type> type_with_name(std::string_view name) {
    for (int i = 0; i <= static_cast<int>(cell_type::error); ++i)
        if (type_name(static_cast<cell_type>(i)) == name) return static_cast<cell_type>(i);
    return {};
}

std::string copy_of(const boost::json::string& text) {
    return {text.data(), text.size()};
}

class CellsReader {
  public:
    CellsReader(TextInput& input, const CellVisitor& visit) : input_(input), visit_(visit) {}

    void read_separated() {
        DelimitedReader reader(input_, '\t');
        std::string fields[3], field;
        std::size_t count = 0;
        while (const auto end = reader.next(field)) {
            if (count < 3) fields[count] = field;
            ++count;
            if (*end == FieldEnd::Separator) continue;
            ++line_;
            const bool is_empty_line = count == 1 && fields[0].empty();
            if (count != 3 && !is_empty_line) fail("has no address, type and value");
            if (!is_empty_line) take(fields[0], fields[1], fields[2]);
            count = 0;
        }
    }

    void read_json_lines() {
        std::string text;
        while (next_line(text)) {
            ++line_;
            if (text.find_first_not_of(" \t\r") == text.npos) continue;
            boost::json::error_code failure;
            const boost::json::value line = boost::json::parse(text, failure);
            const auto* const object = failure ? nullptr : line.if_object();
            const auto* const cell = object != nullptr ? object->if_contains("cell") : nullptr;
            const auto* const type = object != nullptr ? object->if_contains("type") : nullptr;
            const auto* const value = object != nullptr ? object->if_contains("value") : nullptr;
            if (cell == nullptr || !cell->is_string() || type == nullptr || !type->is_string() ||
                value == nullptr)
                fail("is not an object with cell, type and value");
            take(copy_of(cell->as_string()), copy_of(type->as_string()), text_of(*value));
        }
    }

  private:
    bool next_line(std::string& text) {
        text.clear();
        if (input_.peek() == TextInput::kEnd) return false;
        for (int byte = input_.next(); byte != TextInput::kEnd && byte != '\n';
             byte = input_.next()) {
            if (text.size() == kMaxLineBytes) fail("is too long");
            text += static_cast<char>(byte);
        }
        return true;
    }

    std::string text_of(const boost::json::value& value) const {
        if (value.is_string()) return copy_of(value.as_string());
        if (value.is_null()) return {};
        if (value.is_object() || value.is_array()) fail("has a value that no cell can have");
        return value.is_number() ? number_text(value.to_number<double>())
                                 : std::string(value.as_bool() ? "true" : "false");
    }

    void take(const std::string& address, const std::string& type_text, const std::string& text) {
        const auto place = parse_cells(address, spreadsheet::book::format::XLSX);
        const bool is_cell = place && place->has_rows() && place->has_columns();
        if (!is_cell || place->range.count() != 1)
            fail("begins with '" + address + "', not a cell");
        const auto type = type_with_name(type_text);
        if (!type) fail("has a type '" + type_text + "', which is not one of cells");
        CellValue cell;
        cell.type = *type;
        switch (*type) {
        case cell_type::number:
            cell.number = required(number_in(text) ? number_in(text) : days_in(text), text);
            break;
        case cell_type::date:
            cell.number = required(date_serial(text) ? date_serial(text) : number_in(text), text);
            cell.text = text;
            break;
        case cell_type::boolean:
            if (text != "true" && text != "false") required({}, text);
            cell.number = text == "true" ? 1.0 : 0.0;
            break;
        case cell_type::text:
        case cell_type::error:
            cell.text = text;
            break;
        default:
            cell.type = cell_type::empty;
        }
        visit_(place->range.first_row, place->range.first_column, cell);
    }

    double required(const std::optional<double>& value, const std::string& text) const {
        if (!value) fail("has a value '" + text + "' that is not of its type");
        return *value;
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw CommandError(ExitCode::Failed,
                           input_.name() + ": Line " + grouped(line_) + ' ' + what + '.');
    }

    TextInput& input_;
    const CellVisitor& visit_;
    std::uint64_t line_ = 0;
};

} // namespace

void read_cells(TextInput& input, CellLayout layout, const CellVisitor& visit) {
    CellsReader reader(input, visit);
    layout == CellLayout::Tsv ? reader.read_separated() : reader.read_json_lines();
}

} // namespace zxsheet
