// SPDX-License-Identifier: Apache-2.0
//
// Parameters of commands as data: names, wording and where a value goes. The parser, the help and
// whatever else describes the command line are made from these.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "zxsheet/book_location.h"

namespace zxsheet {

/// An argument ("BOOK") or an option ("-s,--sheet").
struct Parameter {
    /// Where the value goes; must outlive the parsing. A bool or a function without an argument is
    /// a flag. Numbers are counted from 1.
    using Target =
        std::variant<std::string*, bool*, std::optional<std::size_t>*, std::vector<std::string>*,
                     std::function<void()>, std::function<void(const std::string&)>>;

    std::string names;
    std::string value; ///< what the help calls the value of an option; empty for others
    std::string what;  ///< for the help
    Target target;
    bool is_required = false;
    std::size_t greatest = 0;           ///< of a number
    std::vector<std::string> choices{}; ///< the words that are allowed; any text when empty
    std::string variable{};             ///< environment variable that stands in for the option
    bool may_be_empty = false;          ///< whether "" is a value

    /// The same parameter, which must be given.
    Parameter required() && {
        is_required = true;
        return std::move(*this);
    }
};

/// No workbook has more sheets.
inline constexpr std::size_t kMaxSheets = 65'535;

/// An option that takes one of some words and stores the value that belongs to it.
template <class Target, class Value>
Parameter choice(const char* names, const char* value, const char* what, Target& target,
                 const std::vector<std::pair<const char*, Value>>& words) {
    Parameter parameter{names, value, what, {}};
    for (const auto& [word, unused] : words)
        parameter.choices.push_back(word);
    parameter.target = std::function<void(const std::string&)>([&target, words](const auto& given) {
        for (const auto& [word, meaning] : words)
            if (given == word) target = meaning;
    });
    return parameter;
}

// Parameters that several commands have.

Parameter book_argument(BookLocation& book);
inline constexpr const char* kApplicationFlag = "--app";
Parameter application_flag(BookLocation& book);
Parameter sheet_option(std::string& sheet);
Parameter range_option(std::string& range, const char* what);
/// What the help says of the range of a command that prints cells.
inline constexpr const char* kReadRangeHelp =
    "A1:D20, B3, A:C, 2:10, Sheet!A1:D20, a name or a table\n"
    "(default: from the first cell with a value to the last)";
Parameter all_cells_flag(bool& all_cells);
Parameter json_flag(bool& json);
/// "-o" of a command that changes a book.
Parameter save_option(std::string& output);

} // namespace zxsheet
