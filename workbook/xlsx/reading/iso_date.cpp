// SPDX-License-Identifier: Apache-2.0
//
// Takes dates and times apart by their fixed digits.
#include "workbook/xlsx/reading/iso_date.h"

#include <charconv>
#include <chrono>

namespace workbook {

namespace {

constexpr double kSecondsPerDay = 86400.0;
constexpr int kDays1904 = 1462;
constexpr int kFirstRealSerial = 61; // 1 March 1900

// Takes exactly `digits` digits from the front of `text`.
std::optional<int> take_number(std::string_view& text, std::size_t digits) {
    if (text.size() < digits) return std::nullopt;
    int value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        if (text[i] < '0' || text[i] > '9') return std::nullopt;
        value = value * 10 + (text[i] - '0');
    }
    text.remove_prefix(digits);
    return value;
}

bool take(std::string_view& text, char wanted) {
    if (!text.starts_with(wanted)) return false;
    text.remove_prefix(1);
    return true;
}

// Days since 30 December 1899.
std::optional<int> take_date(std::string_view& text) {
    using namespace std::chrono;
    const auto y = take_number(text, 4);
    if (!y || !take(text, '-')) return std::nullopt;
    const auto m = take_number(text, 2);
    if (!m || !take(text, '-')) return std::nullopt;
    const auto d = take_number(text, 2);
    if (!d) return std::nullopt;
    const year_month_day date{year{*y}, month{static_cast<unsigned>(*m)},
                              day{static_cast<unsigned>(*d)}};
    if (!date.ok()) return std::nullopt;
    return static_cast<int>((sys_days{date} - sys_days{year{1899} / December / 30}).count());
}

int serial_of(int days, DateBase base) {
    if (base == DateBase::From1899) return days;
    const int serial = days >= kFirstRealSerial ? days : days - 1;
    return base == DateBase::From1904 ? serial - kDays1904 : serial;
}

// Seconds since midnight: hh:mm, hh:mm:ss or hh:mm:ss.fff.
std::optional<double> take_time(std::string_view& text) {
    const auto hours = take_number(text, 2);
    if (!hours || *hours > 24 || !take(text, ':')) return std::nullopt;
    const auto minutes = take_number(text, 2);
    if (!minutes || *minutes > 59) return std::nullopt;
    double seconds = 0.0;
    if (take(text, ':')) {
        std::size_t length = 0;
        while (length < text.size() &&
               ((text[length] >= '0' && text[length] <= '9') || text[length] == '.'))
            ++length;
        const auto [end, error] = std::from_chars(text.data(), text.data() + length, seconds);
        if (error != std::errc() || end != text.data() + length || seconds > 60.0)
            return std::nullopt;
        text.remove_prefix(length);
    }
    return *hours * 3600.0 + *minutes * 60.0 + seconds;
}

// The rest of a date: nothing, "Z", or an offset such as "+02:00".
bool is_zone(std::string_view text) {
    if (text.empty() || text == "Z") return true;
    return text.size() == 6 && (text[0] == '+' || text[0] == '-') && text[3] == ':';
}

} // namespace

std::optional<double> parse_iso_date(std::string_view text, DateBase base) {
    std::string_view rest = text;
    double serial = 0.0;
    if (const auto days = take_date(rest)) {
        serial = serial_of(*days, base);
        if (rest.empty() || is_zone(rest)) return serial;
        if (!take(rest, 'T') && !take(rest, ' ')) return std::nullopt;
    } else {
        rest = text;
        take(rest, 'T');
    }
    const auto seconds = take_time(rest);
    if (!seconds || !is_zone(rest)) return std::nullopt;
    return serial + *seconds / kSecondsPerDay;
}

} // namespace workbook
