// SPDX-License-Identifier: Apache-2.0
//
// Numbers, dates and types as text.
#include "zxsheet/cell_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

constexpr std::int64_t kMillisecondsPerDay = 86'400'000;
constexpr std::int64_t kPhantomDay = 60; ///< the 29th of February 1900

/// Serial numbers of 0001-01-01 and 9999-12-31.
constexpr double kFirstSerial = -693'594;
constexpr double kEndSerial = 2'958'466;

/// A serial number taken apart.
struct Moment {
    std::int64_t day;          ///< serial number
    std::int64_t milliseconds; ///< of the day
};

/// Milliseconds are the finest that a double holds reliably at this distance from its epoch.
std::optional<Moment> moment_of(double serial) {
    if (!(serial >= kFirstSerial && serial < kEndSerial)) return {};
    const std::int64_t total = std::llround(serial * static_cast<double>(kMillisecondsPerDay));
    Moment moment{total / kMillisecondsPerDay, total % kMillisecondsPerDay};
    if (moment.milliseconds < 0) {
        moment.milliseconds += kMillisecondsPerDay;
        --moment.day;
    }
    return moment;
}

struct Day {
    int year;
    unsigned month, day;
    int of_year;      ///< from 1
    unsigned weekday; ///< 0 for Sunday
};

Day day_of(std::int64_t serial) {
    using namespace std::chrono;
    if (serial == kPhantomDay) return {1900, 2, 29, 60, 3};
    const sys_days origin = serial < kPhantomDay ? sys_days{year{1899} / December / 31}
                                                 : sys_days{year{1899} / December / 30};
    const sys_days when = origin + days{serial};
    const year_month_day date{when};
    const auto of_year = (when - sys_days{date.year() / January / 1}).count() + 1;
    return {static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
            static_cast<unsigned>(date.day()), static_cast<int>(of_year),
            weekday{when}.c_encoding()};
}

/// "13:05:00", with milliseconds when there are any.
std::string clock_text(std::int64_t milliseconds) {
    char text[48];
    const auto count = static_cast<long long>(milliseconds);
    std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld.%03lld", count / 3'600'000,
                  count / 60'000 % 60, count / 1000 % 60, count % 1000);
    std::string trimmed(text);
    while (trimmed.back() == '0' && trimmed.find('.') != std::string::npos)
        trimmed.pop_back();
    if (trimmed.back() == '.') trimmed.pop_back();
    return trimmed;
}

std::string padded(long long number, int width, char fill = '0') {
    std::string text = std::to_string(number);
    if (text.size() < static_cast<std::size_t>(width))
        text.insert(0, static_cast<std::size_t>(width) - text.size(), fill);
    return text;
}

constexpr std::array<std::string_view, 7> kWeekdays{"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                    "Thursday", "Friday", "Saturday"};
constexpr std::array<std::string_view, 12> kMonths{"January",   "February", "March",    "April",
                                                   "May",       "June",     "July",     "August",
                                                   "September", "October",  "November", "December"};
constexpr std::string_view kConversions = "YmdHMSyjaAbBpIeFTDRu%";

std::string conversion(char letter, const Day& day, std::int64_t milliseconds) {
    const long long seconds = milliseconds / 1000;
    const long long hour = seconds / 3600;
    const auto combined = [&](std::string_view parts) {
        std::string text;
        for (const char part : parts)
            text += std::isalpha(static_cast<unsigned char>(part)) != 0
                        ? conversion(part, day, milliseconds)
                        : std::string(1, part);
        return text;
    };
    switch (letter) {
    case 'Y':
        return padded(day.year, 4);
    case 'm':
        return padded(day.month, 2);
    case 'd':
        return padded(day.day, 2);
    case 'e':
        return padded(day.day, 2, ' ');
    case 'H':
        return padded(hour, 2);
    case 'I':
        return padded(hour % 12 == 0 ? 12 : hour % 12, 2);
    case 'M':
        return padded(seconds / 60 % 60, 2);
    case 'S':
        return padded(seconds % 60, 2);
    case 'p':
        return hour < 12 ? "AM" : "PM";
    case 'y':
        return padded(day.year % 100, 2);
    case 'j':
        return padded(day.of_year, 3);
    case 'u':
        return std::to_string(day.weekday == 0 ? 7 : day.weekday);
    case 'a':
        return std::string(kWeekdays[day.weekday].substr(0, 3));
    case 'A':
        return std::string(kWeekdays[day.weekday]);
    case 'b':
        return std::string(kMonths[day.month - 1].substr(0, 3));
    case 'B':
        return std::string(kMonths[day.month - 1]);
    case 'F':
        return combined("Y-m-d");
    case 'D':
        return combined("m/d/y");
    case 'T':
        return combined("H:M:S");
    case 'R':
        return combined("H:M");
    default:
        return "%";
    }
}

void append_number(std::string& out, double value, bool decimal_comma) {
    const double size = std::fabs(value);
    std::array<char, 64> text;
    char* const end_of_text = text.data() + text.size();
    std::to_chars_result done{};
    if (size < 1e15 && value == std::trunc(value)) {
        // Most numbers are whole, which is much quicker; a negative zero becomes a plain one.
        done = std::to_chars(text.data(), end_of_text, static_cast<std::int64_t>(value));
    } else {
        const bool plain = size >= 1e-5 && size < 1e15;
        done = std::to_chars(text.data(), end_of_text, value,
                             plain ? std::chars_format::fixed : std::chars_format::scientific);
    }
    if (done.ec != std::errc()) return;
    if (decimal_comma) std::replace(text.data(), done.ptr, '.', ',');
    out.append(text.data(), done.ptr);
}

void append_digits(std::string& out, unsigned number, int width) {
    char digits[10];
    for (int i = width; i-- > 0; number /= 10)
        digits[i] = static_cast<char>('0' + number % 10);
    out.append(digits, static_cast<std::size_t>(width));
}

/// See `date_text`; most cells of a sheet may be dates.
void append_date(std::string& out, double serial) {
    const auto moment = moment_of(serial);
    if (!moment) return append_number(out, serial, false);
    const Day day = day_of(moment->day);
    append_digits(out, static_cast<unsigned>(day.year), 4);
    out.push_back('-');
    append_digits(out, day.month, 2);
    out.push_back('-');
    append_digits(out, day.day, 2);
    if (moment->milliseconds == 0) return;
    out.push_back('T');
    out += clock_text(moment->milliseconds);
}

} // namespace

