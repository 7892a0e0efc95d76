// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/util_gsheet.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "foundation/environment.h"
#include "foundation/log.h"
#include "foundation/unicode.h"
#include "spreadsheet/gsheet/auth/credential_search.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/host_errors.h"
#include "spreadsheet/gsheet/utils/retry_strategy.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/gsheet/utils/service_reason.h"
#include "spreadsheet/with_failure.h"

namespace gsheet {

namespace {

namespace http = foundation::http;
namespace severity = foundation::log;
using foundation::unicode::to_utf16;
using foundation::unicode::to_utf8;
using spreadsheet::error_id;
using spreadsheet::Exception;
using spreadsheet::FailureKind;
using spreadsheet::ServiceReason;

std::string code_and_reason(const http::HttpResponse& response) {
    return "[RESPONSE CODE]: " + std::to_string(response.status) +
           "  [RESPONSE CODE REASON]: " + response.reason;
}

void log_refusal(const http::HttpResponse& response) {
    log_line(severity::error,
             code_and_reason(response) + " [RESPONSE BODY STRING:] " + response.body);
}

void remove_line_feeds(std::string& text) {
    text.erase(std::remove(text.begin(), text.end(), '\n'), text.end());
}

/// Throws `exception` with what is known about its cause, an empty `cause` being the exception's
/// own text.
[[noreturn]] void fail(const Exception& exception, std::string_view cause,
                       ServiceReason reason = {}) {
    throw spreadsheet::with_failure(
        exception, {FailureKind::Service, without_secrets(cause), {}, std::move(reason)});
}

Exception exception_for(const http::HttpResponse& response) {
    constexpr std::string_view kLastSheet = "You can't remove all the sheets in a document.";
    switch (response.status) {
    case 401:
    case 403:
        return Exception(error_id::google_identity_required);
    case 404:
        return Exception(error_id::google_sheet_not_found);
    case 408:
        return Exception(error_id::google_timed_out);
    case 429:
        return Exception(error_id::google_too_many_requests);
    default:
        break;
    }
    std::string body = response.body;
    const std::string message = extractErrorMessage(body);
    if (response.status == 400 && message.find(kLastSheet) != std::string::npos)
        return Exception(error_id::google_last_sheet);
    const error_id id =
        response.status == 503 ? error_id::google_unavailable_again : error_id::google_unavailable;
    return Exception(id, without_secrets(message));
}

Scope scope_of(std::string_view url) {
    return url.find("/drive/v3/") != std::string_view::npos ? Scope::drive : Scope::sheets;
}

/// The token that a request carries; empty for none.
std::string token_of(const http::HttpRequest& request) {
    constexpr std::string_view kBearer = "Bearer ";
    for (const auto& [name, value] : request.headers())
        if (name == "Authorization" && value.size() > kBearer.size())
            return value.substr(kBearer.size());
    return {};
}

RefusedRequest description_of(const http::HttpRequest& request) {
    RefusedRequest about;
    about.method = request.method();
    about.is_drive = scope_of(request.fullUrl()) == Scope::drive;
    about.has_token = !token_of(request).empty();
    about.has_key = !about.has_token && !getCredential("apikey").empty();
    return about;
}

RefusedRequest with_owner(RefusedRequest request) {
    try {
        CredentialOwner owner = credential_owner();
        request.account = std::move(owner.account);
        request.source = std::move(owner.source);
    } catch (const Exception&) {
        // The refusal is what matters now, not a file that has gone since.
    }
    return request;
}

/// Logs an exception that escapes `action` and lets it pass.
template <class Action>
auto with_failures_logged(Action action) {
    try {
        return action();
    } catch (const std::exception& failure) {
        log_line(severity::error, std::string("Exception caught: ") + failure.what());
        throw;
    } catch (...) {
        log_line(severity::error, "Exception caught: of an unknown type");
        throw;
    }
}

} // namespace

bool last_request_was_repeated() {
    return attempts_of_last_request() > 1;
}

std::u16string getCredential(std::string_view kind) {
    if (kind == "accesstoken") return foundation::environment_variable("ZX_ACCESS_TOKEN");
    if (kind == "apikey") return foundation::environment_variable("ZX_API_KEY");
    return {};
}

http::HttpRequest createAuthorizedRequest(http::HttpMethod method, const std::u16string& url,
                                          http::QueryParameters parameters) {
    const std::string address = to_utf8(url);
    log_line(severity::info, "URL for Google SpreadSheet is: " + address);
    http::HttpRequest request(method, address);
    const std::string token = bearer_token(scope_of(address));
    request.setHeader("Accept", "application/json");
    request.setHeader("Content-Type", "application/json");
    if (!token.empty())
        set_bearer(request, token);
    else
        parameters.emplace_back("key", to_utf8(getCredential("apikey")));
    request.setQueryParameters(std::move(parameters));
    log_line(severity::info, "Request URL for Google SpreadSheet is: " + request.printableUrl());
    return request;
}

void set_bearer(http::HttpRequest& request, const std::string& token) {
    try {
        request.setHeader("Authorization", "Bearer " + token);
        const std::string project = quota_project();
        if (!project.empty()) request.setHeader("x-goog-user-project", project);
    } catch (const std::invalid_argument&) {
        throw Exception(error_id::google_identity_required,
                        "The access token or the quota project holds a line end or another control "
                        "character.");
    }
}

http::HttpResponse send_request(http::HttpRequest&& request) {
    const std::shared_ptr<http::HttpClient> client = sharedHttpClient();
    if (client == nullptr)
        fail(Exception(error_id::google_unavailable_again),
             "No HTTP client is registered; call initialize first.");
    forget_attempts();
    const std::string used = token_of(request);
    if (used.empty() || !can_renew_tokens()) return client->send(std::move(request));
    http::HttpRequest again = request;
    http::HttpResponse response = client->send(std::move(request));
    if (response.status != 401) return response;
    const std::string token = renewed_token(scope_of(again.fullUrl()), used);
    if (token.empty() || token == used) return response;
    set_bearer(again, token);
    return client->send(std::move(again));
}

std::string executeRequestWithToken(http::HttpRequest&& request) {
    return with_failures_logged([&] {
        const RefusedRequest about = description_of(request);
        http::HttpResponse response = send_request(std::move(request));
        if (response.status != 200) throwForHttpStatus(response, about);
        log_line(severity::info, code_and_reason(response));
        return std::move(response.body);
    });
}

void throwForHttpStatus(const http::HttpResponse& response) {
    log_refusal(response);
    const ServiceReason reason = reason_of(response);
    fail(exception_for(response), reason.message, reason);
}

void throwForHttpStatus(const http::HttpResponse& response, const RefusedRequest& request) {
    log_refusal(response);
    const ServiceReason reason = reason_of(response);
    const std::string advice = advice_for(reason, with_owner(request));
    fail(exception_for(response), advice.empty() ? reason.message : advice, reason);
}

std::string extractErrorMessage(std::string& body) {
    constexpr std::string_view kKey = "\"message\"";
    constexpr std::size_t kValueOffset = 12; // the key, a colon, one blank, a quote
    remove_line_feeds(body);
    const std::size_t key = body.find(kKey);
    if (key == std::string::npos || key + kValueOffset > body.size()) return {};
    const std::size_t begin = key + kValueOffset;
    const std::size_t end = std::min(body.find('"', begin), body.size());
    return body.substr(begin, end - begin);
}

foundation::json::Object executeRequestAndParseJsonResponse(http::HttpRequest&& request) {
    return executeRequestAndReadJsonResponse(std::move(request), [](std::string_view text) {
        return std::move(foundation::json::parse(text).as_object());
    });
}

std::string executeRequestForJsonText(http::HttpRequest&& request) {
    std::string body = executeRequestWithToken(std::move(request));
    remove_line_feeds(body);
    return body;
}

void throwForUnreadableBody(const std::string& body, std::string_view reason) {
    log_line(severity::error, "JSON response Parsing failed:" + body);
    log_line(severity::error, "Exception caught: " + std::string(reason));
    const bool is_limit = body.find("RATE_LIMIT_EXCEEDED") != std::string::npos;
    fail(Exception(is_limit ? error_id::google_too_many_requests : error_id::internal),
         "The service's reply cannot be understood: " + std::string(reason) + ".");
}

void translateToHostError(const Exception& error) {
    using namespace Zentra::spreadsheet::gsheet;
    switch (error.id()) {
    case error_id::google_unsupported:
        throw_host_error<OperationNotSupported>();
    case error_id::google_sheet_type_unsupported:
        throw_host_error<TypeNotSupported>();
    case error_id::google_identity_required:
        throw_host_error<AccessForbidden>();
    case error_id::google_unavailable_again:
        throw_host_error<ServiceUnavailable>(error.what());
    case error_id::google_too_many_requests:
        throw_host_error<TooManyRequests>();
    case error_id::google_timed_out:
        throw_host_error<RequestTimedOut>();
    default:
        throw_host_error<InternalError>(error.what());
    }
}

std::u16string spreadsheet_url(const std::u16string& id, const std::u16string& suffix) {
    return endpoints().sheets + u"/v4/spreadsheets/" + to_utf16(http::percent_encode(to_utf8(id))) +
           suffix;
}

std::u16string quoted_title(const std::u16string& title) {
    std::u16string quoted = u"'";
    for (const char16_t unit : title) {
        quoted += unit;
        if (unit == u'\'') quoted += unit;
    }
    return quoted + u"'";
}

std::string encoded_title(const std::u16string& title) {
    return http::percent_encode(to_utf8(quoted_title(title)), "-_.~!*()");
}

} // namespace gsheet
