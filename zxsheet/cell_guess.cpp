// SPDX-License-Identifier: Apache-2.0
//
// Numbers, dates and booleans in text.
#include "zxsheet/cell_guess.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <iterator>

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

/// As many decimal digits as every number keeps.
constexpr std::size_t kSafeDigits = 15;

constexpr double kPhantomDay = 60;   ///< the 29th of February 1900
constexpr double kFirstSafeDay = 61; ///< from here on all applications agree about dates

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool take(std::string_view& rest, char wanted) {
    if (rest.empty() || rest.front() != wanted) return false;
    rest.remove_prefix(1);
    return true;
}

/// Takes all digits that come next.
std::string_view take_digits(std::string_view& rest) {
    std::size_t count = 0;
    while (count < rest.size() && is_digit(rest[count]))
        ++count;
    const std::string_view digits = rest.substr(0, count);
    rest.remove_prefix(count);
    return digits;
}

// --- Numbers

struct NumberText {
    std::string_view whole, fraction;
    bool is_negative = false;
    bool has_exponent = false;

    std::size_t digits() const { return whole.size() + fraction.size(); }
    char digit(std::size_t i) const {
        return i < whole.size() ? whole[i] : fraction[i - whole.size()];
    }
    bool is_integer() const { return fraction.empty() && !has_exponent; }
};

/// The parts of the text when it is written as numbers are, without leading zeros.
std::optional<NumberText> split_number(std::string_view text) {
    NumberText number;
    number.is_negative = take(text, '-');
    number.whole = take_digits(text);
    if (take(text, '.')) {
        number.fraction = take_digits(text);
        if (number.fraction.empty()) return {};
    }
    if (number.whole.empty() && number.fraction.empty()) return {};
    if (number.whole.size() > 1 && number.whole.front() == '0') return {};
    if (take(text, 'e') || take(text, 'E')) {
        if (!take(text, '-')) take(text, '+');
        number.has_exponent = true;
        if (take_digits(text).empty()) return {};
    }
    if (!text.empty()) return {};
    return number;
}

/// The value of at most `kSafeDigits` digits without an exponent: two numbers without an error,
/// whose quotient is the nearest number to it.
double value_of(const NumberText& text) {
    static constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                              1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    static_assert(std::size(kPowersOfTen) == kSafeDigits + 1);
    std::uint64_t digits = 0;
    for (const char digit : text.whole)
        digits = digits * 10 + static_cast<std::uint64_t>(digit - '0');
    for (const char digit : text.fraction)
        digits = digits * 10 + static_cast<std::uint64_t>(digit - '0');
    const double size = static_cast<double>(digits) / kPowersOfTen[text.fraction.size()];
    return text.is_negative ? -size : size;
}

/// More digits than this never read back as they were.
constexpr std::size_t kMostDigits = 17;

/// The digits of the shortest text that reads back as the same number, in `text`.
std::string_view shortest_digits(double value, std::array<char, 64>& text) {
    const auto [end, failure] =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::scientific);
    char* const exponent = std::find(text.data(), end, 'e');
    char* const digits_end = std::copy_if(text.data(), exponent, text.data(), is_digit);
    std::string_view digits(text.data(), static_cast<std::size_t>(digits_end - text.data()));
    digits = digits.substr(0, digits.find_last_not_of('0') + 1);
    return digits;
}

/// Long whole numbers identify something; other long numbers are numbers when nothing is lost.
bool keeps_its_digits(const NumberText& text, double value) {
    std::size_t begin = 0;
    std::size_t end = text.digits();
    while (begin < end && text.digit(begin) == '0')
        ++begin;
    if (end - begin <= kSafeDigits) return true;
    if (text.is_integer()) return false;
    while (end > begin && text.digit(end - 1) == '0')
        --end;
    if (end - begin > kMostDigits) return false;
    std::array<char, 64> room;
    const std::string_view shortest = shortest_digits(value, room);
    if (shortest.size() != end - begin) return false;
    for (std::size_t i = 0; i < shortest.size(); ++i)
        if (shortest[i] != text.digit(begin + i)) return false;
    return true;
}

