// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/auth/token_exchange.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <utility>

#include "foundation/base64.h"
#include "foundation/http/http_client.h"
#include "foundation/signature.h"
#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/auth/sign_in_failure.h"
#include "spreadsheet/gsheet/json_access.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/shared_client.h"

namespace gsheet {

namespace {

namespace http = foundation::http;
namespace json = foundation::json;
using foundation::unicode::to_utf8;

constexpr std::size_t kMaxReplyBytes = 1u << 20;
constexpr std::int64_t kAssertionSeconds = 3600; ///< the most that the service takes
constexpr std::int64_t kUsualLifetime = 3600;
constexpr std::int64_t kMaxLifetime = 86'400;

std::string text_member(const json::Object& object, std::string_view key) {
    return to_utf8(text_in(object, key));
}

/// JSON Web Signature, compact (RFC 7515, section 3.1).
std::string make_assertion(const CredentialFile& file, Scope scope) {
    const std::int64_t now = std::chrono::duration_cast<std::chrono::seconds>(
                                 std::chrono::system_clock::now().time_since_epoch())
                                 .count();
    json::Object head({{"alg", "RS256"}, {"typ", "JWT"}});
    if (!file.private_key_id.empty()) head["kid"] = file.private_key_id;
    const json::Object claims({{"iss", file.client_email},
                               {"scope", scope_url(scope)},
                               {"aud", file.token_uri},
                               {"iat", now},
                               {"exp", now + kAssertionSeconds}});
    const std::string text = foundation::to_base64url(json::to_text(head)) + '.' +
                             foundation::to_base64url(json::to_text(claims));
    try {
        return text + '.' +
               foundation::to_base64url(
                   foundation::crypto::sign_rsa_sha256(file.private_key, text));
    } catch (const foundation::crypto::KeyError& failure) {
        throw_sign_in_failure("The key of " + file.client_email +
                              " cannot be used: " + failure.what());
    }
}

std::string form_of(const http::QueryParameters& fields) {
    std::string form;
    for (const auto& [name, value] : fields) {
        if (!form.empty()) form += '&';
        form += name + '=' + http::percent_encode(value);
    }
    return form;
}

http::HttpResponse post_form(const std::string& url, const http::QueryParameters& fields) {
    http::HttpRequest request(
        http::HttpMethod::Post, url,
        {{"Content-Type", "application/x-www-form-urlencoded"}, {"Accept", "application/json"}});
    request.setRequestBody(form_of(fields));
    const auto client = sharedHttpClient();
    if (client == nullptr)
        throw spreadsheet::Exception(spreadsheet::error_id::google_unavailable_again);
    return client->send(std::move(request));
}

json::Object object_of(const http::HttpResponse& response) {
    try {
        if (response.body.size() > kMaxReplyBytes) return {};
        json::Value value = json::parse(response.body);
        if (value.is_object()) return std::move(value.get_object());
    } catch (const json::ParseError&) {
        // A proxy's page, say.
    }
    return {};
}

/// {"error", "error_description"} of RFC 6749, section 5.2.
[[noreturn]] void throw_refusal(const http::HttpResponse& response, const CredentialFile& file) {
    const json::Object reply = object_of(response);
    spreadsheet::ServiceReason reason;
    reason.http_status = static_cast<int>(response.status);
    reason.reason = text_member(reply, "error");
    reason.message = text_member(reply, "error_description");
    if (http::isServerError(response.status) || response.status == 429)
        throw spreadsheet::Exception(spreadsheet::error_id::google_unavailable_again,
                                     "The service gives no token for now.");
    if (file.kind == CredentialFile::Kind::authorized_user)
        throw_sign_in_failure(
            reason.reason == "invalid_grant"
                ? "The sign-in has ended or was withdrawn; sign in again with the vendor's "
                  "command-line tool (gcloud auth application-default login)."
                : "The sign-in was refused.",
            reason);
    throw_sign_in_failure("The key of " + file.client_email +
                              " was refused; it may be deleted, and the clock of this machine must "
                              "be right.",
                          reason);
}

AccessToken token_of(const http::HttpResponse& response, const CredentialFile& file) {
    if (response.status != 200) throw_refusal(response, file);
    const json::Object reply = object_of(response);
    AccessToken token;
    token.value = text_member(reply, "access_token");
    if (token.value.empty()) throw_sign_in_failure("The service's reply holds no access token.");
    const std::int64_t seconds = std::clamp<std::int64_t>(
        integer_in(reply, "expires_in").value_or(kUsualLifetime), 0, kMaxLifetime);
    token.end = foundation::Clock::later(foundation::clock().now(), std::chrono::seconds(seconds));
    return token;
}

} // namespace

std::string scope_url(Scope scope) {
    return scope == Scope::drive ? "https://www.googleapis.com/auth/drive"
                                 : "https://www.googleapis.com/auth/spreadsheets";
}

AccessToken request_token(const CredentialFile& file, Scope scope,
                          void (*remember_secret)(const std::string& secret)) {
    const auto remembered = [remember_secret](AccessToken token) {
        remember_secret(token.value);
        return token;
    };
    if (file.kind == CredentialFile::Kind::authorized_user)
        return remembered(
            token_of(post_form(file.token_uri, {{"grant_type", "refresh_token"},
                                                {"client_id", file.client_id},
                                                {"client_secret", file.client_secret},
                                                {"refresh_token", file.refresh_token}}),
                     file));
    const std::string assertion = make_assertion(file, scope);
    remember_secret(assertion);
    return remembered(token_of(
        post_form(file.token_uri, {{"grant_type", "urn:ietf:params:oauth:grant-type:jwt-bearer"},
                                   {"assertion", assertion}}),
        file));
}

json::Object describe_token(const std::string& token) {
    const http::HttpResponse response =
        post_form(to_utf8(endpoints().token + u"/tokeninfo"), {{"access_token", token}});
    json::Object reply = object_of(response);
    if (response.status == 200 && !reply.empty()) return reply;
    if (response.status == 200)
        throw_sign_in_failure("The service's reply about the token cannot be understood.");
    spreadsheet::ServiceReason reason;
    reason.http_status = static_cast<int>(response.status);
    reason.message = text_member(reply, "error_description");
    throw_sign_in_failure("The access token has expired or is not valid.", reason);
}

} // namespace gsheet