std::string number_text(double value) {
    std::string text;
    append_number(text, value, false);
    return text;
}

std::string date_text(double serial) {
    std::string text;
    append_date(text, serial);
    return text;
}

std::string time_text(double days) {
    constexpr double kMostDays = 1e7 / 24;
    if (!(std::fabs(days) < kMostDays)) return number_text(days);
    const auto total = std::llround(std::fabs(days) * static_cast<double>(kMillisecondsPerDay));
    return (days < 0 && total != 0 ? "-" : "") + clock_text(total);
}

std::string formatted_date(double serial, std::string_view pattern) {
    const auto moment = moment_of(serial);
    if (!moment) return number_text(serial);
    const Day day = day_of(moment->day);
    std::string text;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == '%' && i + 1 < pattern.size())
            text += conversion(pattern[++i], day, moment->milliseconds);
        else
            text.push_back(pattern[i]);
    }
    return text;
}

std::string unknown_conversion(std::string_view pattern) {
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != '%') continue;
        const std::string_view next = pattern.substr(i + 1, 1);
        if (next.empty() || kConversions.find(next.front()) == kConversions.npos)
            return '%' + std::string(next);
        ++i;
    }
    return {};
}

std::string_view type_name(cell_type type) {
    constexpr std::array<std::string_view, 7> names{"empty",   "number", "text", "date",
                                                    "boolean", "other",  "error"};
    const auto index = static_cast<std::size_t>(type);
    return index < names.size() ? names[index] : "error";
}

bool is_time(const CellValue& cell) {
    using spreadsheet::number_style;
    if (cell.type != cell_type::number && cell.type != cell_type::date) return false;
    if (cell.style == number_style::elapsed) return true;
    // From a day on, a time of day alone would lose the date.
    return cell.style == number_style::time && cell.number >= 0.0 && cell.number < 1.0;
}

void append_text(std::string& out, const CellValue& cell, const TextStyle& style) {
    const bool is_serial = style.dates == TextStyle::Dates::Serial;
    switch (cell.type) {
    case cell_type::number:
    case cell_type::date:
        if (!is_serial && is_time(cell))
            out += time_text(cell.number);
        else if (is_serial || cell.type == cell_type::number)
            append_number(out, cell.number, style.decimal_comma);
        else if (style.dates == TextStyle::Dates::Pattern)
            out += formatted_date(cell.number, style.pattern);
        else
            append_date(out, cell.number);
        return;
    case cell_type::boolean:
        out += cell.number != 0.0 ? "true" : "false";
        return;
    case cell_type::text:
        out += cell.text;
        return;
    case cell_type::error:
        out += cell.text.empty() ? "#ERROR" : cell.text;
        return;
    default:
        return;
    }
}

std::string plain_text(const CellValue& cell, const TextStyle& style) {
    std::string text;
    append_text(text, cell, style);
    return text;
}

} // namespace zxsheet
