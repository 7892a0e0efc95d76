// SPDX-License-Identifier: Apache-2.0
//
// From a URL to a reply or an error: credentials, requests, failed replies, bodies that are no
// JSON.
#include <gmock/gmock.h>

#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/host_errors.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"
#include "tests/gsheet/scripted_service.h"

namespace gsheet::test {
namespace {

using http::HttpMethod;
using spreadsheet::error_id;
using spreadsheet::Exception;
using testing::ElementsAre;

constexpr const char* kLastSheet = "You can't remove all the sheets in a document.";
using UtilGsheetTest = ScriptedServiceTest;

TEST(GetCredential, KnowsTwoKinds) {
    const Credentials credentials("tökén", "key");
    EXPECT_EQ(getCredential("accesstoken"), u"tökén");
    EXPECT_EQ(getCredential("apikey"), u"key");
    EXPECT_EQ(getCredential("AccessToken"), u"");
    EXPECT_EQ(getCredential(""), u"");
}

TEST(CreateAuthorizedRequest, SendsTheTokenOrTheKey) {
    const struct {
        const char *token, *key;
        const char* authorization; ///< null for none
        const char* url;
    } cases[] = {
        {"T", "K", "Bearer T", "http://h/x?a=b"},
        {"T", "", "Bearer T", "http://h/x?a=b"},
        {"", "K&", nullptr, "http://h/x?a=b&key=K%26"},
        {"", "", nullptr, "http://h/x?a=b&key="},
    };
    for (const auto& c : cases) {
        const Credentials credentials(c.token, c.key);
        const auto request = createAuthorizedRequest(HttpMethod::Put, u"http://h/x", {{"a", "b"}});
        http::HttpHeaders expected = {{"Accept", "application/json"},
                                      {"Content-Type", "application/json"}};
        if (c.authorization != nullptr) expected.emplace_back("Authorization", c.authorization);
        EXPECT_EQ(request.headers(), expected);
        EXPECT_EQ(request.fullUrl(), c.url);
        EXPECT_EQ(request.method(), HttpMethod::Put);
        EXPECT_EQ(request.body(), "");
    }
}

TEST(CreateAuthorizedRequest, LogsTheUrlWithoutTheKey) {
    const Credentials credentials("", "K y");
    const Log log;
    createAuthorizedRequest(HttpMethod::Get, u"http://h/ä", {{"a", "b"}});
    EXPECT_THAT(log.lines(),
                ElementsAre("URL for Google SpreadSheet is: http://h/ä",
                            "Request URL for Google SpreadSheet is: http://h/ä?a=b&key=***"));
}

TEST(CreateAuthorizedRequest, RefusesATokenThatBreaksTheHeader) {
    const Credentials credentials("secret\r\nX-Other: 1", "");
    try {
        createAuthorizedRequest(HttpMethod::Get, u"http://h/");
        ADD_FAILURE();
    } catch (const Exception& refusal) {
        EXPECT_EQ(refusal.id(), error_id::google_identity_required);
        EXPECT_EQ(std::string(refusal.what()).find("secret"), std::string::npos);
    }
}

TEST_F(UtilGsheetTest, ConfiguresTheClientOnce) {
    client.script = {reply(200, "a"), reply(200, "b")};
    executeRequestWithToken({HttpMethod::Get, "http://h"});
    const int configured = client.times_configured;
    executeRequestWithToken({HttpMethod::Get, "http://h"});
    EXPECT_GE(configured, 1);
    EXPECT_EQ(client.times_configured, configured);
    EXPECT_EQ(client.configuration.connectTimeout.count(), 180000);
    EXPECT_EQ(client.configuration.responseTimeout.count(), 180000);
    EXPECT_EQ(client.configuration.transferTimeout.count(), 180000);
    EXPECT_EQ(client.configuration.idleSpeed(), 0);
}

TEST_F(UtilGsheetTest, ReturnsTheBodyOfASuccess) {
    client.script = {reply(200, "a\nb", "OK")};
    EXPECT_EQ(executeRequestWithToken({HttpMethod::Get, "http://h"}), "a\nb");
    EXPECT_THAT(log.lines(), ElementsAre("[RESPONSE CODE]: 200  [RESPONSE CODE REASON]: OK"));
}

TEST_F(UtilGsheetTest, LetsTheClientsExceptionsPass) {
    client.script = {time_out(), failure(http::HttpRequestException("lost")),
                     failure(std::string("odd"))};
    const http::HttpRequest post(HttpMethod::Post, "http://h");
    EXPECT_THROW(executeRequestWithToken(http::HttpRequest(post)),
                 http::HttpRequestTimeoutException);
    EXPECT_THROW(executeRequestWithToken(http::HttpRequest(post)), http::HttpRequestException);
    EXPECT_THROW(executeRequestWithToken(http::HttpRequest(post)), std::string);
    EXPECT_THAT(
        log.lines(),
        testing::IsSupersetOf({"Exception caught: The server did not answer in time.",
                               "Exception caught: lost", "Exception caught: of an unknown type"}));
}

TEST_F(UtilGsheetTest, TurnsFailedRepliesIntoErrors) {
    const std::string spaced = R"({"error": {"message": "the text"}})";
    const std::string tight = R"({"error":{"message":"the text"}})";
    const std::string wide = R"({"error" : {"message" :  "the text"}})";
    const std::string last_sheet = std::string(R"({"message": "Invalid: )") + kLastSheet + "\"}";
    const std::string no_dot = "[spreadsheet_err]: Google Sheets service is currently unavailable";
    const std::string own_47 = no_dot + ".";
    const struct {
        int status;
        std::string body;
        int id;
        std::string text; ///< empty: the identifier's own
    } cases[] = {
        {401, spaced, 45, ""},
        {403, spaced, 45, ""},
        {404, spaced, 42, ""},
        {408, spaced, 50, ""},
        {429, spaced, 49, ""},
        {500, spaced, 47, "the text"},
        {503, spaced, 48, "the text"},
        {400, spaced, 47, "the text"},
        {400, last_sheet, 46, ""},
        {500, last_sheet, 47, std::string("Invalid: ") + kLastSheet},
        {503, last_sheet, 48, std::string("Invalid: ") + kLastSheet},
        {404, last_sheet, 42, ""},
        {500, tight, 47, "he text"},
        {500, wide, 47, " "},
        {500, "{}", 47, own_47},
        {503, "{}", 48, no_dot},
        {500, R"({"message": "a \"quoted\" text"})", 47, "a \\"},
        {500, "{\"mess\nage\": \"in\ntwo\nlines\"}", 47, "intwolines"},
        {500, R"({"message": "no end)", 47, "no end"},
        {500, R"({"message")", 47, own_47},
        {500, R"({"message": ")", 47, own_47},
        {500, R"({"message": "first", "message": "second"})", 47, "first"},
        {201, spaced, 47, "the text"},
        {204, "", 47, own_47},
        {302, "", 47, own_47},
        {409, spaced, 47, "the text"},
        {501, spaced, 47, "the text"},
        {0, "", 47, own_47},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.status) + " " + c.body);
        client.script.assign(20, reply(c.status, c.body));
        try {
            executeRequestWithToken({HttpMethod::Post, "http://h"});
            ADD_FAILURE() << "is no error";
        } catch (const Exception& error) {
            EXPECT_EQ(static_cast<int>(error.id()), c.id);
            EXPECT_EQ(error.what(), c.text.empty() ? error_id_message(error.id()) : c.text);
        }
    }
}

