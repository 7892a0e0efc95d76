// SPDX-License-Identifier: Apache-2.0
//
// Decides after each attempt of a request to the service whether it is sent again, and sleeps
// before it says yes: waits double from attempt to attempt. Successes are counted in the rate
// window, which may pause the process.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>

#include "foundation/http/http_client.h"

namespace gsheet {

/// Whether a reply (or a time-out) is worth another attempt.
using RetryCondition = std::function<bool(foundation::http::HttpMethod method, bool timed_out,
                                          foundation::http::HttpResponseCode status)>;

/// GET: server errors, 408, 429 and time-outs. Other methods: server errors and 429 only, since a
/// request that timed out may have taken effect.
RetryCondition getRetryConditionBasedOnHttpReturn();

class ExponentialBackOffRateLimitingStrategy {
  public:
    /// `max_server_error_attempts` limits requests other than GET that met a server error. `jitter`
    /// adds 1 to 1000 ms to every wait.
    ExponentialBackOffRateLimitingStrategy(std::uint64_t max_back_off_seconds,
                                           std::uint32_t max_consecutive_attempts,
                                           std::uint32_t max_server_error_attempts,
                                           RetryCondition condition, bool jitter);

    /// A `foundation::http::RetryStrategy`. Sleeps before the limits are looked at, so the attempt
    /// that exhausts them still waits.
    bool operator()(const foundation::http::HttpRequest& request,
                    const foundation::http::HttpResponse& response,
                    const std::exception_ptr& pending, int attempts, int consecutiveAttempts) const;

    /// Milliseconds to wait before the attempt that follows `attempt`: none up to 1, then
    /// 2^attempt seconds and the jitter, at most the maximum.
    std::int64_t BackOffDuration(int attempt) const;

  private:
    std::uint64_t max_back_off_ms_;
    std::uint32_t max_consecutive_attempts_;
    std::uint32_t max_server_error_attempts_;
    RetryCondition condition_;
    bool jitter_;
};

/// How often the request that this thread sent last was attempted, as far as a strategy was asked.
int attempts_of_last_request();
/// Before a request of this thread.
void forget_attempts();

} // namespace gsheet
