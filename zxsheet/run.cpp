// SPDX-License-Identifier: Apache-2.0
//
// From the command line to the command, and how failures end.
#include "zxsheet/run.h"

#include <exception>
#include <ostream>

#include "spreadsheet/gsheet/credentials.h"
#include "spreadsheet/spreadsheet.h"
#include "zxsheet/command_error.h"
#include "zxsheet/command_line.h"
#include "zxsheet/google_command.h"
#include "zxsheet/library_error.h"
#include "zxsheet/service_notices.h"
#include "zxsheet/streamed_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

/// Keeps the library started.
class LibrarySession {
  public:
    LibrarySession() { spreadsheet::initialize(); }
    LibrarySession(const LibrarySession&) = delete;
    LibrarySession& operator=(const LibrarySession&) = delete;
    ~LibrarySession() { spreadsheet::release(); }
};

struct Streams {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    Terminal terminal;
};

/// Prints one line that ends with a full stop or a question, whatever a file put into the sentence.
void print_sentence(const std::string& text, std::ostream& err) {
    std::string sentence = one_line(text);
    if (!sentence.ends_with('.') && !sentence.ends_with('?')) sentence += '.';
    err << "zxsheet: " << sentence << '\n';
}

int read_book(const Command& command, const Streams& streams) {
    const std::string& output = command.options->output;
    ProgressLine progress(streams.terminal.is_err ? &streams.err : nullptr,
                          "Reading " + command.options->book.text());
    const PauseNotices notices(streams.err, streams.terminal.is_err, progress);
    OutputSink sink(streams.out, output, [&] {
        // The terminal may show the data as well, and a pipe may end the program here.
        if (output.empty() || output == kStream) return progress.finish();
        progress.set_text("Writing " + output);
    });
    sink.set_terminal_width(streams.terminal.out_width);
    print_data(sink, *command.options, [&] { command.read(sink); });
    progress.finish();
    for (const std::string& note : sink.notes())
        print_sentence(note, streams.err);
    return sink.exit_code();
}

int change_book(const Command& command, const Streams& streams) {
    ProgressLine progress(streams.terminal.is_err ? &streams.err : nullptr,
                          "Opening " + command.options->book.text());
    const PauseNotices notices(streams.err, streams.terminal.is_err, progress);
    ChangeTools tools{streams.in, streams.out, progress};
    const std::string done = command.change(tools);
    progress.finish();
    print_sentence(done, streams.err);
    return static_cast<int>(ExitCode::Done);
}

/// Runs the command and returns the exit code; whatever it throws leaves as a `CommandError`.
int execute(const Command& command, const Streams& streams) {
    StreamedBook streamed;
    try {
        streamed.fetch(command.options->book, command.options->output, streams.in);
        return command.change ? change_book(command, streams) : read_book(command, streams);
    } catch (const std::exception&) {
        throw as_command_error(std::current_exception(), *command.options);
    }
}

} // namespace

int run(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
        std::ostream& err, const Terminal& terminal) {
    try {
        const CommandTable table = make_command_table();
        const ParsedLine line = parse_command_line(arguments, table);
        if (line.command == nullptr) {
            OutputSink sink(out, {});
            sink.write(line.text);
            sink.finish();
            return static_cast<int>(ExitCode::Done);
        }
        const LibrarySession session;
        use_google_root(line.google_root);
        gsheet::use_credential_search(true);
        const LogPrinting log(line.log_level, err);
        Terminal shown = terminal;
        // The log and a line of progress would disturb each other.
        shown.is_err = terminal.is_err && line.log_level.empty();
        return execute(*line.command, {in, out, err, shown});
    } catch (const CommandError& e) {
        print_sentence(e.what(), err);
        return static_cast<int>(e.code());
    } catch (const std::exception& e) { // before a command ran
        print_sentence(std::string("The library cannot be started: ") + e.what(), err);
    } catch (...) {
        print_sentence("The program failed for a reason that it does not know", err);
    }
    return static_cast<int>(ExitCode::Failed);
}

} // namespace zxsheet
