// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet google ...`: the host's functions, called as a host would.
#include "zxsheet/google_command.h"

#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "foundation/host_array.h"
#include "foundation/unicode.h"
#include "spreadsheet/failure.h"
#include "spreadsheet/gsheet/builtins.h"
#include "spreadsheet/gsheet/drive.h"
#include "spreadsheet/gsheet/pauses.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/host_errors.h"
#include "zxsheet/command_error.h"
#include "zxsheet/command_table.h"
#include "zxsheet/input_file.h"
#include "zxsheet/library_error.h"

namespace zxsheet {
namespace {

namespace unicode = foundation::unicode;
using foundation::HostArray;
using foundation::HostArrayPtr;
using spreadsheet::error_id;
using Builtin = void (*)(int, HostArrayPtr*, int, const HostArray**);

struct GoogleOptions : BookOptions {
    std::vector<std::string> arguments; ///< those that must be given
    std::vector<std::string> more;
    bool convert = false;
    std::string folder{};
};

/// Strings as the host's functions take them.
HostArrayPtr string_array(const std::vector<std::string>& strings) {
    auto array = std::make_unique<foundation::StringArray>(1, strings.size());
    for (std::size_t i = 0; i < strings.size(); ++i)
        array->data()[i] = unicode::to_utf16(strings[i]);
    return array;
}

/// The library's identifier for a message identifier.
constexpr struct {
    std::string_view identifier;
    error_id id;
} kKnownErrors[] = {
    {"Zentra:spreadsheet:gsheet:NotFound", error_id::google_sheet_not_found},
    {"Zentra:spreadsheet:gsheet:AccessForbidden", error_id::google_identity_required},
    {"Zentra:spreadsheet:gsheet:TooManyRequests", error_id::google_too_many_requests},
    {"Zentra:spreadsheet:gsheet:RequestTimedOut", error_id::google_timed_out},
    {"Zentra:spreadsheet:gsheet:OperationNotSupported", error_id::google_unsupported},
    {"Zentra:spreadsheet:gsheet:TypeNotSupported", error_id::google_sheet_type_unsupported},
};

/// Other errors differ by the status of the service's reply.
error_id identifier_of(const foundation::core::except::IMessageId& error,
                       const spreadsheet::Failure& failure) {
    for (const auto& known : kKnownErrors)
        if (error.identifier() == known.identifier) return known.id;
    return failure.service.http_status == 404 ? error_id::google_sheet_not_found
                                              : error_id::google_unavailable;
}

CommandError command_error(const foundation::core::except::IMessageId& error,
                           const GoogleOptions& options) {
    if (error.identifier() == "Zentra:spreadsheet:gsheet:UnknownMimeType")
        return {ExitCode::NotAWorkbook, options.book.text() +
                                            ": The file is not a Google spreadsheet; its type is " +
                                            error.argument() + "."};
    const spreadsheet::Failure failure = spreadsheet::failure_of(error);
    return command_error(identifier_of(error, failure), failure, options);
}

/// The output of a function of the host.
HostArrayPtr call(Builtin builtin, const std::vector<HostArrayPtr>& inputs,
                  const GoogleOptions& options) {
    std::vector<const HostArray*> pointers;
    for (const HostArrayPtr& input : inputs)
        pointers.push_back(input.get());
    HostArrayPtr output;
    try {
        builtin(1, &output, static_cast<int>(pointers.size()), pointers.data());
    } catch (const foundation::core::except::IMessageId& error) {
        throw command_error(error, options);
    }
    return output;
}

HostArrayPtr call_with_arguments(Builtin builtin, const GoogleOptions& options) {
    std::vector<HostArrayPtr> inputs;
    for (const std::string& text : options.arguments)
        inputs.push_back(string_array({text}));
    return call(builtin, inputs, options);
}

/// The host's functions hand on what the service replied, whatever it is.
void print_object(const HostArray& array, const GoogleOptions& options, OutputSink& out) {
    std::string text = unicode::to_utf8({array.characters(), array.size()});
    while (text.ends_with('\n'))
        text.pop_back();
    if (!text.starts_with('{') || !text.ends_with('}'))
        throw CommandError(ExitCode::Service,
                           options.book.text() + ": The service's reply cannot be understood.");
    out.write(text + '\n');
}

/// What a failed attempt may have left behind, as a sentence; empty when nothing is left.
std::string leftovers_of(const std::string& title, std::size_t expected) {
    constexpr const char* kBegin = "The service failed, and the request was sent again; ";
    try {
        const auto found = gsheet::find_spreadsheets(unicode::to_utf16(title));
        if (found.size() <= expected) return {};
        std::string sentence = kBegin + std::string("spreadsheets with this title, the latest ") +
                               "first, of which one may be superfluous:";
        for (const gsheet::DriveFile& file : found)
            sentence += ' ' + unicode::to_utf8(file.id);
        return sentence;
    } catch (const std::exception&) { // the token may not search, say
        return kBegin + std::string("there may be a superfluous spreadsheet with this title");
    }
}

void create(const GoogleOptions& options, OutputSink& out) {
    const std::string& title = options.arguments.front();
    std::vector<HostArrayPtr> inputs;
    inputs.push_back(string_array({title}));
    if (!options.more.empty()) inputs.push_back(string_array(options.more));
    try {
        print_object(*call(gsheet::createGoogleWorkbookBuiltin, inputs, options), options, out);
    } catch (const CommandError& failure) {
        if (!gsheet::last_request_was_repeated()) throw;
        const std::string left = leftovers_of(title, 0);
        throw CommandError(failure.code(), failure.what() + (left.empty() ? left : ' ' + left));
    }
    if (!gsheet::last_request_was_repeated()) return;
    if (const std::string left = leftovers_of(title, 1); !left.empty()) out.note(left);
}

void remove_file(const GoogleOptions& options, OutputSink&) {
    gsheet::delete_drive_file(options.book.library_path());
}

void size(const GoogleOptions& options, OutputSink& out) {
    const gsheet::DriveFile file = gsheet::drive_file(options.book.library_path());
    if (file.quota_bytes < 0)
        throw CommandError(ExitCode::Service,
                           options.book.text() + ": The service does not say how large it is.");
    out.write(std::to_string(file.quota_bytes) + '\n');
}

void type(const GoogleOptions& options, OutputSink& out) {
    const gsheet::DriveFile file = gsheet::drive_file(options.book.library_path());
    if (file.mime_type != gsheet::kSpreadsheetMimeType)
        throw CommandError(ExitCode::NotAWorkbook,
                           options.book.text() +
                               ": The file is not a Google spreadsheet; its type is " +
                               file.mime_type + ".");
    out.write(file.mime_type + '\n');
}

void print_file(const gsheet::DriveFile& file, OutputSink& out) {
    out.write(unicode::to_utf8(file.id) + '\t' + unicode::to_utf8(file.name) + '\t' +
              file.mime_type + '\n');
}

/// A file that cannot be read and a service that does not take it are different failures.
void upload(const GoogleOptions& options, OutputSink& out) {
    open_input_file(options.book.text());
    print_file(gsheet::upload_to_drive(unicode::to_utf16(options.book.text()),
                                       {options.convert, unicode::to_utf16(options.folder)}),
               out);
}

void find(const GoogleOptions& options, OutputSink& out) {
    const auto found = gsheet::find_spreadsheets(unicode::to_utf16(options.arguments.front()));
    if (found.empty())
        throw CommandError(ExitCode::NotReadable,
                           options.book.text() + ": There is no spreadsheet with this title.");
    for (const gsheet::DriveFile& file : found)
        print_file(file, out);
}

template <Builtin builtin>
void print_result(const GoogleOptions& options, OutputSink& out) {
    print_object(*call_with_arguments(builtin, options), options, out);
}

/// One command: its name, its arguments, what runs.
struct Verb {
    const char* name;
    const char* what;
    std::vector<const char*> arguments;
    bool has_sheets;   ///< any number of further arguments, names of sheets
    bool is_for_hosts; ///< left out of the help
    void (*run)(const GoogleOptions&, OutputSink&);
};

std::vector<Verb> verbs() {
    return {
        {"create",
         "Make a spreadsheet, with sheets of these names",
         {"TITLE"},
         true,
         false,
         create},
        {"find", "IDs of the spreadsheets with this title", {"TITLE"}, false, false, find},
        {"delete", "Delete a file of the Drive", {"ID"}, false, false, remove_file},
        {"size", "Bytes that a file takes of the quota", {"ID"}, false, false, size},
        {"type", "Type of a file; fails unless it is a spreadsheet", {"ID"}, false, false, type},
        {"read",
         "Values of a range as the service gives them",
         {"ID", "SHEET", "RANGE"},
         false,
         false,
         print_result<gsheet::readGoogleSheet>},
        {"write",
         "The host's function as it is: writes 345 to A17, whatever DATA",
         {"ID", "RANGE", "DATA"},
         false,
         true,
         print_result<gsheet::writeToGoogleSheet>},
        {"upload", "Put a workbook file into the Drive", {"FILE"}, false, false, upload},
    };
}

/// The first argument of all commands names what they work on; IDs may be written as books are.
void take_first(const std::string& text, bool is_id, GoogleOptions& options) {
    const BookLocation location(text);
    const bool has_prefix = is_id && location.is_online();
    options.arguments.front() = has_prefix ? location.id() : text;
    options.book = BookLocation::online(options.arguments.front());
}

Command command_of(const Verb& verb) {
    const auto options = std::make_shared<GoogleOptions>();
    options->arguments.resize(verb.arguments.size());
    Command command{"google", verb.name, verb.what, {}, {}, options};
    for (std::size_t i = 0; i < verb.arguments.size(); ++i) {
        command.parameters.push_back(
            Parameter{verb.arguments[i], "", "", &options->arguments[i]}.required());
        command.parameters.back().may_be_empty = i != 0; // the service decides
    }
    if (verb.has_sheets)
        command.parameters.push_back({"SHEETS", "", "Names of its sheets", &options->more});
    const bool is_id = std::string_view(verb.arguments.front()) == "ID";
    command.parameters.front().target = [&target = *options, is_id](const std::string& text) {
        take_first(text, is_id, target);
    };
    if (std::string_view(verb.name) == "upload") {
        command.parameters.push_back({"--convert", "",
                                      "Make a spreadsheet of it, which can be read and written",
                                      &options->convert});
        command.parameters.push_back({"--folder", "ID",
                                      "Put it into this folder, also of a shared drive",
                                      &options->folder});
    }
    command.is_hidden = verb.is_for_hosts;
    command.read = [options, run = verb.run](OutputSink& out) { run(*options, out); };
    return command;
}

} // namespace

std::vector<Command> google_commands() {
    std::vector<Command> commands;
    for (const Verb& verb : verbs())
        commands.push_back(command_of(verb));
    commands.push_back(whoami_command());
    return commands;
}

void use_google_root(const std::string& root) {
    gsheet::Endpoints endpoints;
    if (!root.empty()) {
        const std::u16string address = unicode::to_utf16(root);
        endpoints = {address, address, address, address};
    }
    try {
        gsheet::set_endpoints(endpoints);
    } catch (const std::invalid_argument&) {
        throw CommandError(ExitCode::Usage,
                           "--google-root " + root +
                               ": The address must be https://HOST, or http:// and "
                               "this machine, without a path");
    }
}

} // namespace zxsheet
