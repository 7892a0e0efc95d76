// SPDX-License-Identifier: Apache-2.0
//
// Each kind is a walk over the table.
#include "zxsheet/command_docs.h"

#include <algorithm>

#include "spreadsheet/version.h"

namespace zxsheet {
namespace {

std::string full_name(const Command& command) {
    return command.group.empty() ? command.name : command.group + ' ' + command.name;
}

bool is_option(const Parameter& parameter) {
    return parameter.names.starts_with('-');
}

/// "-s", "--sheet".
std::vector<std::string> names_of(const Parameter& parameter) {
    std::vector<std::string> names;
    std::size_t begin = 0;
    while (begin <= parameter.names.size()) {
        const std::size_t end = std::min(parameter.names.find(',', begin), parameter.names.size());
        names.push_back(parameter.names.substr(begin, end - begin));
        begin = end + 1;
    }
    return names;
}

std::string joined(const std::vector<std::string>& words, const char* between = " ") {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : between) + word;
    return text;
}

/// Words that can follow "zxsheet", or a group.
std::vector<std::string> words_after(const CommandTable& table, const std::string& group) {
    std::vector<std::string> words;
    for (const Command& command : table.commands) {
        const std::string& word = command.group == group ? command.name
                                  : group.empty()        ? command.group
                                                         : std::string();
        if (!word.empty() && std::find(words.begin(), words.end(), word) == words.end())
            words.push_back(word);
    }
    return words;
}

std::vector<std::string> option_names(const std::vector<Parameter>& parameters) {
    std::vector<std::string> names{"--help"};
    for (const Parameter& parameter : parameters)
        if (is_option(parameter)) names.push_back(names_of(parameter).back());
    return names;
}

// --- The manual page (man 7 man)

std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '-')
            out += "\\-";
        else if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n'))
            out += std::string("\\&") + c;
        else
            out.push_back(c);
    }
    return out;
}

std::string man_parameter(const Parameter& parameter) {
    std::string names;
    for (const std::string& name : names_of(parameter))
        names += (names.empty() ? "" : ", ") + ("\\fB" + escaped(name) + "\\fR");
    if (!parameter.value.empty()) names += " \\fI" + escaped(parameter.value) + "\\fR";
    return ".TP\n" + names + '\n' + escaped(parameter.what) + '\n';
}

std::string man_page(const CommandTable& table, const std::vector<Parameter>& options) {
    std::string text = ".TH ZXSHEET 1 \"\" \"zxsheet " + std::string(spreadsheet::version()) +
                       "\" \"User Commands\"\n.SH NAME\n"
                       "zxsheet \\- reads and writes spreadsheets\n.SH SYNOPSIS\n"
                       ".B zxsheet\n.I COMMAND BOOK\n[\\fIoption\\fR ...]\n.SH DESCRIPTION\n"
                       "Prints and changes what workbooks hold. A workbook is a path, "
                       "\\fBgsheet:\\fIID\\fR, or\n\\fB\\-\\fR for standard input. Data goes to "
                       "standard output, everything else to standard error.\n";
    text += ".SH OPTIONS\n";
    for (const Parameter& option : options)
        text += man_parameter(option);
    text += ".SH COMMANDS\n";
    for (const Command& command : table.commands) {
        text +=
            ".SS zxsheet " + escaped(full_name(command)) + '\n' + escaped(command.summary) + '\n';
        for (const Parameter& parameter : command.parameters)
            text += man_parameter(parameter);
        if (!command.footer.empty()) text += ".PP\n.nf\n" + escaped(command.footer) + "\n.fi\n";
    }
    return text + ".SH EXIT STATUS\n" + escaped(kExitCodes) + '\n';
}

// --- Completions

