// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/retry_strategy.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <string>
#include <utility>

#include "foundation/log.h"
#include "spreadsheet/gsheet/utils/pause.h"
#include "spreadsheet/gsheet/utils/rate_window.h"
#include "spreadsheet/gsheet/utils/service_log.h"

namespace gsheet {

namespace {

using foundation::http::HttpMethod;
using foundation::http::HttpRequestTimeoutException;
using foundation::http::HttpResponseCode;
using foundation::http::isServerError;

/// Requests block their thread, so the strategy is asked on the thread that waits for the reply.
thread_local int last_attempts = 0;

constexpr HttpResponseCode kOk = 200;
constexpr HttpResponseCode kRequestTimeout = 408;
constexpr HttpResponseCode kTooManyRequests = 429;

bool is_time_out(const std::exception_ptr& pending) {
    if (!pending) return false;
    try {
        std::rethrow_exception(pending);
    } catch (const HttpRequestTimeoutException&) {
        log_line(foundation::log::error, "[REQUEST TIMED OUT]");
        return true;
    } catch (...) {
        return false; // the client throws it again once there is no further attempt
    }
}

PauseReason reason_of_pause(bool timed_out, HttpResponseCode status) {
    if (timed_out || status == kRequestTimeout) return PauseReason::time_out;
    return status == kTooManyRequests ? PauseReason::too_many_requests : PauseReason::server_error;
}

/// 0 to 999, each as likely: a draw is multiplied into the range and drawn again where that would
/// favour some of them.
std::uint32_t random_below_thousand() {
    constexpr std::uint64_t kRange = 1000;
    constexpr std::uint32_t kFirstFair = 296; // 2^32 modulo the range
    std::random_device device;
    std::mt19937 engine(device());
    for (;;) {
        const std::uint64_t product = std::uint64_t{engine()} * kRange;
        if (static_cast<std::uint32_t>(product) >= kFirstFair)
            return static_cast<std::uint32_t>(product >> 32);
    }
}

} // namespace

int attempts_of_last_request() {
    return last_attempts;
}

void forget_attempts() {
    last_attempts = 0;
}

RetryCondition getRetryConditionBasedOnHttpReturn() {
    return [](HttpMethod method, bool timed_out, HttpResponseCode status) {
        const bool is_worth_it = isServerError(status) || status == kTooManyRequests;
        if (method != HttpMethod::Get) return is_worth_it;
        return is_worth_it || timed_out || status == kRequestTimeout;
    };
}

ExponentialBackOffRateLimitingStrategy::ExponentialBackOffRateLimitingStrategy(
    std::uint64_t max_back_off_seconds, std::uint32_t max_consecutive_attempts,
    std::uint32_t max_server_error_attempts, RetryCondition condition, bool jitter)
    : max_back_off_ms_(max_back_off_seconds * 1000),
      max_consecutive_attempts_(max_consecutive_attempts),
      max_server_error_attempts_(max_server_error_attempts),
      condition_(std::move(condition)),
      jitter_(jitter) {}

bool ExponentialBackOffRateLimitingStrategy::operator()(
    const foundation::http::HttpRequest& request, const foundation::http::HttpResponse& response,
    const std::exception_ptr& pending, int attempts, int consecutiveAttempts) const {
    last_attempts = attempts;
    if (response.status == kOk) {
        requestRateWindow().record_success_and_pause();
    } else {
        log_line(foundation::log::error,
                 " attempts=" + std::to_string(attempts) +
                     " consecutiveAttempts=" + std::to_string(consecutiveAttempts));
        log_line(foundation::log::error, "[RESPONSE CODE]: " + std::to_string(response.status) +
                                             "  [RESPONSE CODE REASON]: " + response.reason);
    }
    const bool timed_out = is_time_out(pending);
    const bool again = condition_(request.method(), timed_out, response.status);
    if (again)
        take_pause({std::chrono::milliseconds(BackOffDuration(attempts)),
                    reason_of_pause(timed_out, response.status), response.status});
    const auto count = static_cast<std::uint32_t>(std::max(consecutiveAttempts, 0));
    const bool is_limited = request.method() != HttpMethod::Get && isServerError(response.status);
    if (count <= max_consecutive_attempts_ && (!is_limited || count <= max_server_error_attempts_))
        return again;
    log_line(foundation::log::error, "GSheet::BackOffDuration max retry attempts exhausted ");
    return false;
}

std::int64_t ExponentialBackOffRateLimitingStrategy::BackOffDuration(int attempt) const {
    constexpr int kFirstDelayed = 2;
    constexpr int kGreatestExponent = 40; // far beyond every maximum, and no overflow
    if (attempt < kFirstDelayed) return 0;
    std::uint64_t delay_ms = (std::uint64_t{1} << std::min(attempt, kGreatestExponent)) * 1000;
    if (jitter_) delay_ms += 1 + random_below_thousand();
    delay_ms = std::min(delay_ms, max_back_off_ms_);
    if (delay_ms == max_back_off_ms_)
        log_line(foundation::log::error, "GSheet::BackOffDuration First max Backoff exhausted ");
    log_line(foundation::log::error, "GSheet::BackOffDuration attempt " + std::to_string(attempt));
    log_line(foundation::log::error,
             "GSheet::BackOffDuration " + std::to_string(delay_ms) + "msec");
    return static_cast<std::int64_t>(delay_ms);
}

} // namespace gsheet
