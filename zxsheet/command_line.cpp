// SPDX-License-Identifier: Apache-2.0
//
// The only source that sees the parser's library, which is slow to compile.
#include "zxsheet/command_line.h"

#include <algorithm>
#include <sstream>
#include <type_traits>
#include <variant>

#include <CLI/CLI.hpp>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/command_error.h"

namespace zxsheet {
namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 done; 1 failed for another reason; 2 wrong usage; 3 file or spreadsheet not "
    "found "
    "or not readable;\n4 not a workbook of that format; 5 no such sheet, range or name; 6 could "
    "not "
    "write or save; 7 service, credential or\nnetwork; 8 application not available.";

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

void add_parameter(CLI::App& app, const Parameter& parameter) {
    CLI::Option& option = add_to(app, parameter);
    option.required(parameter.is_required);
    if (!is_flag(parameter)) option.option_text(parameter.value.empty() ? " " : parameter.value);
    if (parameter.greatest > 0) option.check(CLI::Range(std::size_t{1}, parameter.greatest));
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
    const bool is_group = !command->get_subcommands([](const CLI::App*) { return true; }).empty();
    if (!is_group) return what + hint;
    const auto rest = command->remaining();
    if (rest.empty()) return "A command is missing" + hint;
    const char* const kind = rest[0].starts_with('-') ? "option" : "command";
    return std::string("There is no ") + kind + " '" + rest[0] + "'" + hint;
}

/// As if the command had its own flag.
void use_application(const Command& command) {
    for (const Parameter& parameter : command.parameters)
        if (parameter.names == kApplicationFlag)
            return std::get<std::function<void()>>(parameter.target)();
    throw CommandError(ExitCode::Usage, "The command '" + command.name + "' has no use for --app");
}

} // namespace

ParsedLine parse_command_line(const std::vector<std::string>& arguments,
                              const CommandTable& table) {
    ParsedLine parsed;
    CLI::App app("Reads and writes spreadsheets.", "zxsheet");
    app.set_version_flag("--version", std::string("zxsheet ") + spreadsheet::version());
    app.footer(kExitCodes);
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // "/data/book.xlsx" is a path everywhere
    add_parameter(app, {"--google-root",
                        "URL",
                        "Address of a service to use in Google's place (or ZX_GOOGLE_ROOT)",
                        &parsed.google_root,
                        false,
                        0,
                        {},
                        "ZX_GOOGLE_ROOT"});
    Parameter log_level{"--log", "LEVEL",
                        "Print the library's log on standard error: error, info, debug or trace",
                        &parsed.log_level};
    log_level.choices = {"error", "info", "debug", "trace"};
    add_parameter(app, log_level);
    bool wants_application = false;
    add_parameter(app, {kApplicationFlag, "",
                        "Let the spreadsheet application open the file of any command",
                        &wants_application});
    bool wants_host_functions = false;
    add_parameter(app, {"--host-functions", "", "Know the functions that are for hosts only, too",
                        &wants_host_functions});
    add_commands(app, table, parsed);
    try {
        // The parser takes the arguments from the back.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        if (wants_application) use_application(*parsed.command);
        if (parsed.command->is_hidden && !wants_host_functions)
            throw CommandError(ExitCode::Usage, "The command '" + parsed.command->name +
                                                    "' is a host's function and does not do what "
                                                    "its name says; give --host-functions to call "
                                                    "it all the same");
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
