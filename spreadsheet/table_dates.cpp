// SPDX-License-Identifier: Apache-2.0
//
// Serial day numbers, microseconds since 1970 and ISO 8601 text.
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "spreadsheet/table.h"

namespace spreadsheet {
namespace {

using namespace std::chrono;

constexpr std::int64_t kMicrosecondsPerDay = 86'400'000'000;
constexpr std::int64_t kMillisecondsPerDay = 86'400'000;
constexpr double kPhantomDay = 60; ///< 1900-02-29

/// Serial day 0, after and before the phantom day (ECMA-376 part 1, 18.17.4.1).
constexpr std::int64_t kOrigin = sys_days{year{1899} / December / 30}.time_since_epoch().count();
constexpr std::int64_t kEarlyOrigin = kOrigin + 1;
/// The first day after the phantom one.
constexpr std::int64_t kMarch1900 = sys_days{year{1900} / March / 1}.time_since_epoch().count();

constexpr std::int64_t kFirstDay = sys_days{year{1} / January / 1}.time_since_epoch().count();
constexpr std::int64_t kEndDay = sys_days{year{10'000} / January / 1}.time_since_epoch().count();

/// Whether the serial number is what 15 digits say of a time, as many programs write it.
bool is_written_with_15_digits(double serial, double time) {
    constexpr double kDecimals = 1e10; // beside the five digits of a day
    return std::round(time * kDecimals) / kDecimals == serial;
}

/// Microseconds of the day, from 0 to `kMicrosecondsPerDay`.
std::int64_t time_of_day(double day, double serial) {
    const double fraction = serial - day; // exact
    const auto exact = std::llround(fraction * static_cast<double>(kMicrosecondsPerDay));
    if (exact % 1000 == 0) return exact;
    const auto milliseconds = std::llround(fraction * static_cast<double>(kMillisecondsPerDay));
    const double time =
        day + static_cast<double>(milliseconds) / static_cast<double>(kMillisecondsPerDay);
    return is_written_with_15_digits(serial, time) ? milliseconds * 1000 : exact;
}

/// Reads a number of exactly `digits` digits off the front of `text`; -1 when there is none.
int take_digits(std::string_view& text, std::size_t digits) {
    int value = 0;
    if (text.size() < digits) return -1;
    for (const char c : text.substr(0, digits)) {
        if (c < '0' || c > '9') return -1;
        value = value * 10 + (c - '0');
    }
    text.remove_prefix(digits);
    return value;
}

bool take(std::string_view& text, char wanted) {
    if (text.empty() || text.front() != wanted) return false;
    text.remove_prefix(1);
    return true;
}

/// The fraction of a second in microseconds; digits past the sixth are cut off. -1 when there are
/// no digits.
std::int64_t take_fraction(std::string_view& text) {
    std::int64_t microseconds = 0;
    std::int64_t unit = 100'000;
    if (text.empty()) return -1;
    for (; !text.empty(); text.remove_prefix(1), unit /= 10) {
        const char c = text.front();
        if (c < '0' || c > '9') return -1;
        microseconds += (c - '0') * unit;
    }
    return microseconds;
}

/// The time after a date; -1 when it is none.
std::int64_t parse_time(std::string_view text) {
    if (!take(text, 'T') && !take(text, ' ')) return -1;
    const int hour = take_digits(text, 2);
    if (hour < 0 || hour > 23 || !take(text, ':')) return -1;
    const int minute = take_digits(text, 2);
    if (minute < 0 || minute > 59) return -1;
    int second = 0;
    std::int64_t fraction = 0;
    if (take(text, ':')) {
        second = take_digits(text, 2);
        if (second < 0 || second > 59) return -1;
        if (take(text, '.')) fraction = take_fraction(text);
    }
    if (fraction < 0 || !text.empty()) return -1;
    return (std::int64_t{hour} * 3600 + minute * 60 + second) * 1'000'000 + fraction;
}

} // namespace

std::int64_t microseconds_from_serial(double serial) {
    const double day = std::floor(serial);
    // Also false for NaN.
    if (!(day >= static_cast<double>(kFirstDay - kEarlyOrigin) &&
          day < static_cast<double>(kEndDay - kOrigin)))
        return kMissingDate;
    // The phantom day has the date of the day before it.
    const std::int64_t origin = day < kPhantomDay ? kEarlyOrigin : kOrigin;
    return (static_cast<std::int64_t>(day) + origin) * kMicrosecondsPerDay +
           time_of_day(day, serial);
}

double serial_from_microseconds(std::int64_t microseconds) {
    std::int64_t day = microseconds / kMicrosecondsPerDay;
    std::int64_t rest = microseconds % kMicrosecondsPerDay;
    if (rest < 0) {
        rest += kMicrosecondsPerDay;
        --day;
    }
    const std::int64_t serial_day = day - (day < kMarch1900 ? kEarlyOrigin : kOrigin);
    return static_cast<double>(serial_day) +
           static_cast<double>(rest) / static_cast<double>(kMicrosecondsPerDay);
}

std::int64_t microseconds_from_iso_text(std::string_view text) {
    const int y = take_digits(text, 4);
    if (y < 1 || !take(text, '-')) return kMissingDate;
    const int m = take_digits(text, 2);
    if (m < 0 || !take(text, '-')) return kMissingDate;
    const int d = take_digits(text, 2);
    if (d < 0) return kMissingDate;
    const year_month_day date{year{y}, month{static_cast<unsigned>(m)},
                              day{static_cast<unsigned>(d)}};
    if (!date.ok()) return kMissingDate;
    const std::int64_t time = text.empty() ? 0 : parse_time(text);
    if (time < 0) return kMissingDate;
    return sys_days{date}.time_since_epoch().count() * kMicrosecondsPerDay + time;
}

std::string iso_text_from_microseconds(std::int64_t microseconds) {
    if (microseconds == kMissingDate) return {};
    const sys_time<std::chrono::microseconds> time{std::chrono::microseconds{microseconds}};
    const sys_days midnight = floor<days>(time);
    const year_month_day date{midnight};
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    std::string result = text;
    const std::int64_t rest = (time - midnight).count();
    if (rest == 0) return result;
    const auto seconds = static_cast<int>(rest / 1'000'000);
    std::snprintf(text, sizeof text, "T%02d:%02d:%02d.%06d", seconds / 3600, seconds / 60 % 60,
                  seconds % 60, static_cast<int>(rest % 1'000'000));
    result += text;
    result.erase(result.find_last_not_of('0') + 1);
    if (result.back() == '.') result.pop_back();
    return result;
}

} // namespace spreadsheet
