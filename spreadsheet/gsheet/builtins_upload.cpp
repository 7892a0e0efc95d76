// SPDX-License-Identifier: Apache-2.0
//
// The host's function that uploads a workbook file: one request of two parts, what the file is and
// its bytes (RFC 2387).
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include "foundation/files.h"
#include "foundation/json.h"
#include "foundation/unicode.h"
#include "spreadsheet/book_format.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/arguments.h"
#include "spreadsheet/gsheet/auth/credential_search.h"
#include "spreadsheet/gsheet/builtins.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"

namespace gsheet {

namespace {

namespace files = foundation::files;
namespace http = foundation::http;
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

const char* mime_type_of_path(const std::u16string& path) {
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

/// A text as it stands between the quotes of JSON.
std::string escaped(const std::string& text) {
    const std::string quoted = foundation::json::to_text(foundation::json::Value(text));
    return quoted.substr(1, quoted.size() - 2);
}

std::string multipart_body(const std::u16string& path, const std::string& mime_type) {
    const std::string delimiter = std::string("--") + kBoundary;
    std::string body = delimiter + "\r\n";
    body += "Content-Type: application/json; charset=UTF-8\r\n\r\n";
    body += "{\n\"name\": \"" + escaped(to_utf8(files::file_name(path)));
    body += "\",\n\"mimeType\": \"" + mime_type + "\"\n}\r\n";
    body += delimiter + "\r\n";
    body += "Content-Type: " + mime_type + "\r\n\r\n";
    body += contents_of(path);
    return body += "\r\n" + delimiter + "--";
}

std::string upload(const std::u16string& path) {
    const std::u16string url = endpoints().upload + u"/upload/drive/v3/files?uploadType=multipart";
    http::HttpRequest request(
        http::HttpMethod::Post, to_utf8(url),
        {{"Content-Type", std::string("multipart/related; boundary=") + kBoundary}});
    set_bearer(request, bearer_token(Scope::drive));
    request.setRequestBody(multipart_body(path, mime_type_of_path(path)));
    return executeRequestWithToken(std::move(request));
}

} // namespace

void uploadSheetToGdrive(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]) {
    run_builtin({nlhs, plhs, nrhs, prhs}, {1, 1},
                [&] { return character_array(upload(text_of(prhs[0]))); });
}

} // namespace gsheet
