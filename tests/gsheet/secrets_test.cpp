// SPDX-License-Identifier: Apache-2.0
//
// Whatever happens, neither token nor key gets into a log record, a message or an error.
#include <algorithm>
#include <cstdio>
#include <functional>

#include <gmock/gmock.h>

#include "foundation/oauth_keys.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"
#include "tests/gsheet/builtins_call.h"
#include "tests/gsheet/scripted_service.h"

namespace gsheet::test {
namespace {

using http::HttpMethod;

constexpr const char* kToken = "ya29.MARKED-token+/=";
constexpr const char* kKey = "AIza-MARKED key";
constexpr const char* kStored = "AIza-MARKED-stored";
/// In every secret, and percent-encoding leaves it alone.
constexpr const char* kMark = "MARKED";

/// What a server might say back.
std::string echo(const std::string& token, const std::string& key) {
    return "{\"error\": {\"message\": \"bad " + token + " " + key + " " + kStored +
           "\", \"url\": \"/x?key=" + http::percent_encode(key) +
           "&t=" + http::percent_encode(token) + "\"}}";
}

class SecretsTest : public ScriptedServiceTest {
  protected:
    SecretsTest() {
        logger.set_level_mask(~std::uint32_t{0});
        foundation::oauth::store_key("apikey", "gsheets-readtable", kStored);
    }
    ~SecretsTest() override {
        logger.set_level_mask(foundation::log::default_mask);
        foundation::oauth::store_key("apikey", "gsheets-readtable", "");
    }

    /// Runs an action and gives all that it said: errors, standard error.
    std::string said_by(const std::function<void()>& action) {
        std::string said;
        testing::internal::CaptureStderr();
        try {
            action();
        } catch (const foundation::core::except::IMessageId& error) {
            said += error.argument();
        } catch (const std::exception& error) {
            said += error.what();
        }
        std::fflush(stderr);
        return said + testing::internal::GetCapturedStderr();
    }

    foundation::log::basic_diagnostic_logger<char>& logger = spreadsheet::getLogger();
};

std::vector<Outcome> outcomes(const std::string& echoed) {
    std::vector<Outcome> list;
    for (const int status : {0, 200, 201, 204, 301, 400, 401, 403, 404, 408, 429, 500, 503})
        list.push_back(reply(status, echoed, "because of " + echoed));
    list.push_back(reply(200, "no JSON with " + echoed));
    list.push_back(time_out());
    list.push_back(failure(http::HttpRequestException("The request failed.")));
    return list;
}

std::vector<std::function<void()>> operations() {
    std::vector<std::function<void()>> list;
    for (const HttpMethod method : {HttpMethod::Get, HttpMethod::Post, HttpMethod::Put})
        list.emplace_back([method] {
            executeRequestAndParseJsonResponse(
                createAuthorizedRequest(method, spreadsheet_url(u"id", u":batchUpdate")));
        });
    const std::pair<Builtin, int> builtins[] = {{createGoogleWorkbookBuiltin, 1},
                                                {deleteGoogleSpreadsheet, 1},
                                                {fileAttributesForGoogleSheet, 1},
                                                {mimeTypeForGoogleSheet, 1},
                                                {readGoogleSheet, 3},
                                                {writeToGoogleSheet, 3}};
    for (const auto& [builtin, count] : builtins)
        list.emplace_back([builtin = builtin, count = count] {
            std::vector<HostArrayPtr> arguments;
            for (int i = 0; i < count; ++i)
                arguments.push_back(text(u"text"));
            std::vector<const HostArray*> pointers;
            for (const auto& argument : arguments)
                pointers.push_back(argument.get());
            HostArrayPtr output;
            builtin(1, &output, count, pointers.data());
        });
    return list;
}

TEST_F(SecretsTest, StayOutOfLogsAndErrors) {
    int runs = 0;
    for (const char* token : {kToken, ""}) {
        const Credentials set(token, kKey);
        for (const Outcome& outcome : outcomes(echo(token, kKey))) {
            ++runs;
            for (const auto& operation : operations()) {
                client.script.assign(12, outcome);
                const std::string said = said_by(operation);
                EXPECT_EQ(said.find(kMark), std::string::npos) << said;
            }
        }
    }
    const std::string key_line = std::string("The key is ") + kStored;
    const std::vector<std::string> lines = log.lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), key_line), runs) << "for debugging only";
    EXPECT_GT(lines.size(), 1000u);
    for (const std::string& line : lines)
        EXPECT_TRUE(line == key_line || line.find(kMark) == std::string::npos) << line;
}

TEST_F(SecretsTest, AreReplacedWhereverTheyStand) {
    const Credentials set("a+b", "key");
    EXPECT_EQ(without_secrets("a+b, key=key; a%2Bb; AIza-MARKED-stored"), "***, ***=***; ***; ***");
    EXPECT_EQ(without_secrets("nothing here"), "nothing here");
    const Credentials nested("AIza-MARKED-sto", "AIza");
    EXPECT_EQ(without_secrets("AIza-MARKED-stored"), "***") << "no end of it is left over";
    EXPECT_EQ(without_secrets(""), "");
}

} // namespace
} // namespace gsheet::test
