// SPDX-License-Identifier: Apache-2.0
//
// From the library's errors to exit codes and sentences.
#include "zxsheet/failure.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "zxsheet/book_access.h"
#include "zxsheet/save_book.h"

namespace zxsheet {
namespace {

using spreadsheet::error_id;

/// The library's message without its tag.
std::string message_of(const spreadsheet::Exception& error) {
    const std::string_view text = error.what();
    const std::size_t tag_end = text.find("]: ");
    const bool tagged = !text.empty() && text.front() == '[' && tag_end != text.npos;
    return std::string(tagged ? text.substr(tag_end + 3) : text);
}

/// Why a file cannot be opened, where the library has not tried.
std::string unreadable_reason(const std::string& book) {
    std::error_code ignored;
    const bool exists = std::filesystem::exists(native_path(book), ignored);
    return exists ? "The file cannot be read; check the permissions." : "There is no such file.";
}

Failure not_loaded(const Options& options, const std::string& cause, const std::string& message) {
    const std::string sentence =
        options.book + ": " + (cause.empty() ? message : as_sentence(cause));
    if (options.application)
        return {ExitCode::NoApplication,
                options.book + ": The spreadsheet application is not available; leave --app out to "
                               "read the file itself."};
    if (google_id(options.book)) return {ExitCode::Service, sentence};
    return {can_be_opened(options.book) ? ExitCode::NotAWorkbook : ExitCode::NotReadable, sentence};
}

} // namespace

bool can_be_opened(const std::string& book) {
    const std::filesystem::path path = native_path(book);
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored) && std::ifstream(path).is_open();
}

std::string as_sentence(std::string text) {
    // A first word that is a name of something stays as it is.
    const std::size_t word_end = std::min(text.find(' '), text.size());
    const bool is_word =
        std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(word_end),
                    [](char c) { return c >= 'a' && c <= 'z'; });
    if (is_word && word_end > 0) text.front() = static_cast<char>(text.front() - 'a' + 'A');
    return text;
}

Failure describe(const spreadsheet::Exception& error, const Options& options,
                 const std::string& cause) {
    const std::string message = message_of(error);
    // The log of requests tells of attempts; the library's message has the cause.
    const bool has_cause = !cause.empty() && !google_id(options.book);
    const std::string cause_or_message = has_cause ? as_sentence(cause) : message;
    switch (error.id()) {
    case error_id::book_not_opened:
    case error_id::book_not_loaded:
        return not_loaded(options, cause, message);
    case error_id::book_not_created:
    case error_id::format_invalid:
    case error_id::format_unsupported:
        if (options.application || google_id(options.book) || !can_be_opened(options.book))
            return not_loaded(options, unreadable_reason(options.book), message);
        return {ExitCode::NotAWorkbook,
                options.book + ": " +
                    (cause.empty() ? "This version cannot read files of this format; save it as "
                                     "XLSX first."
                                   : as_sentence(cause))};
    case error_id::sheet_not_opened:
    case error_id::sheet_not_found:
    case error_id::trailing_characters:
    case error_id::range_not_parsed:
    case error_id::named_range_not_found:
    case error_id::range_too_large:
    case error_id::cell_out_of_bounds:
    case error_id::chart_sheet_unsupported:
    case error_id::google_range_too_large:
    case error_id::google_range_invalid:
    case error_id::google_cell_out_of_bounds:
        return {ExitCode::NotFound, options.book + ": " + message};
    case error_id::sheet_name_invalid:
    case error_id::google_sheet_name_invalid:
        return {ExitCode::Usage, options.book + ": " + message};
    case error_id::book_not_saved:
    case error_id::book_not_saved_as:
        return {ExitCode::NotWritten, target_of(options) + ": " + cause_or_message};
    case error_id::file_name_incompatible: // nothing has been tried
        return {ExitCode::NotWritten, target_of(options) + ": " + message};
    case error_id::sheet_not_created:
    case error_id::sheet_not_copied:
    case error_id::old_sheet_not_deleted:
    case error_id::range_not_cleared:
    case error_id::sheet_not_deleted:
    case error_id::hidden_state_not_set:
    case error_id::merge_not_removed:
    case error_id::write_failed:
    case error_id::google_last_sheet:
        return {ExitCode::NotWritten, options.book + ": " + cause_or_message};
    case error_id::google_rows_too_many:
        return {ExitCode::Failed,
                options.book + ": The range has more rows than one reply may have; read it in "
                               "parts of at most 500,001 with --range."};
    case error_id::internal:
        if (!google_id(options.book) && options.google.empty())
            return {ExitCode::Failed, options.book + ": " + message};
        return {ExitCode::Service,
                options.book + ": The service's reply cannot be understood; try again later."};
    case error_id::google_sheet_not_found:
        return {ExitCode::NotReadable, options.book + ": " + message};
    case error_id::google_identity_required:
        return {ExitCode::Service,
                options.book + ": Access was refused; set ZX_ACCESS_TOKEN to a token that may use "
                               "the file, or ZX_API_KEY for reading a public spreadsheet."};
    case error_id::google_unavailable:
    case error_id::google_unavailable_again:
    case error_id::google_too_many_requests:
    case error_id::google_timed_out:
        return {ExitCode::Service, options.book + ": " + message};
    default:
        return {ExitCode::Failed, options.book + ": " + message};
    }
}

} // namespace zxsheet
