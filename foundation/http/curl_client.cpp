// SPDX-License-Identifier: Apache-2.0
//
// The client over libcurl: sends until the retry strategy has had enough.
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <curl/curl.h>

#include "foundation/http/curl_transfer.h"
#include "foundation/http/http_client.h"

namespace foundation::http {

namespace {

void start_curl() {
    static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (started != CURLE_OK)
        throw HttpRequestException(std::string("libcurl cannot be started: ") +
                                   curl_easy_strerror(started) + ".");
}

class CurlClient final : public HttpClient {
  public:
    HttpClientConfiguration defaultConfiguration() const override { return {}; }

    void configure(HttpClientConfiguration configuration) override {
        auto replacement =
            std::make_shared<const HttpClientConfiguration>(std::move(configuration));
        const std::scoped_lock lock(mutex_);
        configuration_ = std::move(replacement);
    }

    HttpResponse send(HttpRequest&& request) override {
        start_curl();
        const auto configuration = current();
        for (int attempt = 1;; ++attempt) {
            HttpResponse response;
            std::exception_ptr pending;
            try {
                response = send_once(request, *configuration);
            } catch (const HttpRequestException&) {
                pending = std::current_exception();
            }
            // Within one request every attempt but the last has failed, so both counts are equal.
            const bool again =
                configuration->retryStrategy &&
                configuration->retryStrategy(request, response, pending, attempt, attempt);
            if (again) continue;
            if (pending) std::rethrow_exception(pending);
            return response;
        }
    }

  private:
    std::shared_ptr<const HttpClientConfiguration> current() const {
        const std::scoped_lock lock(mutex_);
        return configuration_;
    }

    HttpResponse send_once(const HttpRequest& request,
                           const HttpClientConfiguration& configuration) {
        CurlHandle handle = handles_.take();
        HttpResponse response = exchange(handle.get(), request, configuration);
        handles_.give_back(std::move(handle)); // one that failed is closed with its connection
        return response;
    }

    mutable std::mutex mutex_;
    std::shared_ptr<const HttpClientConfiguration> configuration_ =
        std::make_shared<const HttpClientConfiguration>();
    CurlHandles handles_;
};

} // namespace

std::shared_ptr<HttpClient> make_curl_client() {
    return std::make_shared<CurlClient>();
}

} // namespace foundation::http
