// SPDX-License-Identifier: Apache-2.0
//
// The command line: what it accepts, which command it starts, how failures end.
#include "zxsheet/run.h"

#include <algorithm>
#include <memory>
#include <ostream>
#include <utility>

#include <CLI/CLI.hpp>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/book_access.h"
#include "zxsheet/commands.h"
#include "zxsheet/failure.h"
#include "zxsheet/google_command.h"
#include "zxsheet/progress_line.h"

namespace zxsheet {
namespace {

using Command = void (*)(const Options&, OutputSink&);
using spreadsheet::MergedCellColumnRule;
using spreadsheet::MergedCellRowRule;

/// Keeps the library started and collects what it logs about failures.
class LibrarySession {
  public:
    LibrarySession() : sink_(std::make_shared<foundation::log::CollectingSink>()) {
        spreadsheet::initialize();
        spreadsheet::getLogger().add_sink(sink_);
    }
    LibrarySession(const LibrarySession&) = delete;
    LibrarySession& operator=(const LibrarySession&) = delete;
    ~LibrarySession() {
        spreadsheet::getLogger().remove_sink(sink_);
        spreadsheet::release();
    }

    /// Why the last load failed: the text behind the tag of its record. A book logs its end, too,
    /// which says nothing new.
    std::string cause() const {
        const auto records = sink_->records();
        const auto found = std::find_if(records.rbegin(), records.rend(), [](const auto& record) {
            return record.severity == foundation::log::error &&
                   record.text.find(" DTOR ") == std::string::npos;
        });
        if (found == records.rend()) return {};
        const std::size_t tag_end = found->text.find("]:");
        if (tag_end == std::string::npos) return found->text;
        const std::size_t begin = found->text.find_first_not_of(' ', tag_end + 2);
        return begin == std::string::npos ? std::string() : found->text.substr(begin);
    }

