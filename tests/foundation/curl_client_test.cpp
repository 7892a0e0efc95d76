// SPDX-License-Identifier: Apache-2.0
//
// The client over libcurl against servers on this machine that behave well and badly.
#include <algorithm>
#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/environment.h"
#include "foundation/http/http_client.h"
#include "tests/google_service.h"

namespace foundation::http {
namespace {

using namespace std::chrono_literals;
using test::from_script;

constexpr const char* kBook = "/v4/spreadsheets/sample-cell-types";

class CurlClientTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!service.is_there()) GTEST_SKIP() << "needs tests/with_google_service";
        service.reset();
        client->configure(configuration);
    }

    HttpRequest request(HttpMethod method, const std::string& path, std::string body = {}) {
        HttpRequest made(method, service.root() + path, {{"Authorization", "Bearer test-token"}});
        made.setRequestBody(std::move(body));
        return made;
    }
    HttpResponse get(const std::string& path = kBook) {
        return client->send(request(HttpMethod::Get, path));
    }
    /// What a request ends with instead of a reply; empty when there is one.
    std::string failure(HttpRequest made, bool* is_time_out = nullptr) {
        try {
            client->send(std::move(made));
        } catch (const HttpRequestException& error) {
            const auto* const time_out = dynamic_cast<const HttpRequestTimeoutException*>(&error);
            if (is_time_out != nullptr) *is_time_out = time_out != nullptr;
            return error.what();
        }
        return {};
    }
    std::set<std::int64_t> connections() {
        std::set<std::int64_t> numbers;
        for (const json::Value& entry : service.log())
            numbers.insert(entry.at("connection").to_number<std::int64_t>());
        return numbers;
    }

    test::GoogleService service;
    HttpClientConfiguration configuration = make_curl_client()->defaultConfiguration();
    std::shared_ptr<HttpClient> client = make_curl_client();
};

TEST_F(CurlClientTest, SendsManyRequestsOverOneConnection) {
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(get(i % 5 == 0 ? "/v4/spreadsheets/missing" : kBook).status,
                  i % 5 == 0 ? 404 : 200);
    EXPECT_EQ(client->send(request(HttpMethod::Post, "/nowhere", "{}")).status, 404);
    EXPECT_EQ(service.log().size(), 21u);
    EXPECT_EQ(connections().size(), 1u);
}

TEST_F(CurlClientTest, ServesSeveralThreads) {
    std::atomic<int> served{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int k = 0; k < 5; ++k)
                served += get().status == 200 ? 1 : 0;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(served, 20);
    EXPECT_LE(connections().size(), 4u);
}

TEST_F(CurlClientTest, UnpacksGzip) {
    const HttpResponse packed = get();
    service.control(HttpMethod::Post, "settings", {{"gzip", false}});
    const HttpResponse plain = get();
    const std::pair<std::string, std::string> encoding("Content-Encoding", "gzip");
    EXPECT_TRUE(std::count(packed.headers.begin(), packed.headers.end(), encoding));
    EXPECT_FALSE(std::count(plain.headers.begin(), plain.headers.end(), encoding));
    EXPECT_EQ(packed.body, plain.body);
    EXPECT_GT(plain.body.size(), 1000u);
}

TEST_F(CurlClientTest, SendsMethodsHeadersAndBodiesAsTheyAre) {
    const std::string large(2 << 20, 'x');
    const struct {
        HttpMethod method;
        std::string body;
    } cases[] = {{HttpMethod::Get, ""},          {HttpMethod::Post, ""},
                 {HttpMethod::Post, "{\n}\r\n"}, {HttpMethod::Post, large},
                 {HttpMethod::Put, "ä\t"},       {HttpMethod::Delete, ""}};
    for (const auto& c : cases) {
        HttpRequest made = request(c.method, "/nowhere/at%20all?a=%2F", c.body);
        made.setHeader("Content-Type", "application/x-test");
        const HttpResponse response = client->send(std::move(made));
        EXPECT_EQ(response.status, 404);
        EXPECT_EQ(response.reason, "Not Found");
    }
    const json::Array log = service.log();
    ASSERT_EQ(log.size(), std::size(cases));
    for (std::size_t i = 0; i < log.size(); ++i) {
        SCOPED_TRACE(i);
        const auto& headers = log[i].at("headers").as_object();
        EXPECT_EQ(log[i].at("method"), to_string(cases[i].method));
        EXPECT_EQ(log[i].at("target"), "/nowhere/at%20all?a=%2F");
        EXPECT_EQ(log[i].at("bodyBytes"), cases[i].body.size());
        EXPECT_EQ(log[i].at("body").as_string(), cases[i].body.substr(0, 1 << 20));
        EXPECT_EQ(headers.at("Content-Type"), "application/x-test");
        EXPECT_EQ(headers.at("Accept-Encoding"), "gzip");
        EXPECT_FALSE(headers.contains("Expect"));
    }
}

