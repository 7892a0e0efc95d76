// SPDX-License-Identifier: Apache-2.0
//
// The identifier says which operation failed, the cause's kind why: together they give the code.
#include "zxsheet/library_error.h"

#include <new>
#include <optional>

#include "zxsheet/input_file.h"
#include "zxsheet/output_format.h"
#include "zxsheet/save_book.h"

namespace zxsheet {
namespace {

using spreadsheet::error_id;
using spreadsheet::FailureKind;

/// What a failed operation was about.
enum class Operation {
    Load,
    UnseenRefusal, ///< of a file for its format, without a look at it
    Selection,     ///< of a sheet, range or name
    Naming,        ///< of a sheet
    Change,        ///< of the book in memory
    Save,          ///< to the target
    SearchOnline,  ///< for a spreadsheet that does not exist
    AccessOnline,  ///< without the right to it
    ReplyOnline,   ///< that cannot be understood
    RowsOnline,    ///< more than one reply may have
    RequestOnline,
    Other
};

Operation operation_of(error_id id, FailureKind kind, const BookLocation& book) {
    switch (id) {
    case error_id::book_not_opened:
    case error_id::book_not_loaded:
        return Operation::Load;
    case error_id::book_not_created:
    case error_id::format_invalid:
    case error_id::format_unsupported: {
        const bool is_unseen = kind == FailureKind::Unknown || kind == FailureKind::Unsupported;
        return is_unseen && book.is_file() ? Operation::UnseenRefusal : Operation::Load;
    }
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
        return Operation::Selection;
    case error_id::sheet_name_invalid:
    case error_id::google_sheet_name_invalid:
        return Operation::Naming;
    case error_id::sheet_not_created:
    case error_id::sheet_not_copied:
    case error_id::old_sheet_not_deleted:
    case error_id::range_not_cleared:
    case error_id::sheet_not_deleted:
    case error_id::hidden_state_not_set:
    case error_id::merge_not_removed:
    case error_id::write_failed:
    case error_id::google_last_sheet:
        return Operation::Change;
    case error_id::book_not_saved:
    case error_id::book_not_saved_as:
    case error_id::file_name_incompatible:
        return Operation::Save;
    case error_id::google_sheet_not_found:
        return Operation::SearchOnline;
    case error_id::google_identity_required:
        return Operation::AccessOnline;
    case error_id::internal:
        return book.is_online() ? Operation::ReplyOnline : Operation::Other;
    case error_id::google_rows_too_many:
        return Operation::RowsOnline;
    case error_id::google_unavailable:
    case error_id::google_unavailable_again:
    case error_id::google_too_many_requests:
    case error_id::google_timed_out:
        return Operation::RequestOnline;
    default:
        return Operation::Other;
    }
}

ExitCode code_of_operation(Operation operation, const BookLocation& book) {
    switch (operation) {
    case Operation::Load:
    case Operation::UnseenRefusal:
        return book.is_online() ? ExitCode::Service : ExitCode::NotAWorkbook;
    case Operation::Selection:
        return ExitCode::NotFound;
    case Operation::Naming:
        return ExitCode::Usage;
    case Operation::Change:
    case Operation::Save:
        return ExitCode::NotWritten;
    case Operation::SearchOnline:
        return ExitCode::NotReadable;
    case Operation::AccessOnline:
    case Operation::ReplyOnline:
    case Operation::RequestOnline:
        return ExitCode::Service;
    default:
        return ExitCode::Failed;
    }
}

/// The code that the cause asks for, whatever the operation was.
std::optional<ExitCode> code_of_cause(FailureKind kind, Operation operation) {
    switch (kind) {
    case FailureKind::Limit:
    case FailureKind::OutOfMemory:
        return ExitCode::Failed;
    case FailureKind::FileNotFound:
    case FailureKind::FileNotReadable:
        if (operation == Operation::Load) return ExitCode::NotReadable;
        return {};
    case FailureKind::NoApplication:
        return ExitCode::NoApplication;
    default:
        return {};
    }
}

/// The sentence with what the service itself said, as far as the sentence does not have it yet.
std::string with_service_reason(std::string sentence, const spreadsheet::ServiceReason& service) {
    const auto lacks = [&sentence](const std::string& text) {
        return !text.empty() && sentence.find(text) == std::string::npos;
    };
    const auto remove_stop = [&sentence] {
        while (sentence.ends_with('.'))
            sentence.pop_back();
    };
    if (lacks(service.message)) {
        remove_stop();
        sentence += ". The service says: " + service.message;
    }
    const std::string& code = service.reason.empty() ? service.status : service.reason;
    if (lacks(code)) {
        remove_stop();
        sentence += " (" + code + ").";
    }
    return sentence;
}

/// The library's message for the identifier alone.
std::string message_of(error_id id) {
    return spreadsheet::failure_of(spreadsheet::Exception(id)).cause;
}

/// What helps when somebody takes data for a book.
std::string advice_for(const BookLocation& book, ExitCode code) {
    if (code != ExitCode::NotAWorkbook || !text_format_of_name(book.text())) return {};
    return " 'zxsheet write BOOK " + book.text() + "' puts CSV, TSV and JSON into a workbook.";
}

std::string sentence_of(Operation operation, error_id id, const spreadsheet::Failure& failure) {
    const bool has_advice =
        failure.kind == FailureKind::Service && failure.cause != failure.service.message;
    switch (operation) {
    case Operation::UnseenRefusal:
        return "This version cannot read files of this format by itself; let the spreadsheet "
               "application open it with --app, or save it as XLSX first.";
    case Operation::AccessOnline:
        if (has_advice) return "Access was refused. " + failure.cause;
        return "Access was refused; set ZX_ACCESS_TOKEN to a token that may use the file, or "
               "ZX_API_KEY for reading a public spreadsheet.";
    case Operation::ReplyOnline:
        if (failure.kind == FailureKind::Service) break;
        return "The service's reply cannot be understood; try again later.";
    case Operation::RowsOnline:
        return "The range has more rows than one reply may have; read it in parts of at most "
               "500,001 with --range.";
    case Operation::SearchOnline:
        return message_of(id) + (has_advice ? ' ' + failure.cause : "");
    default:
        break;
    }
    const bool has_message = id == error_id::google_too_many_requests ||
                             id == error_id::google_timed_out || id == error_id::google_last_sheet;
    if (!has_message) return failure.cause;
    return message_of(id) +
           (has_advice && failure.cause != message_of(id) ? ' ' + failure.cause : "");
}

} // namespace

CommandError command_error(error_id id, const spreadsheet::Failure& failure,
                           const BookOptions& options) {
    const BookLocation& book = options.book;
    const Operation operation = operation_of(id, failure.kind, book);
    // The file may be missing as well.
    if (operation == Operation::UnseenRefusal) open_input_file(book.text());
    const ExitCode code =
        code_of_cause(failure.kind, operation).value_or(code_of_operation(operation, book));
    const std::string name =
        operation == Operation::Save ? output_name(save_target(options)) : book.text();
    return {code, name + ": " +
                      with_service_reason(sentence_of(operation, id, failure), failure.service) +
                      advice_for(book, code)};
}

CommandError as_command_error(const std::exception_ptr& failure, const BookOptions& options) {
    const BookLocation& book = options.book;
    try {
        std::rethrow_exception(failure);
    } catch (const CommandError& error) {
        return error;
    } catch (const spreadsheet::Exception& e) {
        return command_error(e.id(), spreadsheet::failure_of(e), options);
    } catch (const std::bad_alloc&) {
        return {ExitCode::Failed, book.text() + ": There is not enough memory."};
    } catch (const std::exception& e) {
        // What the library does not turn into an error of its own is the network's.
        return {book.is_online() ? ExitCode::Service : ExitCode::Failed,
                book.text() + ": " + e.what()};
    }
}

void print_data(OutputSink& sink, const BookOptions& options, const std::function<void()>& print) {
    try {
        print();
        sink.finish();
    } catch (const std::exception&) {
        const CommandError error = as_command_error(std::current_exception(), options);
        throw CommandError(error.code(), error.what() + sink.break_off_text());
    }
}

} // namespace zxsheet
