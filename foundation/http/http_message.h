// SPDX-License-Identifier: Apache-2.0
//
// Requests and replies of HTTP (RFC 9110) as values. Texts are UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace foundation::http {

/// The numbers are part of the interface: retry rules depend on GET being 0.
enum class HttpMethod : std::uint8_t { Get = 0, Post = 1, Delete = 2, Put = 3 };

/// "GET" and so on.
const char* to_string(HttpMethod method) noexcept;

/// A status of RFC 9110, section 15; 0 when no reply came.
using HttpResponseCode = int;

/// 500 to 599.
constexpr bool isServerError(HttpResponseCode status) {
    return status >= 500 && status <= 599;
}

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;
using QueryParameters = std::vector<std::pair<std::string, std::string>>;

/// A request that has not been sent yet. `url` may have a query already.
class HttpRequest {
  public:
    HttpRequest(HttpMethod method, std::string url, const HttpHeaders& headers = {});

    HttpMethod method() const noexcept { return method_; }
    const HttpHeaders& headers() const noexcept { return headers_; }
    const std::string& body() const noexcept { return body_; }

    /// Replaces a header of that name, compared without regard to case. An empty name, and line
    /// breaks or other control characters in name or value, throw std::invalid_argument.
    void setHeader(std::string_view name, std::string_view value);
    void setQueryParameters(QueryParameters parameters);
    void setRequestBody(std::string body);

    /// The URL with the query parameters appended, names and values percent-encoded (RFC 3986).
    std::string fullUrl() const;
    /// The same for messages: the value of the parameter "key" is replaced by "***".
    std::string printableUrl() const;

  private:
    HttpMethod method_;
    std::string url_;
    HttpHeaders headers_;
    QueryParameters parameters_;
    std::string body_;
};

struct HttpResponse {
    HttpResponseCode status = 0;
    std::string reason; ///< as the server wrote it; the usual phrase of the status for HTTP/2
    HttpHeaders headers;
    std::string body;
};

/// UTF-8 text with every byte but ASCII letters, digits and the characters of `kept` written as '%'
/// and two upper-case hexadecimal digits.
std::string percent_encode(std::string_view text, std::string_view kept = "-._~");

} // namespace foundation::http
