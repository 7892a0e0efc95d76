// SPDX-License-Identifier: Apache-2.0
//
// One command of the program: what the command line calls it, what it takes, what runs. Each
// command's source makes its own, with the options that it alone has.
#pragma once

#include <functional>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "zxsheet/book_location.h"
#include "zxsheet/output_sink.h"
#include "zxsheet/parameter.h"
#include "zxsheet/progress_line.h"

namespace zxsheet {

/// What the options of all commands have in common. Strings are UTF-8.
struct BookOptions {
    BookLocation book;
    std::string output; ///< empty for standard output, or for the book that is changed
};

/// What a command that changes a book works with besides its options.
struct ChangeTools {
    std::istream& in;
    std::ostream& out; ///< for a book, or data, that goes to standard output
    ProgressLine& progress;
};

struct Command {
    std::string group; ///< "sheet" in "zxsheet sheet add"; empty for most
    std::string name;
    std::string summary;
    std::vector<Parameter> parameters; ///< their targets are in `options`
    std::string footer;                ///< of the help
    std::shared_ptr<BookOptions> options;
    bool is_hidden = false; ///< known only with --host-functions

    // One of the two is set. Both throw `CommandError` or what the library throws.

    std::function<void(OutputSink&)> read{};
    /// Returns the sentence that says what was done. The book is saved as the last step: a command
    /// that throws leaves the file unchanged.
    std::function<std::string(ChangeTools&)> change{};
};

/// A command that prints something of BOOK. `parameters` follow BOOK and --app.
template <class Options>
Command reading_command(const char* name, const char* summary,
                        const std::shared_ptr<Options>& options, std::vector<Parameter> parameters,
                        void (*run)(const Options&, OutputSink&)) {
    parameters.insert(parameters.begin(),
                      {book_argument(options->book), application_flag(options->book)});
    Command command{{}, name, summary, std::move(parameters), {}, options};
    command.read = [options, run](OutputSink& out) { run(*options, out); };
    return command;
}

/// A command that changes or makes BOOK. `example` is a command line without the program's name.
template <class Options>
Command changing_command(const char* group, const char* name, const char* summary,
                         const std::shared_ptr<Options>& options, std::vector<Parameter> parameters,
                         std::string (*run)(const Options&, ChangeTools&), const char* example) {
    parameters.insert(parameters.begin(),
                      {book_argument(options->book), application_flag(options->book)});
    Command command{group, name, summary, std::move(parameters), {}, options};
    command.footer = std::string("Example: zxsheet ") + example;
    command.change = [options, run](ChangeTools& tools) { return run(*options, tools); };
    return command;
}

} // namespace zxsheet
