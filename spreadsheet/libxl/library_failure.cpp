// SPDX-License-Identifier: Apache-2.0
//
// From the library's error kinds to those of the public interface, and the tagged log lines.
#include "spreadsheet/libxl/library_failure.h"

#include <cstdint>
#include <utility>

#include "spreadsheet/book_factory.h"
#include "spreadsheet/with_failure.h"

namespace spreadsheet::libxl {
namespace {

using foundation::files::FileProblem;
using workbook::ErrorKind;

void log_line(std::string_view tag, std::string_view text,
              std::uint32_t severity = foundation::log::error) {
    auto& logger = getLogger();
    if (!logger.enabled(severity)) return;
    std::string line;
    line.reserve(tag.size() + 1 + text.size());
    line.append(tag).append(" ").append(text);
    logger.write(severity, line);
}

FailureKind kind_of(const workbook::Book& library, error_id id) {
    switch (library.error_kind()) {
    case ErrorKind::None:
        return FailureKind::Unknown;
    case ErrorKind::File:
        if (id == error_id::book_not_saved) return FailureKind::FileNotWritten;
        return library.file_problem() == FileProblem::NotFound ? FailureKind::FileNotFound
                                                               : FailureKind::FileNotReadable;
    case ErrorKind::NotAWorkbook:
        return FailureKind::NotAWorkbook;
    case ErrorKind::Encrypted:
        return FailureKind::Encrypted;
    case ErrorKind::Damaged:
        return FailureKind::Damaged;
    case ErrorKind::Limit:
        return FailureKind::Limit;
    case ErrorKind::Missing:
        return FailureKind::Missing;
    case ErrorKind::Refused:
        return FailureKind::Refused;
    case ErrorKind::Memory:
        return FailureKind::OutOfMemory;
    }
    return FailureKind::Unknown;
}

/// With a capital at its beginning, unless the first word is the name of a part.
std::string as_sentence(std::string text) {
    const auto is_letter = [](char c) { return c >= 'a' && c <= 'z'; };
    const auto word_end = std::find_if_not(text.begin(), text.end(), is_letter);
    if (word_end != text.begin() && word_end != text.end() && *word_end == ' ')
        text.front() = static_cast<char>(text.front() - 'a' + 'A');
    return text;
}

} // namespace

void FailureReporter::log(std::string_view tag) const {
    log_line(tag, library_.error_message());
}

void FailureReporter::log_load_warnings() const {
    for (const std::string& warning : library_.load_warnings())
        log_line("[LIBXL BOOK LOAD MSG]:", warning, foundation::log::info);
}

Failure FailureReporter::last_failure(error_id id, const std::u16string& file) const {
    return {kind_of(library_, id), as_sentence(library_.error_message()), file};
}

void FailureReporter::fail(std::string_view tag, error_id id, const std::u16string& file) const {
    log(tag);
    throw with_failure(Exception(id), last_failure(id, file));
}

void FailureReporter::fail_without_memory(std::string_view tag, error_id id) const {
    constexpr const char* kCause = "there is not enough memory for the workbook";
    log_line(tag, kCause);
    throw with_failure(Exception(id), {FailureKind::OutOfMemory, as_sentence(kCause), file_});
}

void FailureReporter::note(std::string_view tag) {
    log(tag);
    if (!unreported_) unreported_ = last_failure(error_id::write_failed, file_);
}

std::optional<Failure> FailureReporter::take_unreported() {
    return std::exchange(unreported_, std::nullopt);
}

} // namespace spreadsheet::libxl
