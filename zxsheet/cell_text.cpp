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

std::chrono::year_month_day date_of(std::int64_t serial) {
    using namespace std::chrono;
    if (serial == kPhantomDay) return year{1900} / February / 29;
    const sys_days origin = serial < kPhantomDay ? sys_days{year{1899} / December / 31}
                                                 : sys_days{year{1899} / December / 30};
    return origin + days{serial};
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
    const year_month_day date = date_of(serial);
    const sys_days when = date;
    const auto of_year = (when - sys_days{date.year() / January / 1}).count() + 1;
    return {static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
            static_cast<unsigned>(date.day()), static_cast<int>(of_year),
            weekday{when}.c_encoding()};
}

char* put_digits(char* to, std::uint64_t number, int width) {
    for (int i = width; i-- > 0; number /= 10)
        to[i] = static_cast<char>('0' + number % 10);
    return to + width;
}

/// "13:05:00", with milliseconds when there are any.
void append_clock(std::string& out, std::uint64_t milliseconds) {
    const std::uint64_t hours = milliseconds / 3'600'000;
    char text[32];
    char* to = hours < 100 ? put_digits(text, hours, 2)
                           : std::to_chars(text, text + sizeof text, hours).ptr;
    *to++ = ':';
    to = put_digits(to, milliseconds / 60'000 % 60, 2);
    *to++ = ':';
    to = put_digits(to, milliseconds / 1000 % 60, 2);
    if (milliseconds % 1000 != 0) {
        *to++ = '.';
        to = put_digits(to, milliseconds % 1000, 3);
        while (to[-1] == '0')
            --to;
    }
    out.append(text, to);
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

/// Integers below this are exact in a double and have at most 15 digits.
constexpr double kExactInteger = 1e15;

/// Writes a number of at most four decimals, as most prices and measurements are, much quicker than
/// `std::to_chars`; null for any other. No two texts of at most 15 digits mean the same number,
/// so what reads back as the number is its shortest text.
char* put_short_decimal(char* to, double value) {
    constexpr std::int64_t kUnit = 10'000;
    const double scaled = value * kUnit;
    if (!(std::fabs(scaled) < kExactInteger)) return nullptr;
    auto digits = static_cast<std::int64_t>(scaled + std::copysign(0.5, scaled));
    if (static_cast<double>(digits) / kUnit != value) return nullptr;
    if (digits < 0) {
        *to++ = '-';
        digits = -digits;
    }
    to = std::to_chars(to, to + 20, digits / kUnit).ptr;
    *to++ = '.';
    to = put_digits(to, static_cast<std::uint64_t>(digits % kUnit), 4);
    while (to[-1] == '0')
        --to;
    return to;
}

/// At least 64 characters of room; nothing is written for what `std::to_chars` has no room for.
char* put_number(char* const to, char* const end, double value) {
    const double size = std::fabs(value);
    if (size < kExactInteger) {
        // Most numbers are whole; a negative zero becomes a plain one.
        const auto whole = static_cast<std::int64_t>(value);
        if (static_cast<double>(whole) == value) return std::to_chars(to, end, whole).ptr;
        if (char* const done = put_short_decimal(to, value)) return done;
    }
    const bool is_plain = size >= 1e-5 && size < kExactInteger;
    const auto [done, failure] = std::to_chars(
        to, end, value, is_plain ? std::chars_format::fixed : std::chars_format::scientific);
    return failure == std::errc() ? done : to;
}

/// See `date_text`; most cells of a sheet may be dates.
void append_date(std::string& out, double serial) {
    const auto moment = moment_of(serial);
    if (!moment) return append_number(out, serial);
    const std::chrono::year_month_day date = date_of(moment->day);
    char text[10];
    char* to = put_digits(text, static_cast<std::uint64_t>(static_cast<int>(date.year())), 4);
    *to++ = '-';
    to = put_digits(to, static_cast<unsigned>(date.month()), 2);
    *to++ = '-';
    to = put_digits(to, static_cast<unsigned>(date.day()), 2);
    out.append(text, to);
    if (moment->milliseconds == 0) return;
    out.push_back('T');
    append_clock(out, static_cast<std::uint64_t>(moment->milliseconds));
}

} // namespace

void append_number(std::string& out, double value, bool decimal_comma) {
    char text[64];
    char* const end = put_number(text, text + sizeof text, value);
    if (decimal_comma) std::replace(text, end, '.', ',');
    out.append(text, end);
}

std::string number_text(double value) {
    std::string text;
    append_number(text, value);
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
    std::string text = days < 0 && total != 0 ? "-" : "";
    append_clock(text, static_cast<std::uint64_t>(total));
    return text;
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
