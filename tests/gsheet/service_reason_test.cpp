// SPDX-License-Identifier: Apache-2.0
//
// What is read from the bodies of failed replies.
#include <string>

#include <gtest/gtest.h>

#include "foundation/environment.h"
#include "spreadsheet/gsheet/utils/service_reason.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"
#include "tests/spreadsheet/thrown_id.h"

namespace gsheet {
namespace {

using spreadsheet::Failure;
using spreadsheet::FailureKind;

TEST(ReasonOf, ReadsTheErrorObject) {
    foundation::set_environment_variable("ZX_ACCESS_TOKEN", u"secret-token");
    const struct {
        const char* about;
        std::string body;
        const char *status, *reason, *message;
    } cases[] = {
        {"Sheets",
         R"({"error": {"code": 403, "message": "A \"quoted\" text,\nwhole", "status": "DENIED",
             "details": [{"@type": "Help"}, {"reason": "API_KEY_INVALID"}, {"reason": "2nd"}]}})",
         "DENIED", "API_KEY_INVALID", "A \"quoted\" text,\nwhole"},
        {"Drive", R"({"error":{"errors":[{"reason":"notFound"}],"message":"No file."}})", "",
         "notFound", "No file."},
        {"a credential", R"({"error":{"message":"secret-\u0074oken is bad"}})", "", "",
         "*** is bad"},
        {"other types", R"({"error":{"message":1,"status":[],"details":{},"errors":[1]}})", "", "",
         ""},
        {"a text", R"({"error":"invalid"})", "", "", ""},
        {"a page", "<html>", "", "", ""},
        {"nothing", "", "", "", ""},
    };
    for (const auto& c : cases) {
        foundation::http::HttpResponse response;
        response.status = 403;
        response.body = c.body;
        const spreadsheet::ServiceReason reason = reason_of(response);
        EXPECT_EQ(reason.http_status, 403) << c.about;
        EXPECT_EQ(reason.status, c.status) << c.about;
        EXPECT_EQ(reason.reason, c.reason) << c.about;
        EXPECT_EQ(reason.message, c.message) << c.about;
        const Failure failure =
            spreadsheet::failure_of_thrown([&] { throwForHttpStatus(response); });
        EXPECT_EQ(failure.kind, FailureKind::Service) << c.about;
        EXPECT_EQ(failure.service.message, c.message) << c.about;
        EXPECT_FALSE(failure.cause.empty()) << c.about;
    }
    foundation::set_environment_variable("ZX_ACCESS_TOKEN", u"");
}

} // namespace
} // namespace gsheet