TEST_F(CurlClientTest, EndsRequestsThatTakeTooLong) {
    const struct {
        json::Object fault;
        std::chrono::milliseconds head, whole;
    } cases[] = {
        {{{"fault", "slow-first-byte"}, {"seconds", 60}}, 50ms, 60'000ms},
        {{{"fault", "slow-first-byte"}, {"seconds", 60}}, 0ms, 50ms},
        {{{"fault", "slow-trickle"}, {"seconds", 60}}, 60'000ms, 50ms},
    };
    for (const auto& c : cases) {
        service.order_fault(c.fault);
        configuration.responseTimeout = c.head;
        configuration.transferTimeout = c.whole;
        client->configure(configuration);
        bool is_time_out = false;
        const auto before = std::chrono::steady_clock::now();
        EXPECT_EQ(failure(request(HttpMethod::Get, kBook), &is_time_out),
                  "The server did not answer in time.");
        EXPECT_LT(std::chrono::steady_clock::now() - before, 5s);
        EXPECT_TRUE(is_time_out);
        configuration.transferTimeout = configuration.responseTimeout = 0ms;
        client->configure(configuration);
        EXPECT_EQ(get().status, 200) << "what failed leaves nothing behind";
        service.reset();
    }
}

TEST_F(CurlClientTest, RefusesRepliesThatAreCutOff) {
    const json::Object faults[] = {{{"fault", "cut-before-reply"}},
                                   {{"fault", "cut-in-body"}},
                                   {{"fault", "length-too-large"}},
                                   {{"fault", "taken-then-cut"}}};
    for (const json::Object& fault : faults) {
        SCOPED_TRACE(json::to_text(fault));
        service.reset();
        service.order_fault(fault);
        bool is_time_out = true;
        HttpRequest made = request(HttpMethod::Post, std::string(kBook) + ":batchUpdate", "{}");
        made.setQueryParameters({{"key", "marked-secret"}});
        const std::string text = failure(std::move(made), &is_time_out);
        EXPECT_NE(text, "");
        EXPECT_EQ(text.find("marked-secret"), std::string::npos);
        EXPECT_FALSE(is_time_out);
        EXPECT_EQ(get().status, 200);
    }
}

TEST_F(CurlClientTest, LosesAtMostOneReplyToALengthThatIsTooSmall) {
    service.order_fault({{"fault", "length-too-small"}, {"by", 10}});
    const std::string cut = get().body;
    failure(request(HttpMethod::Get, kBook)); // may find the rest of the first in its place
    const std::string whole = get().body;
    EXPECT_EQ(cut, whole.substr(0, whole.size() - 10));
    EXPECT_EQ(get().body, whole);
}

TEST_F(CurlClientTest, RepeatsOnABrokenConnectionWhatMayBeRepeated) {
    const struct {
        HttpMethod method;
        std::size_t arrived;
    } cases[] = {{HttpMethod::Get, 3}, {HttpMethod::Post, 2}};
    for (const auto& c : cases) {
        service.reset();
        EXPECT_EQ(get().status, 200); // now a connection is kept
        service.order_fault({{"fault", "taken-then-cut"}});
        const std::string text = failure(request(c.method, "/nowhere", ""));
        EXPECT_EQ(text.empty(), c.method == HttpMethod::Get) << text;
        EXPECT_EQ(service.log().size(), c.arrived);
    }
}

TEST_F(CurlClientTest, TakesRepliesUpToItsLimit) {
    service.order_fault({{"fault", "huge-reply"}, {"bytes", 8 << 20}, {"times", 0}});
    EXPECT_GT(get().body.size(), 8u << 20);
    configuration.maxReplyBytes = 4 << 20;
    client->configure(configuration);
    EXPECT_EQ(failure(request(HttpMethod::Get, kBook)),
              "The reply is larger than the limit allows.");
}

TEST_F(CurlClientTest, SaysWhatKeepsItFromConnecting) {
    const char* const addresses[] = {"http://127.0.0.1:1/?key=marked-secret",
                                     "http://host.invalid/?key=marked-secret", "file:///etc/passwd",
                                     "ftp://127.0.0.1/", "not an address"};
    for (const char* address : addresses) {
        bool is_time_out = true;
        const std::string text = failure(HttpRequest(HttpMethod::Get, address), &is_time_out);
        EXPECT_NE(text, "") << address;
        EXPECT_EQ(text.find("marked-secret"), std::string::npos);
        EXPECT_FALSE(is_time_out) << address;
    }
}

TEST_F(CurlClientTest, AsksTheStrategyAfterEveryAttempt) {
    service.order_fault({{"fault", "status"}, {"status", 503}, {"times", 2}});
    std::vector<std::string> seen;
    configuration.retryStrategy = [&](const HttpRequest& made, const HttpResponse& response,
                                      const std::exception_ptr& pending, int attempts,
                                      int consecutive) {
        seen.push_back(std::string(to_string(made.method())) + " " +
                       std::to_string(response.status) + (pending ? " pending " : " ") +
                       std::to_string(attempts) + " " + std::to_string(consecutive));
        return attempts < 3;
    };
    client->configure(configuration);
    EXPECT_EQ(get().status, 200);
    EXPECT_EQ(seen, (std::vector<std::string>{"GET 503 1 1", "GET 503 2 2", "GET 200 3 3"}));
    seen.clear();
    EXPECT_NE(failure(HttpRequest(HttpMethod::Delete, "http://127.0.0.1:1/")), "");
    EXPECT_EQ(seen, (std::vector<std::string>{"DELETE 0 pending 1 1", "DELETE 0 pending 2 2",
                                              "DELETE 0 pending 3 3"}));
}

TEST_F(CurlClientTest, GoesThroughTheProxyOfTheEnvironment) {
    const std::string& proxy = service.root();
    set_environment_variable("http_proxy", std::u16string(proxy.begin(), proxy.end()));
    // The last two only look like this machine.
    const std::string urls[] = {"http://service.invalid/v4/x", "http://127.0.0.1.invalid/v4/x",
                                "http://127.0.0.1@service.invalid/v4/x"};
    for (const std::string& url : urls)
        client->send(HttpRequest(HttpMethod::Get, url));
    set_environment_variable("http_proxy", u"");
    const auto log = service.log();
    ASSERT_EQ(log.size(), 3u);
    EXPECT_STREQ(log.at(0).at("target").as_string().c_str(), urls[0].c_str());
    EXPECT_STREQ(log.at(1).at("target").as_string().c_str(), urls[1].c_str());
}

class CurlClientTlsTest : public CurlClientTest {
  protected:
    void SetUp() override {
        CurlClientTest::SetUp();
        if (root.empty()) GTEST_SKIP() << "needs openssl";
        configuration.caFile = from_script("ZX_TLS_CA");
        client->configure(configuration);
    }

    HttpResponse fetch(const char* name) {
        return client->send(HttpRequest(HttpMethod::Get, root + name));
    }

    const std::string root = from_script("ZX_TLS_ROOT");
};

TEST_F(CurlClientTlsTest, RefusesCertificatesThatItDoesNotKnow) {
    configuration.caFile = from_script("ZX_OTHER_CA");
    client->configure(configuration);
    EXPECT_NE(failure(HttpRequest(HttpMethod::Get, root + "/plain")), "");
}

// Wine's own store takes any certificate, and no reply comes through its TLS to the end.
#ifndef _WIN32

TEST_F(CurlClientTlsTest, TrustsCertificatesThatItKnows) {
    EXPECT_EQ(fetch("/plain").body, "plain");
    configuration.caFile.clear();
    client->configure(configuration);
    EXPECT_NE(failure(HttpRequest(HttpMethod::Get, root + "/plain")), "");
}

TEST_F(CurlClientTlsTest, FollowsNoRedirect) {
    const HttpResponse response = fetch("/redirect");
    EXPECT_EQ(response.status, 302);
    EXPECT_EQ(response.body, "moved");
    EXPECT_TRUE(service.log().empty());
}

TEST_F(CurlClientTlsTest, TellsTheLastHeadOfSeveral) {
    const HttpResponse late = fetch("/early");
    EXPECT_EQ(late.status, 200);
    EXPECT_EQ(late.body, "late");
    EXPECT_EQ(late.headers, (HttpHeaders{{"Content-Type", "text/plain"}}));
    const HttpResponse bare = fetch("/phrase");
    EXPECT_EQ(bare.status, 299);
    EXPECT_EQ(bare.reason, "");
}

#endif

} // namespace
} // namespace foundation::http
