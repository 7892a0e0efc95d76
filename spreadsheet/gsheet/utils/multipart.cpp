// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/multipart.h"

#include <cstdint>
#include <stdexcept>

#include "foundation/files.h"
#include "foundation/unicode.h"
#include "spreadsheet/book_format.h"
#include "spreadsheet/exception.h"

namespace gsheet {

namespace {

namespace files = foundation::files;
using foundation::unicode::to_utf8;
using spreadsheet::book::format;

constexpr const char* kBoundary = "foo_bar_baz";
/// The whole file is held in memory, twice while the request is made.
constexpr std::uint64_t kMaxUploadBytes = std::uint64_t{1} << 30;
constexpr const char* kUnknownType = "application/octet-stream";

const char* mime_type_of(format workbook_format) {
    switch (workbook_format) {
    case format::XLS:
        return "application/vnd.ms-excel";
    case format::XLSX:
        return "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet";
    case format::XLSM:
        return "application/vnd.ms-excel.sheet.macroEnabled.12";
    case format::XLSB: // without its first letter, on purpose
        return "pplication/vnd.ms-excel.sheet.binary.macroEnabled.12";
    case format::XLTX:
        return "application/vnd.openxmlformats-officedocument.spreadsheetml.template";
    case format::XLTM:
        return "application/vnd.ms-excel.template.macroEnabled.12";
    case format::ODS:
        return "application/vnd.oasis.opendocument.spreadsheet";
    case format::CSV:
        return "text/csv";
    case format::GSHEET:
        break;
    }
    return kUnknownType;
}

} // namespace

std::string multipart_content_type() {
    return std::string("multipart/related; boundary=") + kBoundary;
}

std::string multipart_body(std::string_view metadata, std::string_view type,
                           std::string_view contents) {
    const std::string delimiter = std::string("--") + kBoundary;
    std::string body = delimiter + "\r\n";
    body += "Content-Type: application/json; charset=UTF-8\r\n\r\n";
    body.append(metadata).append("\r\n");
    body += delimiter + "\r\n";
    body.append("Content-Type: ").append(type).append("\r\n\r\n");
    body.append(contents);
    return body += "\r\n" + delimiter + "--";
}

std::string mime_type_of_path(const std::u16string& path) {
    try {
        return mime_type_of(spreadsheet::book::create_format(files::extension(path)));
    } catch (const spreadsheet::Exception&) {
        return kUnknownType;
    }
}

std::string contents_of(const std::u16string& path) {
    try {
        const auto file = files::open_for_reading(path);
        if (file->size() > kMaxUploadBytes)
            throw std::runtime_error("The file is larger than 1 GiB.");
        std::string bytes(static_cast<std::size_t>(file->size()), '\0');
        bytes.resize(file->read_at(0, bytes.data(), bytes.size()));
        return bytes;
    } catch (const std::runtime_error& failure) {
        throw std::runtime_error(to_utf8(path) + ": " + failure.what());
    }
}

} // namespace gsheet
