// SPDX-License-Identifier: Apache-2.0
//
// One walk over the code's first section. A letter of dates outside quotes, escapes, brackets and
// exponents makes a date format, and so does an elapsed time in brackets.
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

    bool finds_date() {
        while (!rest_.empty() && rest_.front() != ';')
            if (step()) return true;
        return false;
    }

  private:
    /// Consumes one token; true when it belongs to a date or a time.
    bool step() {
        switch (lower(rest_.front())) {
        case '"':
            skip_past('"');
            return false;
        case '\\':
        case '_':
        case '*':
            skip(2);
            return false;
        case '[':
            return bracket();
        case 'e':
            return exponent_or_era();
        case 'g':
            return general_or_era();
        case 'a':
            return am_pm_or_weekday();
        case 'y':
        case 'm':
        case 'd':
        case 'h':
        case 's':
        case 'b':
            return true; // "b" is the Buddhist year
        default:
            skip(1);
            return false;
        }
    }

    void skip(std::size_t count) { rest_.remove_prefix(std::min(count, rest_.size())); }

    void skip_past(char closing) {
        skip(1);
        const std::size_t end = rest_.find(closing);
        skip(end == std::string_view::npos ? rest_.size() : end + 1);
    }

    bool bracket() {
        const std::size_t end = rest_.find(']');
        const bool is_closed = end != std::string_view::npos;
        const std::string_view inside = is_closed ? rest_.substr(1, end - 1) : std::string_view{};
        skip_past(']');
        return is_elapsed_time(inside);
    }

    bool exponent_or_era() {
        const char next = rest_.size() > 1 ? rest_[1] : '\0';
        skip(next == '+' || next == '-' ? 2 : 1);
        return next != '+' && next != '-';
    }

    bool general_or_era() {
        const bool is_general = starts_with(rest_, "general");
        // East Asian locales write "General" as "G/" and a word of their own.
        const bool may_be_general = is_general || starts_with(rest_, "g/");
        skip(is_general ? 7 : 2);
        return !may_be_general;
    }

    bool am_pm_or_weekday() {
        if (starts_with(rest_, "am/pm") || starts_with(rest_, "a/p") || starts_with(rest_, "aaa"))
            return true;
        skip(1);
        return false;
    }

    std::string_view rest_;
};

} // namespace

bool is_date_format(std::string_view code) {
    return Walk(code).finds_date();
}

} // namespace workbook
