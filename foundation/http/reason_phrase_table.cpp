// SPDX-License-Identifier: Apache-2.0
#include "foundation/http/reason_phrase.h"

namespace foundation::http {

namespace {

constexpr struct {
    HttpResponseCode status;
    const char* reason;
} kReasons[] = {
    {200, "OK"},
    {201, "Created"},
    {202, "Accepted"},
    {204, "No Content"},
    {301, "Moved Permanently"},
    {302, "Found"},
    {303, "See Other"},
    {304, "Not Modified"},
    {307, "Temporary Redirect"},
    {308, "Permanent Redirect"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {408, "Request Timeout"},
    {409, "Conflict"},
    {410, "Gone"},
    {411, "Length Required"},
    {412, "Precondition Failed"},
    {413, "Content Too Large"},
    {415, "Unsupported Media Type"},
    {429, "Too Many Requests"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
};

} // namespace

const char* usual_reason(HttpResponseCode status) {
    for (const auto& known : kReasons)
        if (known.status == status) return known.reason;
    return "";
}

} // namespace foundation::http
