// SPDX-License-Identifier: Apache-2.0
//
// The HTTP client that the library sends its requests through. Clients are found through the
// service registry (foundation/services.h); one client may be used by several threads, each request
// blocks its caller.
#pragma once

#include <chrono>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "foundation/http/http_message.h"

namespace foundation::http {

/// Asked after every attempt, successful ones included: whether to send the request again. It may
/// sleep before it answers. `pending` is what the attempt ended with instead of a reply, null when
/// there is one. `attempts` counts the attempts of this request, `consecutiveAttempts` those since
/// the last success; both are 1 after the first.
using RetryStrategy =
    std::function<bool(const HttpRequest& request, const HttpResponse& response,
                       const std::exception_ptr& pending, int attempts, int consecutiveAttempts)>;

class HttpClientConfiguration {
  public:
    RetryStrategy retryStrategy; ///< none: every request is sent once
    /// Time-outs; 0 for none.
    std::chrono::milliseconds connectTimeout{30'000};
    std::chrono::milliseconds responseTimeout{60'000};  ///< from the request to the reply's head
    std::chrono::milliseconds transferTimeout{300'000}; ///< of the whole exchange
    /// Certificates to trust instead of the system's: the path of a PEM file, UTF-8; empty for the
    /// system's.
    std::string caFile;
    /// A longer body is refused while it comes in, uncompressed bytes counted.
    std::size_t maxReplyBytes = std::size_t{2} << 30;

    /// Bytes a second below which a transfer counts as stalled; 0 for no minimum.
    void setIdleSpeed(long bytes_per_second) { idleSpeed_ = bytes_per_second; }
    long idleSpeed() const noexcept { return idleSpeed_; }

  private:
    long idleSpeed_ = 0;
};

/// A request that failed before a whole reply was there; `what()` is one sentence that holds
/// neither the query nor headers.
class HttpRequestException : public std::runtime_error {
  public:
    explicit HttpRequestException(const std::string& what) : std::runtime_error(what) {}
    ~HttpRequestException() override;
};

/// A time-out of the configuration passed.
class HttpRequestTimeoutException : public HttpRequestException {
  public:
    explicit HttpRequestTimeoutException(const std::string& what) : HttpRequestException(what) {}
    ~HttpRequestTimeoutException() override;
};

class HttpClient {
  public:
    virtual ~HttpClient();

    virtual HttpClientConfiguration defaultConfiguration() const = 0;
    /// For every request sent from now on.
    virtual void configure(HttpClientConfiguration configuration) = 0;

    /// Sends the request, again for as long as the retry strategy wants, and returns the last
    /// reply, whatever its status. Throws `HttpRequestException` when the last attempt got none.
    virtual HttpResponse send(HttpRequest&& request) = 0;
};

/// A client over libcurl: connections are kept, gzip is accepted, HTTP/1.1 and 2, certificates are
/// verified, proxies come from the environment, redirects are not followed (a credential must not
/// travel to another host). Takes nothing of the system before its first request. A POST is never
/// sent twice in one attempt, even when a kept connection breaks under it.
std::shared_ptr<HttpClient> make_curl_client();

} // namespace foundation::http