TEST_F(UtilGsheetTest, LogsAFailedReplyOnOneLine) {
    client.script = {reply(404, "{\n\"a\": 1}", "Not Found")};
    EXPECT_THROW(executeRequestWithToken({HttpMethod::Get, "http://h"}), Exception);
    EXPECT_THAT(log.lines(),
                ElementsAre(" attempts=1 consecutiveAttempts=1",
                            "[RESPONSE CODE]: 404  [RESPONSE CODE REASON]: Not Found",
                            "[RESPONSE CODE]: 404  [RESPONSE CODE REASON]: Not Found "
                            "[RESPONSE BODY STRING:] { \"a\": 1}",
                            "Exception caught: [spreadsheet_err]: Google Sheet not found."));
}

TEST_F(UtilGsheetTest, ParsesObjectsWithoutTheirLineFeeds) {
    client.script = {reply(200, "{\n \"a\n\": \"line\nfeed\", \"b\": [1\n2]\n}\n")};
    const auto object = executeRequestAndParseJsonResponse({HttpMethod::Get, "http://h"});
    EXPECT_EQ(object, (foundation::json::Object{{"a", "linefeed"}, {"b", {12}}}));
}

TEST_F(UtilGsheetTest, TurnsUnreadableBodiesIntoErrors) {
    const struct {
        std::string body;
        int id;
    } cases[] = {
        {"", 18},
        {"{\"a\": 1", 18},
        {"{} garbage", 18},
        {"[{}]", 18},
        {"null", 18},
        {"RATE_LIMIT_EXCEEDED", 49},
        {"RATE_LIMIT_\nEXCEEDED", 49},
        {"[\"RATE_LIMIT_EXCEEDED\"]", 49},
        {std::string(100'000, '['), 18},
    };
    for (const auto& c : cases) {
        client.script = {reply(200, c.body)};
        try {
            executeRequestAndParseJsonResponse({HttpMethod::Get, "http://h"});
            ADD_FAILURE() << c.body;
        } catch (const Exception& error) {
            EXPECT_EQ(static_cast<int>(error.id()), c.id) << c.body;
            EXPECT_EQ(error.what(), error_id_message(error.id()));
        }
    }
    client.script = {reply(200, "{\"RATE_LIMIT_EXCEEDED\": 1}")};
    EXPECT_EQ(executeRequestAndParseJsonResponse({HttpMethod::Get, "http://h"}).size(), 1u);
    EXPECT_THAT(log.lines(), testing::IsSupersetOf({"JSON response Parsing failed:{} garbage",
                                                    "Exception caught: Parse incomplete"}));
}

TEST(TranslateToHostError, GivesEachErrorItsIdentifier) {
    const std::string gsheet = "Zentra:spreadsheet:gsheet:";
    for (int number = 0; number < 256; ++number) {
        const auto id = static_cast<error_id>(number);
        const char* name = number == 43   ? "OperationNotSupported"
                           : number == 44 ? "TypeNotSupported"
                           : number == 45 ? "AccessForbidden"
                           : number == 48 ? "ServiceUnavailable"
                           : number == 49 ? "TooManyRequests"
                           : number == 50 ? "RequestTimedOut"
                                          : "InternalError";
        const bool has_text = number == 48 || std::string(name) == "InternalError";
        try {
            translateToHostError(Exception(id, "detail"));
        } catch (const foundation::core::except::IMessageId& error) {
            EXPECT_EQ(error.identifier(), gsheet + name) << number;
            EXPECT_EQ(error.argument(), has_text ? "detail" : "") << number;
        }
    }
}

TEST(HostError, TravelsAsWhatItIs) {
    using Zentra::spreadsheet::gsheet::NotFound;
    try {
        throw_host_error<NotFound>("file");
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "Zentra:spreadsheet:gsheet:NotFound: file");
        const auto& thrown = dynamic_cast<const foundation::core::except::IException&>(error);
        const std::unique_ptr<const boost::exception_detail::clone_base> copy(thrown.clone());
        EXPECT_THROW(copy->rethrow(), NotFound);
    }
    try {
        throw_host_error<Zentra::builtins::TooFewInputs>();
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "Zentra:builtins:TooFewInputs");
    }
}

TEST(Endpoints, AreSecureOrOfThisMachine) {
    const Endpoints before = endpoints();
    const auto split = [](std::u16string text) {
        std::vector<std::u16string> words;
        for (std::size_t end; (end = text.find(u' ')) != std::u16string::npos;
             text.erase(0, end + 1))
            words.push_back(text.substr(0, end));
        return words;
    };
    const auto good = split(u"https://h https://sheets.example.org:8443 https://[fe80::1] "
                            u"http://127.0.0.1:1234 http://localhost http://[::1]:80 ");
    const auto bad = split(u" h https:// https://h/ https://h/path https://user@h https://h?x "
                           u"https://h#x https://h\r\nX:1 https://h\\x https://ä http://h "
                           u"http://127.0.0.1.example.org http://localhost:80@h "
                           u"http://127.0.0.1:80/ ftp://127.0.0.1 HTTP://127.0.0.1 ");
    for (const std::u16string& address : good) {
        set_endpoints({address, address, address});
        EXPECT_EQ(endpoints().upload, address);
    }
    const std::u16string kept = endpoints().sheets;
    for (const std::u16string& address : bad) {
        EXPECT_THROW(set_endpoints({address, kept, kept}), std::invalid_argument);
        EXPECT_THROW(set_endpoints({kept, kept, address}), std::invalid_argument);
        EXPECT_EQ(endpoints().sheets, kept);
    }
    set_endpoints(before);
}

TEST(Urls, QuoteAndEncodeWhatStandsInThem) {
    EXPECT_EQ(spreadsheet_url(u"a/b?c", u":batchUpdate"),
              endpoints().sheets + u"/v4/spreadsheets/a%2Fb%3Fc:batchUpdate");
    const std::pair<const char16_t*, const char*> titles[] = {
        {u"Bob's data", "%27Bob%27%27s%20data%27"},
        {u"D3", "%27D3%27"},
        {u"", "%27%27"},
        {u"a-_.~!*()z", "%27a-_.~!*()z%27"},
        {u"ü \U0001F335/?#&+%", "%27%C3%BC%20%F0%9F%8C%B5%2F%3F%23%26%2B%25%27"}};
    for (const auto& [title, encoded] : titles)
        EXPECT_EQ(encoded_title(title), encoded);
}

} // namespace
} // namespace gsheet::test