  private:
    std::shared_ptr<foundation::log::CollectingSink> sink_;
};

void add_book(CLI::App& command, Options& options) {
    command.add_option("BOOK", options.book, "Path of the workbook, or gsheet:ID")
        ->required()
        ->option_text(" ");
    command.add_flag("--app", options.application, "Let the spreadsheet application open the file");
}

void add_selection(CLI::App& command, Options& options) {
    command
        .add_option("-s,--sheet", options.sheet,
                    "Name of the sheet, or its number from 1 (default: the first worksheet)")
        ->option_text("SHEET");
    command
        .add_option("-r,--range", options.range,
                    "A1:D20, B3, A:C, 2:10 or a defined name (default: the used range)")
        ->option_text("RANGE");
}

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

template <class Rule>
CLI::Validator merged_rule() {
    return one_of<Rule>("RULE", {{"first", Rule::first},
                                 {"last", Rule::last},
                                 {"repeat", Rule::repeat},
                                 {"error", Rule::error},
                                 {"omit", Rule::omit}});
}

void add_merged_rules(CLI::App& command, Options& options) {
    command
        .add_option("--merged-columns", options.merged_columns,
                    "Cells merged across columns: first, last, repeat, error or omit")
        ->transform(merged_rule<MergedCellColumnRule>())
        ->option_text("RULE");
    command
        .add_option("--merged-rows", options.merged_rows,
                    "Cells merged across rows: first, last, repeat, error or omit")
        ->transform(merged_rule<MergedCellRowRule>())
        ->option_text("RULE");
}

void add_output(CLI::App& command, Options& options) {
    command.add_option("--to", options.to, "csv (default), tsv, json, jsonl or table")
        ->transform(one_of<DataFormat>("FORMAT", {{"csv", DataFormat::Csv},
                                                  {"tsv", DataFormat::Tsv},
                                                  {"json", DataFormat::Json},
                                                  {"jsonl", DataFormat::JsonLines},
                                                  {"table", DataFormat::Table}}))
        ->option_text("FORMAT");
    command
        .add_option("--dates", options.dates,
                    "iso (default), or serial: day numbers of the 1900 system")
        ->transform(
            one_of<DateStyle>("STYLE", {{"iso", DateStyle::Iso}, {"serial", DateStyle::Serial}}))
        ->option_text("STYLE");
    command.add_option("-o,--output", options.output, "Write into FILE instead of standard output")
        ->option_text("FILE");
}

constexpr const char* kExitCodes =
    "Exit codes: 0 done; 1 failed for another reason; 2 wrong usage; 3 file or spreadsheet not "
    "found "
    "or not readable;\n4 not a workbook of that format; 5 no such sheet, range or name; 6 could "
    "not "
    "write; 7 service, credential or\nnetwork; 8 application not available.";

/// The parser; parsing fills `options` and `command`.
std::unique_ptr<CLI::App> make_parser(Options& options, Command& command) {
    auto app = std::make_unique<CLI::App>("Reads spreadsheets.", "zxsheet");
    app->set_version_flag("--version", std::string("zxsheet ") + spreadsheet::version());
    app->footer(kExitCodes);
    app->require_subcommand(1);
    app->allow_windows_style_options(false); // "/data/book.xlsx" is a path everywhere
    const auto add = [&](const char* name, const char* what, Command function) {
        CLI::App* added = app->add_subcommand(name, what);
        added->callback([&command, function] { command = function; });
        add_book(*added, options);
        return added;
    };
    CLI::App* info = add("info", "Format, date system and sheets of a book", run_info);
    info->add_flag("--json", options.json, "Print JSON");
    add("sheets", "Names of the sheets, one a line", run_sheets);
    CLI::App* types = add("types", "Types of the cells of a range", run_types);
    add_selection(*types, options);
    types->add_flag("--json", options.json, "Print JSON");
    CLI::App* read = add("read", "Cells of a range", run_read);
    add_selection(*read, options);
    add_output(*read, options);
    add_merged_rules(*read, options);
    add_google_root(*app, options);
    add_google_commands(*app, options, [&command] { command = run_google; });
    return app;
}

/// Prints one line that ends with a full stop, whatever a file put into the sentence.
int report(ExitCode code, std::string sentence, std::ostream& err) {
    const auto is_control = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    };
    std::replace_if(sentence.begin(), sentence.end(), is_control, ' ');
    if (!sentence.ends_with('.')) sentence += '.';
    err << "zxsheet: " << sentence << '\n';
    return static_cast<int>(code);
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

int execute(const Options& options, Command command, std::ostream& out, std::ostream& err,
            bool err_is_terminal) {
    const LibrarySession library;
    try {
        use_google_root(options);
        ProgressLine progress(err_is_terminal ? &err : nullptr, "Reading " + options.book);
        OutputSink sink(out, options.output, [&] {
            // The terminal may show the data as well, and a pipe may end the program here.
            if (options.output.empty()) return progress.finish();
            progress.set_text("Writing " + options.output);
        });
        command(options, sink);
        sink.finish();
        return static_cast<int>(ExitCode::Done);
    } catch (const spreadsheet::Exception& e) {
        const Failure failure = describe(e, options, library.cause());
        return report(failure.code(), failure.what(), err);
    } catch (const Failure& e) {
        return report(e.code(), e.what(), err);
    } catch (const std::bad_alloc&) {
        return report(ExitCode::Failed, options.book + ": There is not enough memory.", err);
    } catch (const std::exception& e) {
        // What the library does not turn into an error of its own is the network's.
        const bool is_service = google_id(options.book).has_value();
        return report(is_service ? ExitCode::Service : ExitCode::Failed,
                      options.book + ": " + e.what(), err);
    }
}

} // namespace

int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
        bool err_is_terminal) {
    Options options;
    Command command = nullptr;
    const auto parser = make_parser(options, command);
    try {
        // The parser takes the arguments from the back.
        parser->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() != 0) return report(ExitCode::Usage, usage_sentence(e, *parser), err);
        return parser->exit(e, out, err);
    }
    return execute(options, command, out, err, err_is_terminal);
}

} // namespace zxsheet
