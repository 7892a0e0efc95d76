// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/shared_client.h"

#include <chrono>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "foundation/never_destroyed.h"
#include "foundation/services.h"
#include "spreadsheet/gsheet/utils/retry_strategy.h"

namespace gsheet {

namespace {

namespace http = foundation::http;
namespace services = foundation::services;

struct Shared {
    std::mutex mutex;
    std::shared_ptr<http::HttpClient> client;
    services::ServiceRegistration<http::HttpClient> own_registration;
};

Shared& shared() {
    static foundation::NeverDestroyed<Shared> instance;
    return instance.get();
}

http::HttpClientConfiguration with_rules_of_the_service(http::HttpClientConfiguration rules) {
    constexpr std::chrono::milliseconds kTimeout{180'000};
    rules.retryStrategy = ExponentialBackOffRateLimitingStrategy(
        60, 10, 3, getRetryConditionBasedOnHttpReturn(), true);
    rules.connectTimeout = kTimeout;
    rules.responseTimeout = kTimeout;
    rules.transferTimeout = kTimeout;
    rules.setIdleSpeed(0);
    return rules;
}

} // namespace

std::shared_ptr<http::HttpClient> sharedHttpClient() {
    Shared& held = shared();
    const std::scoped_lock lock(held.mutex);
    if (held.client != nullptr) return held.client;
    const auto found = services::find_service<http::HttpClient>(services::bundle_context());
    if (found != nullptr)
        found->configure(with_rules_of_the_service(found->defaultConfiguration()));
    return held.client = found;
}

void start_service() {
    Shared& held = shared();
    const std::scoped_lock lock(held.mutex);
    auto context = services::bundle_context();
    if (services::find_service<http::HttpClient>(context) == nullptr)
        held.own_registration = context.RegisterService<http::HttpClient>(http::make_curl_client());
}

void stop_service() {
    Shared& held = shared();
    std::shared_ptr<http::HttpClient> last; // its connections are closed behind the lock
    const std::scoped_lock lock(held.mutex);
    last = std::exchange(held.client, nullptr);
    if (!held.own_registration) return;
    try {
        std::exchange(held.own_registration, {}).Unregister();
    } catch (const std::logic_error&) {
        // The host's framework has stopped before, which ended the registration.
    }
}

} // namespace gsheet
