// SPDX-License-Identifier: Apache-2.0
//
// One exchange of a request and its reply over a libcurl handle, and the handles that keep
// connections between exchanges.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include <curl/curl.h>

#include "foundation/http/http_client.h"

namespace foundation::http {

struct CurlDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using CurlHandle = std::unique_ptr<CURL, CurlDeleter>;

/// Handles that are not in use, with the connections that they have open. Thread-safe.
class CurlHandles {
  public:
    /// An idle handle, or a new one. Throws std::bad_alloc.
    CurlHandle take();
    void give_back(CurlHandle handle);

  private:
    std::mutex mutex_;
    std::vector<CurlHandle> idle_;
};

/// Sends `request` once. Throws `HttpRequestException` when no whole reply comes.
HttpResponse exchange(CURL* handle, const HttpRequest& request,
                      const HttpClientConfiguration& configuration);

} // namespace foundation::http