std::string bash_completion(const CommandTable& table, const std::vector<Parameter>&) {
    std::string text =
        "# bash completion for zxsheet\n"
        "_zxsheet() {\n"
        "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}\n"
        "  local command=${COMP_WORDS[1]-} words=\n"
        "  case $command in\n";
    for (const CommandGroup& group : table.groups)
        text += "    " + group.name + ") (( COMP_CWORD == 2 )) && words='" +
                joined(words_after(table, group.name)) +
                "' || command+=\" ${COMP_WORDS[2]-}\" ;;\n";
    text += "  esac\n"
            "  if (( COMP_CWORD == 1 )); then\n"
            "    words='" +
            joined(words_after(table, {})) +
            " help --help --version'\n"
            "  elif [[ -z $words ]]; then\n"
            "    case \"$command $previous\" in\n";
    for (const Command& command : table.commands)
        for (const Parameter& parameter : command.parameters)
            if (!parameter.choices.empty())
                for (const std::string& name : names_of(parameter))
                    text += "      '" + full_name(command) + ' ' + name + "') words='" +
                            joined(parameter.choices) + "' ;;\n";
    text += "      *) [[ $current == -* ]] && case $command in\n";
    for (const Command& command : table.commands)
        text += "        '" + full_name(command) + "') words='" +
                joined(option_names(command.parameters)) + "' ;;\n";
    return text + "      esac ;;\n"
                  "    esac\n"
                  "  fi\n"
                  "  COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
                  "}\n"
                  "complete -o default -F _zxsheet zxsheet\n";
}

/// zsh runs completions of bash; so both complete the same.
std::string zsh_completion(const CommandTable& table, const std::vector<Parameter>& options) {
    return "#compdef zxsheet\n"
           "autoload -Uz bashcompinit && bashcompinit\n" +
           bash_completion(table, options) + "_bash_complete -o default -F _zxsheet\n";
}

std::string fish_quoted(std::string text) {
    text = text.substr(0, text.find('\n'));
    for (std::size_t at = 0; (at = text.find_first_of("\\'", at)) != text.npos; at += 2)
        text.insert(at, 1, '\\');
    return '\'' + text + '\'';
}

std::string fish_completion(const CommandTable& table, const std::vector<Parameter>&) {
    std::string text = "# fish completion for zxsheet\n";
    for (const CommandGroup& group : table.groups)
        text += "complete -c zxsheet -n __fish_use_subcommand -a " + group.name + " -d " +
                fish_quoted(group.summary) + '\n';
    for (const Command& command : table.commands) {
        const std::string seen =
            "__fish_seen_subcommand_from " + (command.group.empty() ? command.name : command.group);
        const bool is_grouped = !command.group.empty();
        text += "complete -c zxsheet -n '" +
                (is_grouped ? seen : std::string("__fish_use_subcommand")) + "' -a " +
                command.name + " -d " + fish_quoted(command.summary) + '\n';
        const std::string condition =
            is_grouped ? seen + "; and __fish_seen_subcommand_from " + command.name : seen;
        for (const Parameter& parameter : command.parameters) {
            if (!is_option(parameter)) continue;
            text += "complete -c zxsheet -n '" + condition + '\'';
            for (const std::string& name : names_of(parameter))
                text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
            if (!parameter.choices.empty())
                text += " -xa '" + joined(parameter.choices) + '\'';
            else if (!parameter.value.empty())
                text += " -r";
            text += " -d " + fish_quoted(parameter.what) + '\n';
        }
    }
    return text;
}

struct Kind {
    std::string name;
    std::string (*make)(const CommandTable&, const std::vector<Parameter>&);
};

const std::vector<Kind>& kinds() {
    static const std::vector<Kind> all{{"--man", man_page},
                                       {"--bash", bash_completion},
                                       {"--zsh", zsh_completion},
                                       {"--fish", fish_completion}};
    return all;
}

} // namespace

std::string command_docs(const std::string& kind, const CommandTable& table,
                         const std::vector<Parameter>& options) {
    CommandTable shown = table;
    std::erase_if(shown.commands, [](const Command& command) { return command.is_hidden; });
    for (const Kind& known : kinds())
        if (known.name == kind) return known.make(shown, options);
    return {};
}

} // namespace zxsheet
