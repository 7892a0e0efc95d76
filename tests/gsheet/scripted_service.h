// SPDX-License-Identifier: Apache-2.0
//
// The service as a script: a client that answers from a list, a clock that does not wait, the
// library's log, credentials for a while.
#pragma once

#include <chrono>
#include <deque>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/clock.h"
#include "foundation/environment.h"
#include "foundation/http/http_client.h"
#include "foundation/log.h"
#include "foundation/services.h"
#include "foundation/unicode.h"
#include "spreadsheet/book_factory.h"

namespace gsheet::test {

namespace http = foundation::http;

/// What an attempt ends with: a reply, or an exception.
using Outcome = std::variant<http::HttpResponse, std::exception_ptr>;

inline Outcome reply(int status, std::string body = {}, std::string reason = "Reason") {
    return http::HttpResponse{status, std::move(reason), {}, std::move(body)};
}
template <class Error>
Outcome failure(const Error& error) {
    return std::make_exception_ptr(error);
}
inline Outcome time_out() {
    return failure(http::HttpRequestTimeoutException("The server did not answer in time."));
}

/// Answers attempt after attempt from its script and asks the retry strategy as any client does.
class ScriptedClient : public http::HttpClient {
  public:
    http::HttpClientConfiguration defaultConfiguration() const override {
        http::HttpClientConfiguration rules;
        rules.setIdleSpeed(1);
        return rules;
    }
    void configure(http::HttpClientConfiguration rules) override {
        configuration = std::move(rules);
        ++times_configured;
    }
    http::HttpResponse send(http::HttpRequest&& request) override {
        requests.push_back(request);
        for (int attempt = 1;; ++attempt) {
            if (script.empty()) throw std::logic_error("the script has no further reply");
            const Outcome outcome = std::move(script.front());
            script.pop_front();
            http::HttpResponse response;
            std::exception_ptr pending;
            if (std::holds_alternative<std::exception_ptr>(outcome))
                pending = std::get<std::exception_ptr>(outcome);
            else
                response = std::get<http::HttpResponse>(outcome);
            if (retries &&
                configuration.retryStrategy(request, response, pending, attempt, attempt))
                continue;
            if (pending) std::rethrow_exception(pending);
            return response;
        }
    }

    http::HttpClientConfiguration configuration;
    int times_configured = 0;
    bool retries = true; ///< false: every outcome is the last
    std::deque<Outcome> script;
    std::vector<http::HttpRequest> requests;
};

/// The registered one; it stays registered, since the library keeps the first client that it found.
inline ScriptedClient& scripted_client() {
    static const auto client = [] {
        auto made = std::make_shared<ScriptedClient>();
        foundation::services::bundle_context().RegisterService<http::HttpClient>(made);
        return made;
    }();
    return *client;
}

/// Stands for the system's clock while it lives; sleeping takes no time.
class VirtualClock : public foundation::Clock {
  public:
    VirtualClock() { foundation::replace_clock(this); }
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;
    ~VirtualClock() override { foundation::replace_clock(nullptr); }

    TimePoint now() const override { return now_; }
    void sleep_until(TimePoint time) override {
        sleeps.push_back(milliseconds(time - now_));
        now_ = std::max(now_, time);
    }
    void pass(std::chrono::nanoseconds time) { now_ += time; }
    void set(TimePoint time) { now_ = time; }

    std::vector<std::int64_t> sleeps; ///< in milliseconds

  private:
    static std::int64_t milliseconds(std::chrono::nanoseconds time) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
    }
    // Every test has an hour of its own, so that none counts the successes of another.
    static TimePoint next_hour() {
        static int hour = 0;
        return TimePoint(std::chrono::hours(++hour));
    }
    TimePoint now_ = next_hour();
};

/// All records that the library logs while it lives.
class Log {
  public:
    Log() { spreadsheet::getLogger().add_sink(sink_); }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;
    ~Log() { spreadsheet::getLogger().remove_sink(sink_); }

    std::vector<std::string> lines() const {
        std::vector<std::string> texts;
        for (const auto& record : sink_->records())
            texts.push_back(record.text);
        return texts;
    }

  private:
    std::shared_ptr<foundation::log::CollectingSink> sink_ =
        std::make_shared<foundation::log::CollectingSink>();
};

/// Credentials of the environment while it lives.
class Credentials {
  public:
    Credentials(const char* token, const char* key) { set(token, key); }
    Credentials(const Credentials&) = delete;
    Credentials& operator=(const Credentials&) = delete;
    ~Credentials() { set("", ""); }

  private:
    static void set(const char* token, const char* key) {
        foundation::set_environment_variable("ZX_ACCESS_TOKEN",
                                             foundation::unicode::to_utf16(token));
        foundation::set_environment_variable("ZX_API_KEY", foundation::unicode::to_utf16(key));
    }
};

/// A test with an empty script, a virtual clock and a token.
class ScriptedServiceTest : public testing::Test {
  protected:
    ScriptedServiceTest() {
        client.script.clear();
        client.requests.clear();
        client.retries = true;
    }

    ScriptedClient& client = scripted_client();
    VirtualClock clock;
    Credentials credentials{"token", ""};
    Log log;
};

} // namespace gsheet::test
