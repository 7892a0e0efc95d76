// SPDX-License-Identifier: Apache-2.0
//
// The host's functions for spreadsheets: create one, read and write a range of values.
#include "spreadsheet/gsheet/builtins.h"

#include <string>
#include <utility>

#include "foundation/json.h"
#include "foundation/log.h"
#include "foundation/oauth.h"
#include "foundation/unicode.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/gsheet/arguments.h"
#include "spreadsheet/gsheet/auth/credential_search.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"

namespace gsheet {

namespace {

namespace http = foundation::http;
namespace json = foundation::json;
namespace severity = foundation::log;
using foundation::unicode::to_utf16;
using foundation::unicode::to_utf8;

/// A range as it stands in a path. Callers may have encoded what needs it, so '%' stays; what would
/// end the path, or cannot stand in a URL, is encoded here.
std::u16string range_in_path(const std::u16string& range) {
    return to_utf16(http::percent_encode(to_utf8(range), "-._~!*'()$&+,;=:@%"));
}

json::Object with_title(const std::u16string& title) {
    return {{"properties", json::Object{{"title", to_utf8(title)}}}};
}

std::string description_of_new(const std::u16string& title,
                               const std::vector<std::u16string>& sheet_names) {
    json::Object description = with_title(title);
    json::Array sheets;
    for (const std::u16string& name : sheet_names)
        sheets.push_back(with_title(name));
    if (!sheets.empty()) description["sheets"] = std::move(sheets);
    return json::to_text(description);
}

std::string create_workbook(const std::u16string& title,
                            const std::vector<std::u16string>& sheet_names) {
    const std::string url = to_utf8(endpoints().sheets + u"/v4/spreadsheets");
    log_line(severity::debug, "Endpoint for spreadsheet creation is:" + url);
    log_line(severity::debug, "Spreadsheet being created with title:" + to_utf8(title));
    http::HttpRequest request(http::HttpMethod::Post, url, {{"Content-Type", "application/json"}});
    set_bearer(request, bearer_token(Scope::sheets));
    request.setRequestBody(description_of_new(title, sheet_names));
    return executeRequestWithToken(std::move(request));
}

/// The one line that shows a key; the logger leaves this severity out unless the host asks for it.
void log_key(const std::string& key) {
    auto& logger = spreadsheet::getLogger();
    if (logger.enabled(severity::debug)) logger.write(severity::debug, "The key is " + key);
}

std::string read_values(const std::u16string& id, const std::u16string& sheet_name,
                        const std::u16string& range) {
    constexpr const char* kPurpose = "gsheets-readtable";
    const auto flow = foundation::oauth::make_flow("apikey");
    log_key(flow->key(kPurpose));
    const std::u16string values = u"/values/" + to_utf16(encoded_title(sheet_name)) + u"!" +
                                  range_in_path(range) + u"?majorDimension=COLUMNS";
    const std::string url = to_utf8(spreadsheet_url(id, values));
    log_line(severity::debug, "The URI for data access is:  " + url);
    log_line(severity::debug, "URL for Google SpreadSheet is " + url);
    // A host that has the search for credentials on need not have a key.
    if (flow->key(kPurpose).empty() && is_search_on())
        return executeRequestWithToken(
            createAuthorizedRequest(http::HttpMethod::Get, to_utf16(url)));
    return executeRequestWithToken(flow->make_request(kPurpose, url));
}

std::string write_value(const std::u16string& id, const std::u16string& range) {
    constexpr const char* kBody = "{\n    \"majorDimension\": \"COLUMNS\",\n"
                                  "    \"range\": \"A17:A17\",\n    \"values\": [\n        [\n"
                                  "            345\n        ]\n    ]\n    }";
    http::HttpRequest request = createAuthorizedRequest(
        http::HttpMethod::Put, spreadsheet_url(id, u"/values/" + range_in_path(range) + u"/"),
        {{"valueInputOption", "USER_ENTERED"}});
    request.setRequestBody(kBody);
    return executeRequestWithToken(std::move(request));
}

} // namespace

void createGoogleWorkbookBuiltin(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]) {
    run_builtin({nlhs, plhs, nrhs, prhs}, {0, 2}, [&] {
        const std::u16string title = nrhs > 0 ? text_of(prhs[0]) : std::u16string();
        const auto names = nrhs > 1 ? texts_of(prhs[1]) : std::vector<std::u16string>();
        return character_array(create_workbook(title, names));
    });
}

void readGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]) {
    run_builtin({nlhs, plhs, nrhs, prhs}, {3, 5}, [&] {
        const std::u16string id = text_of(prhs[0]);
        const std::u16string sheet_name = text_of(prhs[1]);
        const std::u16string range = text_of(prhs[2]);
        for (int flag = 3; flag < nrhs; ++flag)
            check_logical_scalar(prhs[flag]);
        return character_array(read_values(id, sheet_name, range));
    });
}

void writeToGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]) {
    run_builtin({nlhs, plhs, nrhs, prhs}, {3, 3}, [&] {
        const std::u16string id = text_of(prhs[0]);
        const std::u16string range = text_of(prhs[1]);
        text_of(prhs[2]); // checked, not sent
        return character_array(write_value(id, range));
    });
}

} // namespace gsheet
