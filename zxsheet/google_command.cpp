// SPDX-License-Identifier: Apache-2.0
#include "zxsheet/google_command.h"

#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "foundation/host_array.h"
#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/builtins.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/host_errors.h"
#include "zxsheet/book_access.h"
#include "zxsheet/failure.h"

namespace zxsheet {
namespace {

namespace unicode = foundation::unicode;
using foundation::HostArray;
using foundation::HostArrayPtr;
using spreadsheet::error_id;
using spreadsheet::Exception;
using Builtin = void (*)(int, HostArrayPtr*, int, const HostArray**);

/// A text as the host's functions take it.
HostArrayPtr string_array(const std::vector<std::string>& texts) {
    auto array = std::make_unique<foundation::StringArray>(1, texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        array->data()[i] = unicode::to_utf16(texts[i]);
    return array;
}

/// Which of the library's exceptions a message identifier stands for.
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

[[noreturn]] void throw_as_own(const foundation::core::except::IMessageId& error,
                               const Options& options) {
    if (error.identifier() == "Zentra:spreadsheet:gsheet:UnknownMimeType")
        throw Failure(ExitCode::NotAWorkbook, options.book +
                                                  ": The file is no Google spreadsheet; "
                                                  "its type is " +
                                                  error.argument() + ".");
    for (const auto& known : kKnownErrors)
        if (error.identifier() == known.identifier) throw Exception(known.id);
    // These have no identifier of their own, but their texts are passed on as they are.
    for (const error_id id : {error_id::google_sheet_not_found, error_id::internal})
        if (error.argument() == Exception(id).what()) throw Exception(id);
    throw Exception(error_id::google_unavailable, error.argument());
}

/// The output of a function of the host.
HostArrayPtr call(Builtin builtin, const std::vector<HostArrayPtr>& inputs,
                  const Options& options) {
    std::vector<const HostArray*> pointers;
    for (const HostArrayPtr& input : inputs)
        pointers.push_back(input.get());
    HostArrayPtr output;
    try {
        builtin(1, &output, static_cast<int>(pointers.size()), pointers.data());
    } catch (const foundation::core::except::IMessageId& error) {
        throw_as_own(error, options);
    }
    return output;
}

HostArrayPtr call_with_texts(Builtin builtin, const Options& options) {
    std::vector<HostArrayPtr> inputs;
    for (const std::string& text : options.google_texts)
        inputs.push_back(string_array({text}));
    return call(builtin, inputs, options);
}

void print_text(const HostArray& array, OutputSink& out) {
    std::string text = unicode::to_utf8({array.characters(), array.size()});
    if (!text.ends_with('\n')) text += '\n';
    out.write(text);
}

void create(const Options& options, OutputSink& out) {
    std::vector<HostArrayPtr> inputs;
    inputs.push_back(string_array({options.google_texts.front()}));
    const auto sheets = options.google_texts.begin() + 1;
    if (sheets != options.google_texts.end())
        inputs.push_back(string_array({sheets, options.google_texts.end()}));
    print_text(*call(gsheet::createGoogleWorkbookBuiltin, inputs, options), out);
}

void remove_file(const Options& options, OutputSink&) {
    const auto result = call_with_texts(gsheet::deleteGoogleSpreadsheet, options);
    if (!*result->logicals())
        throw Failure(ExitCode::Service,
                      options.book + ": The file was not deleted; check that it exists and that "
                                     "the access token may delete it.");
}

void size(const Options& options, OutputSink& out) {
    const auto bytes = call_with_texts(gsheet::fileAttributesForGoogleSheet, options);
    out.write(std::to_string(static_cast<long long>(*bytes->doubles())) + '\n');
}

/// A file that cannot be opened is told apart from a service that does not take it.
void upload(const Options& options, OutputSink& out) {
    if (!can_be_opened(options.book))
        throw Failure(ExitCode::NotReadable, options.book + ": The file cannot be read.");
    print_text(*call_with_texts(gsheet::uploadSheetToGdrive, options), out);
}

template <Builtin builtin>
void print_result(const Options& options, OutputSink& out) {
    print_text(*call_with_texts(builtin, options), out);
}

/// One command: what stands behind its name, and what runs.
struct Verb {
    const char* name;
    const char* what;
    std::vector<const char*> arguments;
    bool has_more; ///< any number of further arguments
    void (*run)(const Options&, OutputSink&);
};

const std::vector<Verb>& verbs() {
    static const std::vector<Verb> known = {
        {"create", "Make a spreadsheet, with sheets of these names", {"TITLE"}, true, create},
        {"delete", "Delete a file of the Drive", {"ID"}, false, remove_file},
        {"size", "Bytes that a file takes of the quota", {"ID"}, false, size},
        {"type",
         "Type of a file; fails unless it is a spreadsheet",
         {"ID"},
         false,
         print_result<gsheet::mimeTypeForGoogleSheet>},
        {"read",
         "Values of a range as the service gives them (by ZX_API_KEY)",
         {"ID", "SHEET", "RANGE"},
         false,
         print_result<gsheet::readGoogleSheet>},
        {"write",
         "The host's function as it is: writes 345 to A17, whatever DATA",
         {"ID", "RANGE", "DATA"},
         false,
         print_result<gsheet::writeToGoogleSheet>},
        {"upload", "Put a workbook file into the Drive", {"FILE"}, false, upload},
    };
    return known;
}

/// The texts of one command while the line is parsed.
struct Texts {
    std::vector<std::string> wanted;
    std::vector<std::string> more;
};

/// IDs may be written as books are.
void take_arguments(const Verb& verb, const Texts& texts, Options& options) {
    options.google = verb.name;
    options.google_texts = texts.wanted;
    options.google_texts.insert(options.google_texts.end(), texts.more.begin(), texts.more.end());
    std::string& first = options.google_texts.front();
    if (std::string_view(verb.arguments.front()) == "ID") first = google_id(first).value_or(first);
    options.book = first;
}

void add_verb(CLI::App& group, const Verb& verb, Options& options,
              const std::function<void()>& choose) {
    CLI::App* command = group.add_subcommand(verb.name, verb.what);
    const auto texts = std::make_shared<Texts>();
    texts->wanted.resize(verb.arguments.size());
    for (std::size_t i = 0; i < verb.arguments.size(); ++i)
        command->add_option(verb.arguments[i], texts->wanted[i])->required()->option_text(" ");
    if (verb.has_more)
        command->add_option("SHEETS", texts->more, "Names of its sheets")->option_text(" ");
    command->callback([&verb, &options, texts, choose] {
        take_arguments(verb, *texts, options);
        choose();
    });
}

} // namespace

void add_google_root(CLI::App& app, Options& options) {
    app.add_option("--google-root", options.google_root,
                   "Address of a service to use in Google's place (or ZX_GOOGLE_ROOT)")
        ->envname("ZX_GOOGLE_ROOT")
        ->option_text("URL");
}

void add_google_commands(CLI::App& app, Options& options, const std::function<void()>& choose) {
    CLI::App* group = app.add_subcommand("google", "Files of Google Sheets and Drive");
    group->require_subcommand(1);
    for (const Verb& verb : verbs())
        add_verb(*group, verb, options, choose);
}

void use_google_root(const Options& options) {
    gsheet::Endpoints endpoints;
    if (!options.google_root.empty()) {
        const std::u16string root = unicode::to_utf16(options.google_root);
        endpoints = {root, root, root};
    }
    try {
        gsheet::set_endpoints(endpoints);
    } catch (const std::invalid_argument&) {
        throw Failure(ExitCode::Usage, "--google-root " + options.google_root +
                                           ": The address must be https://HOST, or http:// and "
                                           "this machine, without a path");
    }
}

void run_google(const Options& options, OutputSink& out) {
    for (const Verb& verb : verbs())
        if (options.google == verb.name) return verb.run(options, out);
}

} // namespace zxsheet
