// SPDX-License-Identifier: Apache-2.0
//
// Numbers, dates and types as text.
#include "zxsheet/cell_text.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

constexpr std::int64_t kMillisecondsPerDay = 86'400'000;
constexpr std::string_view kDayBeforeFirst = "1899-12-30";
constexpr std::int64_t kPhantomDay = 60; ///< the 29th of February 1900

/// Serial numbers of 0001-01-01 and 9999-12-31.
constexpr double kFirstSerial = -693'594;
constexpr double kEndSerial = 2'958'466;

std::string day_text(std::int64_t day) {
    using namespace std::chrono;
    if (day == kPhantomDay) return "1900-02-29";
    const sys_days origin = day < kPhantomDay ? sys_days{year{1899} / December / 31}
                                              : sys_days{year{1899} / December / 30};
    const year_month_day date{origin + days{day}};
    char text[24];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text;
}

std::string time_text(std::int64_t milliseconds) {
    const auto seconds = static_cast<int>(milliseconds / 1000);
    char text[40];
    std::snprintf(text, sizeof text, "T%02d:%02d:%02d.%03d", seconds / 3600, seconds / 60 % 60,
                  seconds % 60, static_cast<int>(milliseconds % 1000));
    std::string trimmed(text);
    while (trimmed.back() == '0' && trimmed.find('.') != std::string::npos)
        trimmed.pop_back();
    if (trimmed.back() == '.') trimmed.pop_back();
    return trimmed;
}

} // namespace

std::string number_text(double value) {
    const double size = std::fabs(value);
    const bool plain = size == 0.0 || (size >= 1e-5 && size < 1e15);
    std::array<char, 64> text;
    const auto format = plain ? std::chars_format::fixed : std::chars_format::scientific;
    // Adding zero turns a negative zero into a plain one.
    const auto [end, failure] =
        std::to_chars(text.data(), text.data() + text.size(), value + 0.0, format);
    return failure == std::errc() ? std::string(text.data(), end) : std::string();
}

std::string date_text(double serial) {
    if (!(serial >= kFirstSerial && serial < kEndSerial)) return number_text(serial);
    // Milliseconds are the finest that a double holds reliably at this distance from its epoch.
    const std::int64_t total = std::llround(serial * static_cast<double>(kMillisecondsPerDay));
    std::int64_t day = total / kMillisecondsPerDay;
    std::int64_t rest = total % kMillisecondsPerDay;
    if (rest < 0) {
        rest += kMillisecondsPerDay;
        --day;
    }
    return rest == 0 ? day_text(day) : day_text(day) + time_text(rest);
}

std::string date_or_time_text(double serial) {
    const std::string text = date_text(serial);
    const bool is_time = serial >= -1.0 && serial < 0.0 && text.starts_with(kDayBeforeFirst);
    if (!is_time) return text;
    const std::size_t mark = text.find('T');
    return mark == std::string::npos ? "00:00:00" : text.substr(mark + 1);
}

std::string_view type_name(cell_type type) {
    constexpr std::array<std::string_view, 7> names{"empty",   "number", "text", "date",
                                                    "boolean", "other",  "error"};
    const auto index = static_cast<std::size_t>(type);
    return index < names.size() ? names[index] : "error";
}

std::string plain_text(const CellValue& cell, DateStyle dates) {
    switch (cell.type) {
    case cell_type::number:
        return number_text(cell.number);
    case cell_type::date:
        return dates == DateStyle::Iso ? date_or_time_text(cell.number) : number_text(cell.number);
    case cell_type::boolean:
        return cell.number != 0.0 ? "true" : "false";
    case cell_type::text:
        return cell.text;
    case cell_type::error:
        return cell.text.empty() ? "#ERROR" : cell.text;
    default:
        return {};
    }
}

} // namespace zxsheet
