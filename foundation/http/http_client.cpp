// SPDX-License-Identifier: Apache-2.0
#include "foundation/http/http_client.h"

namespace foundation::http {

// Out of line, so that the library alone holds their tables.
HttpRequestException::~HttpRequestException() = default;
HttpRequestTimeoutException::~HttpRequestTimeoutException() = default;
HttpClient::~HttpClient() = default;

} // namespace foundation::http
