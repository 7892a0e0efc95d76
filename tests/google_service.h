// SPDX-License-Identifier: Apache-2.0
//
// The emulator of the service that tests/with_google_service starts: its root, its faults, its log.
#pragma once

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "foundation/http/http_client.h"
#include "foundation/json.h"

namespace foundation::test {

/// A variable that the script sets, empty when a test runs without it.
inline std::string from_script(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// Speaks to the emulator through a client of its own.
class GoogleService {
  public:
    GoogleService() : root_(from_script("ZX_EMULATOR_ROOT")) {}

    /// False without the script.
    bool is_there() const { return !root_.empty(); }
    const std::string& root() const { return root_; }

    json::Value control(http::HttpMethod method, const std::string& instruction,
                        const json::Value& body = json::Object()) const {
        http::HttpRequest request(method, root_ + "/__emulator/" + instruction,
                                  {{"Content-Type", "application/json"}});
        request.setRequestBody(json::to_text(body));
        const http::HttpResponse response = client_->send(std::move(request));
        if (response.status != 200) throw std::runtime_error(response.body);
        return json::parse(response.body);
    }
    /// Everything as at the start, with the files of a named state.
    void reset(const char* state = "samples") const {
        control(http::HttpMethod::Post, "reset", {{"state", state}});
    }
    void order_fault(const json::Object& order) const {
        control(http::HttpMethod::Post, "faults", order);
    }
    /// The requests since the last reset.
    json::Array log() const { return std::move(control(http::HttpMethod::Get, "log").as_array()); }

  private:
    std::string root_;
    std::shared_ptr<http::HttpClient> client_ = http::make_curl_client();
};

} // namespace foundation::test
