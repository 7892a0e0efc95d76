// SPDX-License-Identifier: Apache-2.0
//
// The command line, one source for the commands that read and one for those that change books.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "zxsheet/commands.h"
#include "zxsheet/options.h"

namespace zxsheet {

/// The function of the command that was given; one of the two.
struct ChosenCommand {
    void (*read)(const Options&, OutputSink&) = nullptr;
    std::string (*change)(const Options&, ChangeTools&) = nullptr;
};

/// Parsing fills `options` and `chosen`, which must outlive the parser.
void add_reading_commands(CLI::App& app, Options& options, ChosenCommand& chosen);
void add_changing_commands(CLI::App& app, Options& options, ChosenCommand& chosen);

/// BOOK and --app.
void add_book(CLI::App& command, Options& options);

/// Accepts one of the words and hands its value on.
template <class Value>
CLI::Validator one_of(const char* what, const std::vector<std::pair<std::string, Value>>& words) {
    const auto check = [words](std::string& text) -> std::string {
        std::string allowed;
        for (const auto& [word, value] : words) {
            if (word == text) {
                text = std::to_string(static_cast<int>(value));
                return {};
            }
            allowed += (allowed.empty() ? "" : ", ") + word;
        }
        return "'" + text + "' is none of " + allowed;
    };
    return CLI::Validator(check, what);
}

} // namespace zxsheet
