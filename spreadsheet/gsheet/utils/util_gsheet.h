// SPDX-License-Identifier: Apache-2.0
//
// Every request to the service passes through here: credentials, sending, the mapping of failed
// replies to `spreadsheet::Exception`, and of those to the host's message-ID errors. No log line,
// error text or exception holds a token or a key.
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/http/http_message.h"
#include "foundation/json.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/pauses.h"
#include "spreadsheet/gsheet/utils/service_advice.h"
#include "spreadsheet/gsheet/utils/shared_client.h"

namespace gsheet {

/// The value of ZX_ACCESS_TOKEN for "accesstoken", of ZX_API_KEY for "apikey", read at each call;
/// empty when it is not set and for any other kind.
std::u16string getCredential(std::string_view kind);

/// A request with JSON headers and the caller's credential: the access token as a header, without
/// one the key as the query parameter "key", even an empty key.
foundation::http::HttpRequest
createAuthorizedRequest(foundation::http::HttpMethod method, const std::u16string& url,
                        foundation::http::QueryParameters parameters = {});

/// Sets the header "Authorization" to a token, even an empty one, and that of the project whose
/// quota is used, if one is named. `Exception` 45 for a token that cannot stand in a header.
void set_bearer(foundation::http::HttpRequest& request, const std::string& token);

/// Sends a request through the process's client. Where the credential can be renewed, a refusal of
/// its token (401) has it renewed and the request repeated, once.
foundation::http::HttpResponse send_request(foundation::http::HttpRequest&& request);

/// Sends a request through the process's client and returns the body of the reply. Throws what
/// `throwForHttpStatus` throws for every status other than 200, `spreadsheet::Exception` 48 when no
/// client is registered, and lets the client's own exceptions pass.
std::string executeRequestWithToken(foundation::http::HttpRequest&& request);

/// As above for a body that is a JSON object, line feeds removed. `Exception` 49 for a body that is
/// none and holds "RATE_LIMIT_EXCEEDED", 18 for any other.
foundation::json::Object
executeRequestAndParseJsonResponse(foundation::http::HttpRequest&& request);

/// The body of a reply without line feeds.
std::string executeRequestForJsonText(foundation::http::HttpRequest&& request);

/// Logs a body that could not be read and why; throws `Exception` 49 or 18.
[[noreturn]] void throwForUnreadableBody(const std::string& body, std::string_view reason);

/// `executeRequestAndParseJsonResponse` for a caller that reads the text itself:
/// `read(std::string_view)` throws an exception of any kind for a body that is not what it should
/// be.
template <class Read>
auto executeRequestAndReadJsonResponse(foundation::http::HttpRequest&& request, Read read) {
    const std::string body = executeRequestForJsonText(std::move(request));
    try {
        return read(std::string_view(body));
    } catch (const std::exception& failure) {
        throwForUnreadableBody(body, failure.what());
    }
}

/// The text of the first "message" of an error reply, found without parsing at the place where the
/// service writes it; removes line feeds from `body`.
std::string extractErrorMessage(std::string& body);

[[noreturn]] void throwForHttpStatus(const foundation::http::HttpResponse& response);
/// The same with what can be done about the refusal of that request.
[[noreturn]] void throwForHttpStatus(const foundation::http::HttpResponse& response,
                                     const RefusedRequest& request);

/// Throws the message-ID error that the host knows for a failure of the service.
[[noreturn]] void translateToHostError(const spreadsheet::Exception& error);

/// "{sheets endpoint}/v4/spreadsheets/{id}" and `suffix`.
std::u16string spreadsheet_url(const std::u16string& id, const std::u16string& suffix = u"");

/// A sheet's title as it stands before '!' in a URL: between single quotes, inner ones doubled.
std::u16string quoted_title(const std::u16string& title);
/// As above, percent-encoded for a path: letters, digits and -_.~!*() stay.
std::string encoded_title(const std::u16string& title);

} // namespace gsheet
