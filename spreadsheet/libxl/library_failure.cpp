// SPDX-License-Identifier: Apache-2.0
//
// Tagged log lines of the file back-end.
#include "spreadsheet/libxl/library_failure.h"

#include <string>

#include "spreadsheet/book_factory.h"

namespace spreadsheet::libxl {
namespace {

void log_line(std::string_view tag, std::string_view text) {
    auto& logger = getLogger();
    if (!logger.enabled(foundation::log::error)) return;
    std::string line;
    line.reserve(tag.size() + 1 + text.size());
    line.append(tag).append(" ").append(text);
    logger.write(foundation::log::error, line);
}

} // namespace

void log_library_message(std::string_view tag, const workbook::Book& library) {
    log_line(tag, library.error_message());
}

void fail(std::string_view tag, const workbook::Book& library, error_id id) {
    log_library_message(tag, library);
    throw Exception(id);
}

void fail_without_memory(std::string_view tag, error_id id) {
    log_line(tag, "there is not enough memory for the workbook");
    throw Exception(id);
}

} // namespace spreadsheet::libxl
