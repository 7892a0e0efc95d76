// SPDX-License-Identifier: Apache-2.0
//
// Tokens of a host's function, and what is said about refusals and pauses.
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "foundation/base64.h"
#include "foundation/signature.h"
#include "spreadsheet/failure.h"
#include "spreadsheet/gsheet/auth/credential_search.h"
#include "spreadsheet/gsheet/pauses.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/rate_window.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/gsheet/utils/service_reason.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"
#include "tests/gsheet/scripted_service.h"

namespace gsheet::test {
namespace {

using http::HttpMethod;

std::string header_of(const http::HttpRequest& request, const std::string& wanted) {
    for (const auto& [name, value] : request.headers())
        if (name == wanted) return value;
    return {};
}

class TokenFunctionTest : public ScriptedServiceTest {
  protected:
    ~TokenFunctionTest() override { set_token_function({}); }
    std::string send() {
        return executeRequestWithToken(
            createAuthorizedRequest(HttpMethod::Post, spreadsheet_url(u"id")));
    }
};

TEST_F(TokenFunctionTest, GivesTheTokenAndRenewsItOnce) {
    std::string asked;
    set_token_function([&](bool renew) {
        asked += renew ? 'r' : 'n';
        return "MARK-" + asked;
    });
    client.script = {reply(200, "a"), reply(401), reply(200, "b"), reply(401), reply(401)};
    EXPECT_EQ(send(), "a");
    EXPECT_EQ(send(), "b");
    EXPECT_THROW(send(), spreadsheet::Exception) << "one repeat and no more";
    EXPECT_EQ(asked, "nnrnr");
    ASSERT_EQ(client.requests.size(), 5u);
    EXPECT_EQ(header_of(client.requests[2], "Authorization"), "Bearer MARK-nnr");
    EXPECT_EQ(without_secrets("x MARK-nnr"), "x ***");
    set_token_function([](bool) -> std::string { throw std::runtime_error("no session"); });
    EXPECT_THROW(send(), std::runtime_error);
    set_token_function({});
    client.script = {reply(401)};
    EXPECT_THROW(send(), spreadsheet::Exception);
    EXPECT_EQ(header_of(client.requests.back(), "Authorization"), "Bearer token") << "a variable";
}

TEST_F(TokenFunctionTest, IsAskedByAddressesThatAreSafeOnly) {
    for (const auto* address : {u"https://example.com/token", u"http://127.0.0.1:5/token"})
        EXPECT_TRUE(is_safe_address(address));
    for (const auto* address : {u"http://example.com/token", u"http://127.0.0.1.example.com/",
                                u"https://user@example.com/", u"ftp://x/", u"", u"https:///x"})
        EXPECT_FALSE(is_safe_address(address));
}

TEST_F(ScriptedServiceTest, AnnouncesPausesBeforeItTakesThem) {
    requestRateWindow().purge(RateWindow::TimePoint::max()); // what other tests left
    std::vector<Pause> pauses;
    set_pause_listener([&](const Pause& pause) { pauses.push_back(pause); });
    client.script = {reply(503), reply(503), reply(429), reply(200)};
    executeRequestWithToken(createAuthorizedRequest(HttpMethod::Get, spreadsheet_url(u"id")));
    client.script.assign(60, reply(200));
    while (!client.script.empty())
        executeRequestWithToken(createAuthorizedRequest(HttpMethod::Get, spreadsheet_url(u"id")));
    set_pause_listener({});
    ASSERT_EQ(pauses.size(), 3u) << "a repeat at once is no pause";
    EXPECT_EQ(pauses[0].reason, PauseReason::server_error);
    EXPECT_EQ(pauses[0].http_status, 503);
    EXPECT_EQ(pauses[1].reason, PauseReason::too_many_requests);
    EXPECT_GE(pauses[1].length.count(), 8000);
    EXPECT_EQ(pauses[2].reason, PauseReason::rate_window);
    EXPECT_EQ(pauses[2].length.count(), 60'000);
}

TEST(AdviceFor, KnowsTheRecordedRefusals) {
    const std::string folder = ZX_SHARED_DATA "/google/recordings/gargle/";
    if (!std::ifstream(folder + "tokeninfo-stale_400.body")) GTEST_SKIP() << "no recordings";
    const struct {
        const char* file;
        int status;
        const char* says;
    } cases[] = {
        {"sheets-spreadsheets-get-service-disabled_403.body", 403,
         "https://console.developers.google.com/apis/api/sheets.googleapis.com/"
         "overview?project=1234567890, wait"},
        {"sheets-spreadsheets-get-api-key-not-enabled_403.body", 403, "is not switched on"},
        {"fitness-get-wrong-scope_403.body", 403, "auth/spreadsheets.readonly"},
        {"sheets-spreadsheets-get-quota-exceeded-readgroup_429.body", 429, "request_increase"},
        {"drive-automated-queries_429.body", 429, "wait a minute."},
        {"sheets-spreadsheets-get-nonexistent-sheet-id_404.body", 404, "check the ID"},
        {"sheets-spreadsheets-get-bad-field-mask_400.body", 400, ""},
    };
    for (const auto& c : cases) {
        std::ostringstream body;
        body << std::ifstream(folder + c.file).rdbuf();
        http::HttpResponse response;
        response.status = c.status;
        response.body = body.str();
        RefusedRequest request;
        request.has_token = true;
        const std::string advice = advice_for(reason_of(response), request);
        EXPECT_NE(advice.find(c.says), std::string::npos) << c.file << ": " << advice;
        EXPECT_EQ(advice.empty(), *c.says == '\0') << c.file;
    }
}

TEST(AdviceFor, NamesAccountAndRole) {
    RefusedRequest request;
    request.method = HttpMethod::Post;
    request.has_token = true;
    request.account = "a@b.example";
    EXPECT_EQ(advice_for({403, "PERMISSION_DENIED", "", "No."}, request),
              "The file is not shared with a@b.example; share it in the browser, as editor.");
    request.is_drive = true;
    EXPECT_NE(advice_for({403, "", "storageQuotaExceeded", ""}, request).find("--folder"),
              std::string::npos);
    EXPECT_EQ(advice_for({403, "", "somethingNew", ""}, request), "");
}

TEST(Base64Url, HasNoPadding) {
    // RFC 4648, section 10, and two bytes whose digits are not letters.
    EXPECT_EQ(foundation::to_base64url("f"), "Zg");
    EXPECT_EQ(foundation::to_base64url("foobar"), "Zm9vYmFy");
    EXPECT_EQ(foundation::to_base64url("fooba"), "Zm9vYmE");
    EXPECT_EQ(foundation::to_base64url("\xFB\xFF"), "-_8");
}

} // namespace
} // namespace gsheet::test
