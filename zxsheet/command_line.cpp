// SPDX-License-Identifier: Apache-2.0
//
// The only source that sees the parser's library, which is slow to compile.
#include "zxsheet/command_line.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <type_traits>
#include <variant>

#include <CLI/CLI.hpp>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/command_docs.h"
#include "zxsheet/command_error.h"
#include "zxsheet/suggestion.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

CLI::Option& add_to(CLI::App& app, const Parameter& parameter) {
    const auto add = [&](auto target) -> CLI::Option* {
        using Target = decltype(target);
        if constexpr (std::is_same_v<Target, bool*>)
            return app.add_flag(parameter.names, *target, parameter.what);
        else if constexpr (std::is_same_v<Target, std::function<void()>>)
            return app.add_flag_callback(parameter.names, target, parameter.what);
        else if constexpr (std::is_pointer_v<Target>)
            return app.add_option(parameter.names, *target, parameter.what);
        else
            return app.add_option_function<std::string>(parameter.names, target, parameter.what);
    };
    return *std::visit(add, parameter.target);
}

bool is_flag(const Parameter& parameter) {
    return std::holds_alternative<bool*>(parameter.target) ||
           std::holds_alternative<std::function<void()>>(parameter.target);
}

/// Accepts one of the words.
CLI::Validator one_of(const std::vector<std::string>& words) {
    const auto check = [words](const std::string& text) -> std::string {
        std::string allowed;
        for (const std::string& word : words) {
            if (word == text) return {};
            allowed += (allowed.empty() ? "" : ", ") + word;
        }
        return "'" + text + "' is not one of " + allowed;
    };
    return CLI::Validator(check, "");
}

/// Accepts anything but an empty text, which mostly is a variable of the shell that was not set.
CLI::Validator something() {
    const auto check = [](const std::string& text) {
        return std::string(text.empty() ? "The value is empty" : "");
    };
    return CLI::Validator(check, "");
}

CLI::Validator whole_number(std::size_t greatest) {
    const auto check = [greatest](const std::string& text) -> std::string {
        std::size_t number = 0;
        const char* const end = text.data() + text.size();
        const auto [stop, failure] = std::from_chars(text.data(), end, number);
        if (failure == std::errc() && stop == end && number >= 1 && number <= greatest) return {};
        return "'" + text + "' is not a whole number from 1 to " + grouped(greatest);
    };
    return CLI::Validator(check, "");
}

void add_parameter(CLI::App& app, const Parameter& parameter) {
    CLI::Option& option = add_to(app, parameter);
    option.required(parameter.is_required);
    if (!is_flag(parameter)) option.option_text(parameter.value.empty() ? " " : parameter.value);
    if (!is_flag(parameter) && !parameter.may_be_empty) option.check(something());
    if (parameter.greatest > 0) option.check(whole_number(parameter.greatest));
    if (!parameter.choices.empty()) option.check(one_of(parameter.choices));
    if (!parameter.variable.empty()) option.envname(parameter.variable);
}

void add_command(CLI::App& parent, const Command& command, ParsedLine& parsed) {
    CLI::App& added = *parent.add_subcommand(command.name, command.summary);
    if (command.is_hidden) added.group(""); // not in the help
    added.callback([&parsed, &command] { parsed.command = &command; });
    if (!command.footer.empty()) added.footer(command.footer);
    for (const Parameter& parameter : command.parameters)
        add_parameter(added, parameter);
}

CLI::App& add_group(CLI::App& app, const std::string& name, const CommandTable& table) {
    const auto group = std::find_if(table.groups.begin(), table.groups.end(),
                                    [&name](const CommandGroup& g) { return g.name == name; });
    CLI::App& added = *app.add_subcommand(name, group->summary);
    added.require_subcommand(1);
    return added;
}

/// Commands of a group are neighbours in the table.
void add_commands(CLI::App& app, const CommandTable& table, ParsedLine& parsed) {
    std::string group;
    CLI::App* parent = &app;
    for (const Command& command : table.commands) {
        if (command.group != group)
            parent = command.group.empty() ? &app : &add_group(app, command.group, table);
        group = command.group;
        add_command(*parent, command, parsed);
    }
}

std::vector<std::string> command_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

std::vector<std::string> option_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

