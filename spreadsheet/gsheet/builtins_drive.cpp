// SPDX-License-Identifier: Apache-2.0
//
// The host's functions for files of the Drive: delete one, ask for its size and its type.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "foundation/log.h"
#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/arguments.h"
#include "spreadsheet/gsheet/auth/credential_search.h"
#include "spreadsheet/gsheet/builtins.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/host_errors.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"

namespace gsheet {

namespace {

namespace http = foundation::http;
namespace json = foundation::json;
namespace severity = foundation::log;
using foundation::unicode::to_utf16;
using foundation::unicode::to_utf8;
using spreadsheet::error_id;
using spreadsheet::Exception;

std::u16string file_url(const std::u16string& id) {
    return endpoints().drive + u"/drive/v3/files/" + to_utf16(http::percent_encode(to_utf8(id)));
}

http::HttpResponse send_deletion(const std::string& url) {
    http::HttpRequest request(http::HttpMethod::Delete, url);
    set_bearer(request, bearer_token(Scope::drive));
    return send_request(std::move(request));
}

bool is_deleted(const http::HttpResponse& response, const std::string& url) {
    if (response.status == 204) {
        log_line(severity::info, "Successfully deleted file with URL:" + url);
        return true;
    }
    log_line(severity::error, "[RESPONSE CODE]:" + std::to_string(response.status) +
                                  "[RESPONSE CODE REASON]:" + response.reason +
                                  "[RESPONSE BODY STRING:]" + response.body);
    return false;
}

/// Whatever goes wrong is said on standard error and false in the end.
bool delete_file(const std::u16string& id) {
    try {
        const std::string url = to_utf8(file_url(id));
        log_line(severity::debug, "URL for deletion is: " + url);
        return is_deleted(send_deletion(url), url);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "deleteGoogleSpreadsheet failed with error: %s\n",
                     without_secrets(failure.what()).c_str());
        return false;
    }
}

/// A text member of what the Drive tells about a file.
std::string file_field(const std::u16string& id, const char* name) {
    http::HttpRequest request =
        createAuthorizedRequest(http::HttpMethod::Get, file_url(id), {{"fields", name}});
    try {
        const json::Object reply = executeRequestAndParseJsonResponse(std::move(request));
        const json::Value* const member = reply.if_contains(name);
        if (member != nullptr && member->is_string())
            return std::string(member->get_string().data(), member->get_string().size());
    } catch (const Exception& error) {
        if (error.id() != error_id::google_sheet_not_found) throw;
        throw_host_error<Zentra::spreadsheet::gsheet::NotFound>(to_utf8(id));
    }
    throw_host_error<Zentra::spreadsheet::gsheet::InternalError>(
        std::string("the reply has no text \"") + name + "\"");
}

/// The number at the beginning of a text, in 32 bits.
int to_int32(const std::string& text) {
    using Limits = std::numeric_limits<int>;
    using Zentra::spreadsheet::gsheet::InternalError;
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str()) throw_host_error<InternalError>("invalid stoi argument");
    if (errno == ERANGE || value < Limits::min() || value > Limits::max())
        throw_host_error<InternalError>("stoi argument out of range");
    return static_cast<int>(value);
}

void check_is_spreadsheet(const std::string& mime_type) {
    if (mime_type != "application/vnd.google-apps.spreadsheet")
        throw_host_error<Zentra::spreadsheet::gsheet::UnknownMimeType>(mime_type);
}

template <class Array, class Value>
HostArrayPtr scalar(Value value) {
    auto array = std::make_unique<Array>(1, 1);
    array->data()[0] = value;
    return array;
}

} // namespace

void deleteGoogleSpreadsheet(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]) {
    run_builtin({nlhs, plhs, nrhs, prhs}, {1, 1},
                [&] { return scalar<foundation::LogicalArray>(delete_file(text_of(prhs[0]))); });
}

void fileAttributesForGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs,
                                  const HostArray* prhs[]) {
    run_builtin({nlhs, plhs, nrhs, prhs}, {1, 1}, [&] {
        const std::string bytes = file_field(text_of(prhs[0]), "quotaBytesUsed");
        return scalar<foundation::DoubleArray>(to_int32(bytes));
    });
}

void mimeTypeForGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]) {
    run_builtin({nlhs, plhs, nrhs, prhs}, {1, 1}, [&] {
        const std::string mime_type = file_field(text_of(prhs[0]), "mimeType");
        check_is_spreadsheet(mime_type);
        return character_array(mime_type);
    });
}

} // namespace gsheet
