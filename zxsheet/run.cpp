// SPDX-License-Identifier: Apache-2.0
//
// From the command line to the command, and how failures end.
#include "zxsheet/run.h"

#include <algorithm>
#include <memory>
#include <ostream>
#include <utility>

#include <CLI/CLI.hpp>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/arguments.h"
#include "zxsheet/failure.h"

namespace zxsheet {
namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 done; 1 failed for another reason; 2 wrong usage; 3 file or spreadsheet not "
    "found "
    "or not readable;\n4 not a workbook of that format; 5 no such sheet, range or name; 6 could "
    "not "
    "write or save; 7 service, credential or\nnetwork; 8 application not available.";

/// The parser; parsing fills `options` and `chosen`.
std::unique_ptr<CLI::App> make_parser(Options& options, ChosenCommand& chosen) {
    auto app = std::make_unique<CLI::App>("Reads and writes spreadsheets.", "zxsheet");
    app->set_version_flag("--version", std::string("zxsheet ") + spreadsheet::version());
    app->footer(kExitCodes);
    app->require_subcommand(1);
    app->allow_windows_style_options(false); // "/data/book.xlsx" is a path everywhere
    add_reading_commands(*app, options, chosen);
    add_changing_commands(*app, options, chosen);
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

struct Streams {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    bool err_is_terminal;
};

void read_book(const Options& options, const ChosenCommand& chosen, const Streams& streams) {
    ProgressLine progress(streams.err_is_terminal ? &streams.err : nullptr,
                          "Reading " + options.book);
    OutputSink sink(streams.out, options.output, [&] {
        // The terminal may show the data as well, and a pipe may end the program here.
        if (options.output.empty()) return progress.finish();
        progress.set_text("Writing " + options.output);
    });
    chosen.read(options, sink);
    sink.finish();
}

void change_book(const Options& options, const ChosenCommand& chosen, const Streams& streams,
                 LibraryLog& log) {
    ProgressLine progress(streams.err_is_terminal ? &streams.err : nullptr,
                          "Opening " + options.book);
    ChangeTools tools{streams.in, progress, log};
    const std::string done = chosen.change(options, tools);
    progress.finish();
    report(ExitCode::Done, done, streams.err);
}

int execute(const Options& options, const ChosenCommand& chosen, const Streams& streams) {
    LibraryLog log;
    std::ostream& err = streams.err;
    try {
        if (chosen.change != nullptr)
            change_book(options, chosen, streams, log);
        else
            read_book(options, chosen, streams);
        return static_cast<int>(ExitCode::Done);
    } catch (const spreadsheet::Exception& e) {
        const Failure failure = describe(e, options, log.cause());
        return report(failure.code(), failure.what(), err);
    } catch (const Failure& e) {
        return report(e.code(), e.what(), err);
    } catch (const std::bad_alloc&) {
        return report(ExitCode::Failed, options.book + ": There is not enough memory.", err);
    } catch (const std::exception& e) {
        return report(ExitCode::Failed, options.book + ": " + e.what(), err);
    }
}

} // namespace

int run(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
        std::ostream& err, bool err_is_terminal) {
    Options options;
    ChosenCommand chosen;
    const auto parser = make_parser(options, chosen);
    try {
        // The parser takes the arguments from the back.
        parser->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() != 0) return report(ExitCode::Usage, usage_sentence(e, *parser), err);
        return parser->exit(e, out, err);
    }
    return execute(options, chosen, {in, out, err, err_is_terminal});
}

} // namespace zxsheet
