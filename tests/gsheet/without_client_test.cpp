// SPDX-License-Identifier: Apache-2.0
//
// A process in which the registry has no HTTP client; start and stop of the library bring one and
// take it back.
#include <gtest/gtest.h>

#include "foundation/services.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"
#include "tests/spreadsheet/thrown_id.h"

namespace gsheet {
namespace {

namespace http = foundation::http;
using foundation::services::bundle_context;
using foundation::services::find_service;

TEST(SharedHttpClient, ComesAndGoesWithTheLibrary) {
    const auto request = [] {
        return spreadsheet::thrown_id([] {
            executeRequestWithToken({http::HttpMethod::Get, "http://127.0.0.1:1"});
        });
    };
    EXPECT_EQ(request(), 48);
    spreadsheet::initialize();
    spreadsheet::initialize();
    const std::weak_ptr<http::HttpClient> client = sharedHttpClient();
    EXPECT_EQ(sharedHttpClient(), client.lock());
    EXPECT_THROW(request(), http::HttpRequestException) << "a client that really tries";
    spreadsheet::release();
    EXPECT_FALSE(client.expired()) << "started twice, stopped once";
    spreadsheet::release();
    EXPECT_TRUE(client.expired());
    EXPECT_EQ(request(), 48);
}

TEST(SharedHttpClient, IsTheHostsWhereTheHostHasOne) {
    const auto of_host = http::make_curl_client();
    auto registration = bundle_context().RegisterService<http::HttpClient>(of_host);
    spreadsheet::initialize();
    EXPECT_EQ(sharedHttpClient(), of_host);
    spreadsheet::release();
    EXPECT_EQ(find_service<http::HttpClient>(bundle_context()), of_host) << "stays registered";
    registration.Unregister();
    EXPECT_EQ(find_service<http::HttpClient>(bundle_context()), nullptr);
}

} // namespace
} // namespace gsheet
