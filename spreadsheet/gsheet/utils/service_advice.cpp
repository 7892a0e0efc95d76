// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/service_advice.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace gsheet {

namespace {

using foundation::http::HttpMethod;
using spreadsheet::ServiceReason;

bool is_one_of(std::string_view text, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), text) != words.end();
}

std::string api_name(const RefusedRequest& request) {
    return request.is_drive ? "Google Drive API" : "Google Sheets API";
}

std::string switched_off(const ServiceReason& reason, const RefusedRequest& request) {
    const std::string where = reason.help_url.empty()
                                  ? " in the console of the project that the credential belongs to"
                                  : " at " + reason.help_url;
    return "The " + api_name(request) + " is not switched on; switch it on" + where +
           ", wait some minutes and try again.";
}

std::string missing_scope(const RefusedRequest& request) {
    return "The access token lacks a scope; get one with " + needed_scope(request) + ".";
}

std::string dead_token(const RefusedRequest& request) {
    const std::string from = request.source.empty() ? "" : " (" + request.source + ")";
    return "The access token" + from +
           " has expired or is not valid; get a new one, or sign in with a service account or the "
           "vendor's command-line tool, whose tokens are renewed.";
}

std::string not_shared(const RefusedRequest& request) {
    if (!request.has_token)
        return "The file is not public; an API key reads only what everybody with the link may "
               "read. Sign in with an access token instead.";
    const std::string account =
        request.account.empty() ? "the account of the access token" : request.account;
    const std::string role = request.method == HttpMethod::Get ? "as reader" : "as editor";
    return "The file is not shared with " + account + "; share it in the browser, " + role + ".";
}

std::string no_identity(const RefusedRequest& request) {
    if (request.has_key)
        return "An API key is good for reading what is public only; this needs an access token "
               "(ZX_ACCESS_TOKEN, or a file in GOOGLE_APPLICATION_CREDENTIALS).";
    return "There is no credential; set ZX_ACCESS_TOKEN, ZX_TOKEN_COMMAND or "
           "GOOGLE_APPLICATION_CREDENTIALS, or ZX_API_KEY for reading what is public.";
}

std::string refused(const ServiceReason& reason, const RefusedRequest& request) {
    const std::string_view why = reason.reason;
    if (is_one_of(why, {"SERVICE_DISABLED", "accessNotConfigured", "API_KEY_SERVICE_BLOCKED"}))
        return switched_off(reason, request);
    if (is_one_of(why, {"ACCESS_TOKEN_SCOPE_INSUFFICIENT", "insufficientPermissions"}))
        return missing_scope(request);
    if (is_one_of(why, {"storageQuotaExceeded", "teamDriveFileLimitExceeded"}))
        return "The Drive has no room left for this account. A service account has no room of its "
               "own: name a folder of a shared drive with --folder.";
    if (is_one_of(why, {"rateLimitExceeded", "userRateLimitExceeded", "dailyLimitExceeded",
                        "quotaExceeded", "RATE_LIMIT_EXCEEDED"}))
        return "The quota of requests is used up; wait a minute, or a day for a daily limit.";
    if (is_one_of(why, {"insufficientFilePermissions", "forbidden"})) return not_shared(request);
    if (!request.has_token && !request.has_key) return no_identity(request);
    return why.empty() ? not_shared(request) : std::string();
}

std::string bad_request(const ServiceReason& reason) {
    if (is_one_of(reason.reason,
                  {"API_KEY_INVALID", "API_KEY_EXPIRED", "badRequest", "keyInvalid"}))
        return "The API key in ZX_API_KEY is not known to the service or has expired; see the "
               "console's page \"Credentials\".";
    if (reason.status == "FAILED_PRECONDITION")
        return "The file is no Google spreadsheet, but perhaps a workbook in the Drive; "
               "'zxsheet google type ID' says what it is, 'zxsheet google upload --convert' makes "
               "a spreadsheet of a workbook.";
    return {};
}

} // namespace

std::string needed_scope(const RefusedRequest& request) {
    const bool reads = request.method == HttpMethod::Get;
    const char* const name = request.is_drive ? reads ? "drive.metadata.readonly" : "drive"
                             : reads          ? "spreadsheets.readonly"
                                              : "spreadsheets";
    return std::string("https://www.googleapis.com/auth/") + name;
}

std::string advice_for(const ServiceReason& reason, const RefusedRequest& request) {
    switch (reason.http_status) {
    case 400:
        return bad_request(reason);
    case 401:
        if (reason.reason == "CREDENTIALS_MISSING" || !request.has_token)
            return no_identity(request);
        return dead_token(request);
    case 403:
        return refused(reason, request);
    case 404:
        return request.is_drive
                   ? "There is no such file, or it is not shared with this account; check the ID."
                   : "There is no such spreadsheet; check the ID, which is the long part of the "
                     "address in the browser.";
    case 429:
        return "The service allows no more requests for now; wait a minute" +
               (reason.help_url.empty() ? std::string(".")
                                        : ", or ask for a higher quota: " + reason.help_url + ".");
    default:
        return {};
    }
}

} // namespace gsheet
