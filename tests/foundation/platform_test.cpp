// SPDX-License-Identifier: Apache-2.0
//
// Small services of the platform: clock, environment, feature switches, authentication flows.
#include <chrono>

#include <gtest/gtest.h>

#include "foundation/clock.h"
#include "foundation/environment.h"
#include "foundation/features.h"
#include "foundation/oauth.h"

namespace foundation {
namespace {

using namespace std::chrono_literals;
using TimePoint = Clock::TimePoint;

TEST(Clock, StopsAtTheLastTimePoint) {
    const TimePoint last = TimePoint::max();
    const struct {
        TimePoint from;
        std::chrono::milliseconds delay;
        TimePoint expected;
    } cases[] = {
        {TimePoint(5s), 0ms, TimePoint(5s)},
        {TimePoint(5s), 60000ms, TimePoint(65s)},
        {TimePoint(-5s), 1000ms, TimePoint(-4s)},
        {last, 1ms, last},
        {last - 1s, 1000ms, last},
        {last - 1s, 1001ms, last},
        {last - 2s, 1000ms, last - 1s},
        {TimePoint(), std::chrono::milliseconds::max(), last},
        {TimePoint::min(), std::chrono::milliseconds::max(), last},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Clock::later(c.from, c.delay).time_since_epoch().count(),
                  c.expected.time_since_epoch().count());
}

TEST(Clock, OfTheSystemDoesNotWaitForThePast) {
    const TimePoint before = clock().now();
    clock().sleep_until(before - 1h);
    EXPECT_LT(clock().now(), before + 1h);
}

TEST(Environment, KeepsTextsBeyondAscii) {
    const char* const name = "ZX_TEST_VARIABLE";
    EXPECT_EQ(environment_variable(name), u"");
    for (const std::u16string value : {u"plain", u"Größe – 表 \U0001F600", u"a=b;c"}) {
        set_environment_variable(name, value);
        EXPECT_EQ(environment_variable(name), value);
    }
    set_environment_variable(name, u"");
    EXPECT_EQ(environment_variable(name), u"");
    set_environment_variable(name, u""); // removes nothing a second time
}

TEST(Features, AreOffUnlessKnownOrTurnedOn) {
    EXPECT_TRUE(features::is_on("GOOGLESHEETS"));
    EXPECT_FALSE(features::is_on("googlesheets"));
    EXPECT_FALSE(features::is_on("OTHER"));
    features::set("OTHER", true);
    features::set("GOOGLESHEETS", false);
    EXPECT_TRUE(features::is_on("OTHER"));
    EXPECT_FALSE(features::is_on("GOOGLESHEETS"));
    features::set("OTHER", false);
    features::set("GOOGLESHEETS", true);
    EXPECT_FALSE(features::is_on("OTHER"));
}

TEST(AuthenticationFlow, TakesStoredKeysBeforeTheEnvironment) {
    for (const char* kind : {"", "APIKEY", "oauth2"})
        EXPECT_EQ(oauth::make_flow(kind), nullptr) << kind;
    set_environment_variable("ZX_API_KEY", u"key of the environment");
    set_environment_variable("ZX_ACCESS_TOKEN", u"token");
    const auto keys = oauth::make_flow("apikey");
    const auto tokens = oauth::make_flow("accesstoken");
    EXPECT_EQ(keys->key("reading"), "key of the environment");
    oauth::store_key("apikey", "reading", "stored");
    EXPECT_EQ(keys->key("reading"), "stored");
    EXPECT_EQ(keys->key("another purpose"), "key of the environment");
    EXPECT_EQ(oauth::stored_keys(), std::vector<std::string>{"stored"});

    EXPECT_EQ(keys->make_request("reading", "http://h/p?x=1").fullUrl(),
              "http://h/p?x=1&key=stored");
    const http::HttpRequest request = tokens->make_request("reading", "http://h/p");
    EXPECT_EQ(request.method(), http::HttpMethod::Get);
    EXPECT_EQ(request.fullUrl(), "http://h/p");
    EXPECT_EQ(request.headers().back(),
              (std::pair<std::string, std::string>("Authorization", "Bearer token")));
    oauth::store_key("apikey", "reading", "");
    EXPECT_TRUE(oauth::stored_keys().empty());
    EXPECT_EQ(keys->key("reading"), "key of the environment");
    set_environment_variable("ZX_API_KEY", u"");
    set_environment_variable("ZX_ACCESS_TOKEN", u"");
    EXPECT_EQ(keys->key("reading"), "");
}

} // namespace
} // namespace foundation