/// "help" before the words of a command is "--help" after them.
std::vector<std::string> with_help_flag(const std::vector<std::string>& arguments,
                                        const CommandTable& table) {
    if (arguments.empty() || arguments[0] != "help") return arguments;
    std::vector<std::string> words(arguments.begin() + 1, arguments.end());
    std::string wanted;
    for (const std::string& word : words)
        wanted += (wanted.empty() ? "" : " ") + word;
    std::vector<std::string> known{{}};
    for (const CommandGroup& group : table.groups)
        known.push_back(group.name);
    for (const Command& command : table.commands)
        known.push_back(command.group + (command.group.empty() ? "" : " ") + command.name);
    if (std::find(known.begin(), known.end(), wanted) == known.end()) {
        const std::string similar = suggestion(wanted, known);
        throw CommandError(ExitCode::Usage,
                           "There is no command '" + wanted + "'" +
                               (similar.empty() ? "; see 'zxsheet --help'" : similar));
    }
    words.push_back("--help");
    return words;
}

/// What is wrong with the arguments, from the parser that found it.
std::string usage_sentence(const CLI::ParseError& error, const CLI::App& app) {
    std::string name = "zxsheet";
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
        name += ' ' + command->get_name();
    }
    const std::string hint = "; see '" + name + " --help'";
    const std::string what = error.what();
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr)
        return what.substr(0, what.find(':')) + " needs exactly one value" + hint;
    auto rest = command->remaining();
    std::erase(rest, "--"); // what follows it is not an option
    const bool is_group = !command->get_subcommands([](const CLI::App*) { return true; }).empty();
    if (rest.empty()) return is_group ? "A command is missing" + hint : what + hint;
    const bool is_option = rest[0].starts_with('-');
    if (!is_group && !is_option) return "There is no use for '" + rest[0] + "'" + hint;
    const std::string similar =
        suggestion(rest[0], is_option ? option_names(*command) : command_names(*command));
    return std::string("There is no ") + (is_option ? "option" : "command") + " '" + rest[0] + "'" +
           (similar.empty() ? hint : similar);
}

/// As if the command had its own flag.
void use_application(const Command& command) {
    for (const Parameter& parameter : command.parameters)
        if (parameter.names == kApplicationFlag)
            return std::get<std::function<void()>>(parameter.target)();
    throw CommandError(ExitCode::Usage, "The command '" + command.name + "' has no use for --app");
}

/// The options before a command.
std::vector<Parameter> program_options(ParsedLine& parsed, bool& wants_application,
                                       bool& wants_host_functions) {
    Parameter root{"--google-root", "URL",
                   "Address of a service to use in Google's place (or ZX_GOOGLE_ROOT)",
                   &parsed.google_root};
    root.variable = "ZX_GOOGLE_ROOT";
    Parameter log_level{"--log", "LEVEL",
                        "Print the library's log on standard error: error, info, debug or trace",
                        &parsed.log_level};
    log_level.choices = {"error", "info", "debug", "trace"};
    return {root,
            log_level,
            {kApplicationFlag, "", "Let the spreadsheet application open the file of any command",
             &wants_application},
            {"--host-functions", "", "Know the functions that are for hosts only, too",
             &wants_host_functions}};
}

void check_for_hosts(const Command& command, bool wants_host_functions) {
    if (!command.is_hidden || wants_host_functions) return;
    throw CommandError(ExitCode::Usage, "The command '" + command.name +
                                            "' is a host's function and does not do what its name "
                                            "says; give --host-functions to call it all the same");
}

} // namespace

ParsedLine parse_command_line(const std::vector<std::string>& arguments,
                              const CommandTable& table) {
    ParsedLine parsed;
    CLI::App app("Reads and writes spreadsheets.", "zxsheet");
    app.set_version_flag("--version", std::string("zxsheet ") + spreadsheet::version());
    app.footer(std::string("'zxsheet help COMMAND' has the options of a command.\n") + kExitCodes);
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // "/data/book.xlsx" is a path everywhere
    bool wants_application = false;
    bool wants_host_functions = false;
    const std::vector<Parameter> options =
        program_options(parsed, wants_application, wants_host_functions);
    for (const Parameter& option : options)
        add_parameter(app, option);
    if (arguments.size() == 2 && arguments[0] == "help") {
        parsed.text = command_docs(arguments[1], table, options);
        if (!parsed.text.empty()) return parsed;
    }
    add_commands(app, table, parsed);
    try {
        // The parser takes the arguments from the back.
        const std::vector<std::string> words = with_help_flag(arguments, table);
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
        if (wants_application) use_application(*parsed.command);
        check_for_hosts(*parsed.command, wants_host_functions);
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() != 0) throw CommandError(ExitCode::Usage, usage_sentence(e, app));
        std::ostringstream text;
        app.exit(e, text, text);
        parsed.text = text.str();
        parsed.command = nullptr;
    }
    return parsed;
}

} // namespace zxsheet
