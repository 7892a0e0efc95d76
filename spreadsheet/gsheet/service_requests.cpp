// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/service_requests.h"

#include <utility>

#include "foundation/unicode.h"

namespace gsheet {

namespace {

using foundation::http::HttpMethod;
using foundation::unicode::to_utf16;
using foundation::unicode::to_utf8;

} // namespace

foundation::http::HttpRequest spreadsheet_get(const std::u16string& id,
                                              QueryParameters parameters) {
    return createAuthorizedRequest(HttpMethod::Get, spreadsheet_url(id), std::move(parameters));
}

Object get_spreadsheet(const std::u16string& id, QueryParameters parameters) {
    return executeRequestAndParseJsonResponse(spreadsheet_get(id, std::move(parameters)));
}

Object post_to_spreadsheet(const std::u16string& id, const std::u16string& suffix,
                           std::string body) {
    auto request = createAuthorizedRequest(HttpMethod::Post, spreadsheet_url(id, suffix));
    request.setRequestBody(std::move(body));
    return executeRequestAndParseJsonResponse(std::move(request));
}

Object batch_update(const std::u16string& id, Array requests) {
    Object body;
    body["requests"] = std::move(requests);
    return post_to_spreadsheet(id, u":batchUpdate", foundation::json::to_text(std::move(body)));
}

Object batch_update(const std::u16string& id, std::string_view name, Object request) {
    Object named;
    named[name] = std::move(request);
    Array requests;
    requests.emplace_back(std::move(named));
    return batch_update(id, std::move(requests));
}

std::u16string batch_update_url(const std::u16string& id) {
    return spreadsheet_url(id, u":batchUpdate");
}

const Object* first_reply(const Object& reply, std::string_view name) {
    const Object* const first = first_object_in(reply, "replies");
    return first != nullptr ? object_in(*first, name) : nullptr;
}

std::u16string qualified_range(const std::u16string& title, const spreadsheet::Range& range) {
    return quoted_title(title) + u"!" + spreadsheet::range_string(range);
}

std::u16string encoded_range(const std::u16string& title, const spreadsheet::Range& range) {
    return to_utf16(encoded_title(title)) + u"!" +
           to_utf16(foundation::http::percent_encode(to_utf8(spreadsheet::range_string(range))));
}

} // namespace gsheet
