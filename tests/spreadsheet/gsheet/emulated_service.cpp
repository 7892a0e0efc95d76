// SPDX-License-Identifier: Apache-2.0
#include "tests/spreadsheet/gsheet/emulated_service.h"

#include <chrono>
#include <utility>

#include "foundation/services.h"
#include "foundation/unicode.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/gsheet/utils/endpoints.h"

namespace spreadsheet::test {

namespace {

namespace http = foundation::http;

/// The platform's client, but it waits no longer than it is told to.
class ImpatientClient : public http::HttpClient {
  public:
    http::HttpClientConfiguration defaultConfiguration() const override {
        return client_->defaultConfiguration();
    }
    void configure(http::HttpClientConfiguration rules) override {
        rules_ = std::move(rules);
        set_patience(std::chrono::milliseconds(20'000));
    }
    void set_patience(std::chrono::milliseconds patience) {
        rules_.responseTimeout = patience;
        rules_.transferTimeout = 2 * patience;
        client_->configure(rules_);
    }
    http::HttpResponse send(http::HttpRequest&& request) override {
        return client_->send(std::move(request));
    }

  private:
    std::shared_ptr<http::HttpClient> client_ = http::make_curl_client();
    http::HttpClientConfiguration rules_;
};

/// Registered once.
ImpatientClient& client() {
    static const auto instance = [] {
        auto made = std::make_shared<ImpatientClient>();
        foundation::services::bundle_context().RegisterService<http::HttpClient>(made);
        return made;
    }();
    return *instance;
}

} // namespace

void EmulatedService::SetUp() {
    if (!service.is_there()) GTEST_SKIP() << "there is no emulator; run tests/with_google_service";
    client();
    initialize(); // keeps the client that is registered
    const std::u16string root = foundation::unicode::to_utf16(service.root());
    gsheet::set_endpoints({root, root, root});
    service.reset("samples");
}

void EmulatedService::TearDown() {
    if (!service.is_there()) return;
    service.reset("empty");
    release();
}

void EmulatedService::lose_patience() {
    client().set_patience(std::chrono::milliseconds(150));
}

std::shared_ptr<IBook> EmulatedService::open(const char* id) const {
    return load_book_from_file_with_sheet_index(foundation::unicode::to_utf16(id),
                                                book::format::GSHEET, book::interactive::google, 0);
}

Value EmulatedService::state(const std::string& id) const {
    return service.control(http::HttpMethod::Get, "files/" + id);
}

Value EmulatedService::sheet_state(const std::string& id, std::size_t index) const {
    const Value book = state(id);
    return book.as_object().at("sheets").as_array().at(index);
}

std::vector<std::string> EmulatedService::methods() const {
    std::vector<std::string> methods;
    for (const Value& entry : service.log())
        methods.emplace_back(entry.as_object().at("method").as_string().c_str());
    service.control(http::HttpMethod::Delete, "log");
    return methods;
}

} // namespace spreadsheet::test
