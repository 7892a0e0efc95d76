// SPDX-License-Identifier: Apache-2.0
//
// From the command line to the command, and how failures end.
#include "zxsheet/run.h"

#include <algorithm>
#include <new>
#include <ostream>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/command_error.h"
#include "zxsheet/command_line.h"
#include "zxsheet/google_command.h"
#include "zxsheet/library_error.h"
#include "zxsheet/streamed_book.h"

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
void print_sentence(std::string sentence, std::ostream& err) {
    const auto is_control = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    };
    std::replace_if(sentence.begin(), sentence.end(), is_control, ' ');
    if (!sentence.ends_with('.') && !sentence.ends_with('?')) sentence += '.';
    err << "zxsheet: " << sentence << '\n';
}

int read_book(const Command& command, const Streams& streams) {
    std::string& output = command.options->output;
    if (output == kStream) output.clear();
    ProgressLine progress(streams.terminal.is_err ? &streams.err : nullptr,
                          "Reading " + command.options->book.text());
    OutputSink sink(streams.out, output, [&] {
        // The terminal may show the data as well, and a pipe may end the program here.
        if (output.empty()) return progress.finish();
        progress.set_text("Writing " + output);
    });
    sink.set_terminal_width(streams.terminal.out_width);
    command.read(sink);
    sink.finish();
    progress.finish();
    for (const std::string& note : sink.notes())
        print_sentence(note, streams.err);
    return sink.exit_code();
}

int change_book(const Command& command, const Streams& streams) {
    ProgressLine progress(streams.terminal.is_err ? &streams.err : nullptr,
                          "Opening " + command.options->book.text());
    ChangeTools tools{streams.in, streams.out, progress};
    const std::string done = command.change(tools);
    progress.finish();
    print_sentence(done, streams.err);
    return static_cast<int>(ExitCode::Done);
}

/// Runs the command and returns the exit code; whatever it throws leaves as a `CommandError`.
int execute(const Command& command, const Streams& streams) {
    const BookLocation& book = command.options->book;
    StreamedBook streamed;
    try {
        streamed.fetch(command.options->book, streams.in);
        return command.change ? change_book(command, streams) : read_book(command, streams);
    } catch (const CommandError&) {
        throw;
    } catch (const spreadsheet::Exception& e) {
        throw command_error(e.id(), spreadsheet::failure_of(e), *command.options);
    } catch (const std::bad_alloc&) {
        throw CommandError(ExitCode::Failed, book.text() + ": There is not enough memory.");
    } catch (const std::exception& e) {
        // What the library does not turn into an error of its own is the network's.
        throw CommandError(book.is_online() ? ExitCode::Service : ExitCode::Failed,
                           book.text() + ": " + e.what());
    }
}

} // namespace

int run(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
        std::ostream& err, const Terminal& terminal) {
    try {
        const CommandTable table = make_command_table();
        const ParsedLine line = parse_command_line(arguments, table);
        if (line.command == nullptr) {
            out << line.text << std::flush;
            return static_cast<int>(ExitCode::Done);
        }
        const LibrarySession session;
        use_google_root(line.google_root);
        return execute(*line.command, {in, out, err, terminal});
    } catch (const CommandError& e) {
        print_sentence(e.what(), err);
        return static_cast<int>(e.code());
    }
}

} // namespace zxsheet
