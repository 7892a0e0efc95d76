// SPDX-License-Identifier: Apache-2.0
//
// When requests are sent again, how long that waits, and the pause of the rate window.
#include <stdexcept>

#include <gmock/gmock.h>

#include "spreadsheet/gsheet/utils/rate_window.h"
#include "spreadsheet/gsheet/utils/retry_strategy.h"
#include "tests/gsheet/scripted_service.h"

namespace gsheet::test {
namespace {

using namespace std::chrono_literals;
using http::HttpMethod;

ExponentialBackOffRateLimitingStrategy strategy(bool jitter = true) {
    return {60, 10, 3, getRetryConditionBasedOnHttpReturn(), jitter};
}

/// Attempts and answers of one request that ends alike every time.
struct Course {
    int attempts = 0; ///< until the strategy had enough
    std::vector<std::int64_t> sleeps;
};

Course course_of(HttpMethod method, const Outcome& outcome) {
    VirtualClock clock;
    http::HttpResponse response;
    std::exception_ptr pending;
    if (std::holds_alternative<std::exception_ptr>(outcome))
        pending = std::get<std::exception_ptr>(outcome);
    else
        response = std::get<http::HttpResponse>(outcome);
    const http::HttpRequest request(method, "http://h");
    const auto decide = strategy();
    Course course;
    while (course.attempts < 50) {
        ++course.attempts;
        if (!decide(request, response, pending, course.attempts, course.attempts)) break;
    }
    course.sleeps = clock.sleeps;
    return course;
}

TEST(BackOff, DoublesUpToAMinute) {
    const auto plain = strategy(false);
    const auto jittered = strategy();
    const std::int64_t expected[] = {0, 0, 4000, 8000, 16000, 32000, 60000, 60000};
    for (const int attempt : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 31, 32, 63, 64, 1'000'000}) {
        const std::int64_t base = expected[std::clamp(attempt, 0, 7)];
        EXPECT_EQ(plain.BackOffDuration(attempt), base) << attempt;
        for (int draw = 0; draw < 100; ++draw) {
            const std::int64_t delay = jittered.BackOffDuration(attempt);
            const bool is_exact = base == 0 || base == 60000;
            EXPECT_GE(delay, is_exact ? base : base + 1) << attempt;
            EXPECT_LE(delay, is_exact ? base : base + 1000) << attempt;
        }
    }
}

TEST(BackOff, IsDrawnAnewEachTime) {
    std::int64_t least = 5000, most = 4000;
    for (int draw = 0; draw < 500; ++draw) {
        const std::int64_t delay = strategy().BackOffDuration(2);
        least = std::min(least, delay);
        most = std::max(most, delay);
    }
    EXPECT_LT(least, 4150);
    EXPECT_GT(most, 4850);
}

TEST(BackOff, LogsWhatItWaits) {
    const Log log;
    strategy(false).BackOffDuration(1);
    strategy(false).BackOffDuration(3);
    strategy(false).BackOffDuration(6);
    EXPECT_THAT(log.lines(),
                testing::ElementsAre(
                    "GSheet::BackOffDuration attempt 3", "GSheet::BackOffDuration 8000msec",
                    "GSheet::BackOffDuration First max Backoff exhausted ",
                    "GSheet::BackOffDuration attempt 6", "GSheet::BackOffDuration 60000msec"));
}

TEST(Retries, EndAtTheLimitsOfMethodAndStatus) {
    const Outcome lost = failure(http::HttpRequestException("The connection broke."));
    const Outcome other = failure(std::runtime_error("anything"));
    const struct {
        const char* what;
        HttpMethod method;
        Outcome outcome;
        int attempts;
        std::vector<std::int64_t> sleeps; ///< whole seconds of each
    } cases[] = {
        {"a success", HttpMethod::Get, reply(200), 1, {}},
        {"GET, not found", HttpMethod::Get, reply(404), 1, {}},
        {"POST, time-out", HttpMethod::Post, time_out(), 1, {}},
        {"PUT, 408", HttpMethod::Put, reply(408), 1, {}},
        {"GET, connection lost", HttpMethod::Get, lost, 1, {}},
        {"GET, another exception", HttpMethod::Get, other, 1, {}},
        // The attempt that exhausts the limit still waits.
        {"POST, 503", HttpMethod::Post, reply(503), 4, {0, 4, 8, 16}},
        {"POST, 429", HttpMethod::Post, reply(429), 11, {0, 4, 8, 16, 32, 60, 60, 60, 60, 60, 60}},
        {"GET, 408", HttpMethod::Get, reply(408), 11, {0, 4, 8, 16, 32, 60, 60, 60, 60, 60, 60}},
        {"GET, 503", HttpMethod::Get, reply(503), 11, {0, 4, 8, 16, 32, 60, 60, 60, 60, 60, 60}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Course course = course_of(c.method, c.outcome);
        EXPECT_EQ(course.attempts, c.attempts);
        std::vector<std::int64_t> seconds;
        for (const std::int64_t sleep : course.sleeps)
            seconds.push_back((sleep - 1) / 1000); // the jitter is 1 to 1000 ms
        for (std::size_t i = 0; i < seconds.size(); ++i)
            if (course.sleeps[i] == 60000) seconds[i] = 60;
        EXPECT_EQ(seconds, c.sleeps);
    }
}

TEST(Retries, AreLogged) {
    VirtualClock clock;
    const Log log;
    const http::HttpRequest request(HttpMethod::Post, "http://h");
    const http::HttpResponse busy{503, "Busy", {}, ""};
    EXPECT_TRUE(strategy()(request, busy, nullptr, 1, 1));
    EXPECT_FALSE(strategy()(request, {}, std::get<std::exception_ptr>(time_out()), 1, 1));
    EXPECT_FALSE(strategy(false)(request, busy, nullptr, 2, 4));
    EXPECT_THAT(log.lines(),
                testing::ElementsAre(
                    " attempts=1 consecutiveAttempts=1",
                    "[RESPONSE CODE]: 503  [RESPONSE CODE REASON]: Busy",
                    " attempts=1 consecutiveAttempts=1",
                    "[RESPONSE CODE]: 0  [RESPONSE CODE REASON]: ", "[REQUEST TIMED OUT]",
                    " attempts=2 consecutiveAttempts=4",
                    "[RESPONSE CODE]: 503  [RESPONSE CODE REASON]: Busy",
                    "GSheet::BackOffDuration attempt 2", "GSheet::BackOffDuration 4000msec",
                    "GSheet::BackOffDuration max retry attempts exhausted "));
}

TEST(RateWindow, PausesAfterTheSixtiethSuccessOfAMinute) {
    VirtualClock clock;
    const Log log;
    const http::HttpRequest request(HttpMethod::Get, "http://h");
    const http::HttpResponse good{200, "OK", {}, ""};
    for (int i = 1; i <= 61; ++i) {
        EXPECT_FALSE(strategy()(request, good, nullptr, 1, 1));
        EXPECT_EQ(clock.sleeps.size(), i < 60 ? 0u : 1u) << i;
        clock.pass(500ms);
    }
    EXPECT_EQ(clock.sleeps, std::vector<std::int64_t>{60000});
    EXPECT_THAT(log.lines(), testing::ElementsAre("Too many request from single client, backoff "
                                                  "until 60 seconds from last request"));
}

TEST(RateWindow, ForgetsWhatIsAMinuteOldToTheMillisecond) {
    VirtualClock clock;
    const auto start = clock.now();
    RateWindow window;
    EXPECT_EQ(window.record_success(), 1u);
    clock.pass(10s);
    EXPECT_EQ(window.record_success(), 2u);
    EXPECT_EQ(window.purge(start + 60s - 1ns), 2u) << "ages count in whole milliseconds";
    EXPECT_EQ(window.purge(start + 60s), 1u);
    EXPECT_EQ(window.purge(start + 70s), 0u);
}

TEST(RateWindow, DoesNotPauseForSuccessesSpreadOverTime) {
    VirtualClock clock;
    RateWindow window;
    for (int i = 0; i < 500; ++i) {
        window.record_success_and_pause();
        clock.pass(1017ms); // 59 of them in a minute
    }
    EXPECT_TRUE(clock.sleeps.empty());
}

TEST(RateWindow, DoesNotCountFailures) {
    VirtualClock clock;
    const http::HttpRequest request(HttpMethod::Get, "http://h");
    for (int i = 0; i < 100; ++i)
        strategy()(request, {404, "Not Found", {}, ""}, nullptr, 1, 1);
    EXPECT_TRUE(clock.sleeps.empty());
    EXPECT_EQ(requestRateWindow().purge(clock.now()), 0u);
}

TEST(RateWindow, PausesAtTheEndOfTime) {
    VirtualClock clock;
    clock.set(foundation::Clock::TimePoint::max() - 1s);
    RateWindow window;
    for (int i = 0; i < 60; ++i)
        window.record_success_and_pause();
    EXPECT_EQ(clock.sleeps, std::vector<std::int64_t>{1000});
}

} // namespace
} // namespace gsheet::test
