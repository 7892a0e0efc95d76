// SPDX-License-Identifier: Apache-2.0
//
// One walk over the code's first section. A letter of dates outside quotes, escapes, brackets and
// exponents makes a date format, and so does an elapsed time in brackets. Which letters there are
// says what is shown.
#include "workbook/number_format/date_format.h"

#include <algorithm>
#include <cstddef>

namespace workbook {

namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool starts_with(std::string_view text, std::string_view lower_case) {
    return text.size() >= lower_case.size() &&
           std::equal(lower_case.begin(), lower_case.end(), text.begin(),
                      [](char wanted, char c) { return lower(c) == wanted; });
}

/// "h", "mm" and the like: hours, minutes or seconds that are not cut at a day.
bool is_elapsed_time(std::string_view in_brackets) {
    if (in_brackets.empty()) return false;
    const char unit = lower(in_brackets.front());
    return (unit == 'h' || unit == 'm' || unit == 's') &&
           std::all_of(in_brackets.begin(), in_brackets.end(),
                       [unit](char c) { return lower(c) == unit; });
}

class Walk {
  public:
    explicit Walk(std::string_view code) : rest_(code) {}

    NumberStyle style() {
        while (!rest_.empty() && rest_.front() != ';')
            step();
        const bool has_time = has_time_ || is_elapsed_;
        const bool has_date = has_date_ || (has_month_ && !has_time);
        if (has_date) return has_time ? NumberStyle::DateTime : NumberStyle::Date;
        if (is_elapsed_) return NumberStyle::Elapsed;
        return has_time ? NumberStyle::Time : NumberStyle::Number;
    }

  private:
    /// Consumes one token and notes what it shows.
    void step() {
        switch (lower(rest_.front())) {
        case '"':
            return skip_past('"');
        case '\\':
        case '_':
        case '*':
            return skip(2);
        case '[':
            return bracket();
        case 'e':
            return exponent_or_era();
        case 'g':
            return general_or_era();
        case 'a':
            return am_pm_or_weekday();
        case 'm':
            return month_or_minute();
        case 'y':
        case 'd':
        case 'b': // the Buddhist year
            has_date_ = true;
            return skip(1);
        case 'h':
        case 's':
            has_time_ = true;
            return skip(1);
        default:
            return skip(1);
        }
    }

    void skip(std::size_t count) { rest_.remove_prefix(std::min(count, rest_.size())); }

    void skip_past(char closing) {
        skip(1);
        const std::size_t end = rest_.find(closing);
        skip(end == std::string_view::npos ? rest_.size() : end + 1);
    }

    void bracket() {
        const std::size_t end = rest_.find(']');
        const bool is_closed = end != std::string_view::npos;
        const std::string_view inside = is_closed ? rest_.substr(1, end - 1) : std::string_view{};
        is_elapsed_ |= is_elapsed_time(inside);
        skip_past(']');
    }

    void exponent_or_era() {
        const char next = rest_.size() > 1 ? rest_[1] : '\0';
        const bool is_exponent = next == '+' || next == '-';
        has_date_ |= !is_exponent;
        skip(is_exponent ? 2 : 1);
    }

    void general_or_era() {
        const bool is_general = starts_with(rest_, "general");
        // East Asian locales write "General" as "G/" and a word of their own.
        has_date_ |= !is_general && !starts_with(rest_, "g/");
        skip(is_general ? 7 : 2);
    }

    void am_pm_or_weekday() {
        const bool is_am_pm = starts_with(rest_, "am/pm") || starts_with(rest_, "a/p");
        has_time_ |= is_am_pm;
        has_date_ |= starts_with(rest_, "aaa");
        skip(is_am_pm ? (rest_[1] == '/' ? 3 : 5) : 1);
    }

    /// Three letters and more are the name of a month, wherever they are.
    void month_or_minute() {
        const std::size_t count = std::min(rest_.find_first_not_of("mM"), rest_.size());
        (count >= 3 ? has_date_ : has_month_) = true;
        skip(count);
    }

    std::string_view rest_;
    bool has_date_ = false;
    bool has_time_ = false;
    bool has_month_ = false; ///< or minutes, beside hours or seconds
    bool is_elapsed_ = false;
};

} // namespace

NumberStyle date_style(std::string_view code) {
    return Walk(code).style();
}

bool is_date_format(std::string_view code) {
    return date_style(code) != NumberStyle::Number;
}

} // namespace workbook