std::optional<double> number_in(std::string_view field) {
    const auto text = split_number(field);
    if (!text) return {};
    if (text->digits() <= kSafeDigits && !text->has_exponent) return value_of(*text);
    double value = 0.0;
    const char* const field_end = field.data() + field.size();
    const auto [end, failure] = std::from_chars(field.data(), field_end, value);
    if (failure != std::errc() || end != field_end || !keeps_its_digits(*text, value)) return {};
    return value;
}

// --- Dates

/// Takes exactly `count` digits; more may follow.
std::optional<int> take_number(std::string_view& rest, std::size_t count) {
    int value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (i >= rest.size() || !is_digit(rest[i])) return {};
        value = value * 10 + (rest[i] - '0');
    }
    rest.remove_prefix(count);
    return value;
}

std::optional<double> take_day(std::string_view& rest) {
    using namespace std::chrono;
    const auto y = take_number(rest, 4);
    if (!y || !take(rest, '-')) return {};
    const auto m = take_number(rest, 2);
    if (!m || !take(rest, '-')) return {};
    const auto d = take_number(rest, 2);
    if (!d) return {};
    if (*y == 1900 && *m == 2 && *d == 29) return kPhantomDay;
    const year_month_day date{year{*y}, month{static_cast<unsigned>(*m)},
                              day{static_cast<unsigned>(*d)}};
    if (!date.ok() || *y == 0) return {};
    const auto serial = (sys_days{date} - sys_days{year{1899} / December / 30}).count();
    return static_cast<double>(static_cast<double>(serial) < kFirstSafeDay ? serial - 1 : serial);
}

/// Fraction of a second: one to six digits.
std::optional<double> take_fraction(std::string_view& rest) {
    const std::string_view digits = take_digits(rest);
    if (digits.empty() || digits.size() > 6) return {};
    double value = 0.0;
    double unit = 1.0;
    for (const char digit : digits) {
        value = value * 10 + (digit - '0');
        unit *= 10;
    }
    return value / unit;
}

/// The time of day as a fraction of a day; all of the text must belong to it.
std::optional<double> time_in(std::string_view rest) {
    const auto hours = take_number(rest, 2);
    if (!hours || !take(rest, ':')) return {};
    const auto minutes = take_number(rest, 2);
    if (!minutes) return {};
    double seconds = 0.0;
    if (take(rest, ':')) {
        const auto whole = take_number(rest, 2);
        if (!whole || *whole > 59) return {};
        seconds = *whole;
        if (take(rest, '.')) {
            const auto fraction = take_fraction(rest);
            if (!fraction) return {};
            seconds += *fraction;
        }
    }
    if (!rest.empty() || *hours > 23 || *minutes > 59) return {};
    return (*hours * 3600 + *minutes * 60 + seconds) / 86400;
}

bool equals_ignoring_case(std::string_view text, std::string_view lower) {
    return text.size() == lower.size() &&
           std::equal(text.begin(), text.end(), lower.begin(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
}

} // namespace

std::optional<double> date_serial(std::string_view text) {
    const auto day = take_day(text);
    if (!day || text.empty()) return day;
    if (!take(text, 'T') && !take(text, ' ')) return {};
    const auto time = time_in(text);
    if (!time) return {};
    return *day + *time;
}

void guess_cell(CellValue& cell) {
    const std::string_view field = cell.text;
    const auto set = [&cell](cell_type type, double value) {
        cell.type = type;
        cell.number = value;
    };
    if (field.empty()) return set(cell_type::empty, 0.0);
    if (const auto number = number_in(field)) return set(cell_type::number, *number);
    if (equals_ignoring_case(field, "true")) return set(cell_type::boolean, 1.0);
    if (equals_ignoring_case(field, "false")) return set(cell_type::boolean, 0.0);
    const auto date = date_serial(field);
    if (date && *date >= kFirstSafeDay) return set(cell_type::date, *date);
    set(cell_type::text, 0.0);
}

} // namespace zxsheet
