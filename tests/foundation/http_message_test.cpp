// SPDX-License-Identifier: Apache-2.0
//
// Requests as they go out: encoded URLs, headers that cannot be smuggled in, secrets that are not
// printed.
#include <stdexcept>

#include <gtest/gtest.h>

#include "foundation/http/http_message.h"
#include "foundation/http/reason_phrase.h"

namespace foundation::http {
namespace {

TEST(PercentEncode, KeepsUnreservedCharactersOnly) {
    const struct {
        const char* text;
        const char* encoded;
    } cases[] = {
        {"", ""},
        {"AZaz09-._~", "AZaz09-._~"},
        {"a b+c", "a%20b%2Bc"},
        {"!*'();:@&=$,/?#[]", "%21%2A%27%28%29%3B%3A%40%26%3D%24%2C%2F%3F%23%5B%5D"},
        {"100%", "100%25"},
        {"\x01\x1F\x7F", "%01%1F%7F"},
        {"ä€\U0001F335", "%C3%A4%E2%82%AC%F0%9F%8C%B5"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(percent_encode(c.text), c.encoded);
    EXPECT_EQ(percent_encode(std::string("a\0b", 3)), "a%00b");
    EXPECT_EQ(percent_encode("'a b'!", "'!"), "'a%20b'!");
}

TEST(HttpRequest, AppendsParametersToItsUrl) {
    const struct {
        const char* url;
        QueryParameters parameters;
        const char* full;
        const char* printable;
    } cases[] = {
        {"http://h/p", {}, "http://h/p", "http://h/p"},
        {"http://h/p", {{"key", ""}}, "http://h/p?key=", "http://h/p?key=***"},
        {"http://h/p",
         {{"a", "1"}, {"key", "s+e"}},
         "http://h/p?a=1&key=s%2Be",
         "http://h/p?a=1&key=***"},
        {"http://h/p?x=y",
         {{"a b", "ü&="}},
         "http://h/p?x=y&a%20b=%C3%BC%26%3D",
         "http://h/p?x=y&a%20b=%C3%BC%26%3D"},
        {"http://h/p?key=s&monkey=1",
         {{"b", "key=2"}},
         "http://h/p?key=s&monkey=1&b=key%3D2",
         "http://h/p?key=***&monkey=1&b=key%3D2"},
        {"http://h/key=1", {}, "http://h/key=1", "http://h/key=1"},
    };
    for (const auto& c : cases) {
        HttpRequest request(HttpMethod::Get, c.url);
        request.setQueryParameters(c.parameters);
        EXPECT_EQ(request.fullUrl(), c.full);
        EXPECT_EQ(request.printableUrl(), c.printable);
    }
}

TEST(HttpRequest, ReplacesHeadersIgnoringCase) {
    HttpRequest request(HttpMethod::Post, "http://h", {{"Accept", "a"}, {"X", "1"}});
    request.setHeader("ACCEPT", "b");
    request.setHeader("Y", "");
    EXPECT_EQ(request.headers(), (HttpHeaders{{"Accept", "b"}, {"X", "1"}, {"Y", ""}}));
}

TEST(HttpRequest, RefusesControlCharactersInHeadersWithoutShowingThem) {
    HttpRequest request(HttpMethod::Get, "http://h");
    const std::pair<const char*, const char*> cases[] = {
        {"Authorization", "Bearer secret\r\nX-Other: 1"},
        {"Authorization", "Bearer secret\n"},
        {"Authorization", "Bearer secret\x7F"},
        {"Authorization", "\tsecret"},
        {"X\nsecret", "1"},
        {"", "secret"}};
    for (const auto& [name, value] : cases) {
        try {
            request.setHeader(name, value);
            ADD_FAILURE() << name << ": " << value;
        } catch (const std::invalid_argument& refusal) {
            EXPECT_EQ(std::string(refusal.what()).find("secret"), std::string::npos);
        }
    }
    EXPECT_TRUE(request.headers().empty());
    EXPECT_THROW(HttpRequest(HttpMethod::Get, "http://h", {{"A", "b\r"}}), std::invalid_argument);
}

TEST(HttpMethod, HasTheNumbersThatRetriesRelyOn) {
    const std::pair<HttpMethod, const char*> cases[] = {{HttpMethod(0), "GET"},
                                                        {HttpMethod(1), "POST"},
                                                        {HttpMethod(2), "DELETE"},
                                                        {HttpMethod(3), "PUT"}};
    for (const auto& [method, name] : cases)
        EXPECT_STREQ(to_string(method), name);
}

TEST(ResponseCode, TellsServerErrorsAndPhrases) {
    for (const int status : {0, 200, 404, 429, 499, 600})
        EXPECT_FALSE(isServerError(status)) << status;
    for (const int status : {500, 503, 599})
        EXPECT_TRUE(isServerError(status)) << status;
    EXPECT_STREQ(usual_reason(404), "Not Found");
    EXPECT_STREQ(usual_reason(299), "");
}

} // namespace
} // namespace foundation::http
