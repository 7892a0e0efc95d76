// SPDX-License-Identifier: Apache-2.0
#include "tests/spreadsheet/gsheet/scripted_service.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "foundation/environment.h"
#include "foundation/services.h"
#include "spreadsheet/book_factory.h"

namespace spreadsheet::test {

namespace {

using foundation::http::HttpClientConfiguration;
using foundation::http::HttpRequest;
using foundation::http::HttpResponse;

class ScriptedClient : public foundation::http::HttpClient {
  public:
    HttpClientConfiguration defaultConfiguration() const override { return {}; }
    void configure(HttpClientConfiguration) override {}
    HttpResponse send(HttpRequest&& request) override {
        sent.push_back(request);
        if (replies.empty()) {
            ADD_FAILURE() << "not in the script: " << request.fullUrl();
            return {500, "Internal Server Error", {}, "{}"};
        }
        const Reply reply = std::move(replies.front());
        replies.pop_front();
        if (reply.is_time_out)
            throw foundation::http::HttpRequestTimeoutException("the server took too long");
        return {reply.status, "reason", {}, reply.body};
    }

    std::vector<HttpRequest> sent;
    std::deque<Reply> replies;
};

ScriptedClient& client() {
    static const auto instance = [] {
        auto made = std::make_shared<ScriptedClient>();
        foundation::services::bundle_context().RegisterService<foundation::http::HttpClient>(made);
        return made;
    }();
    return *instance;
}

std::string decoded(const std::string& text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            plain += text[at];
            continue;
        }
        plain += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
        at += 2;
    }
    return plain;
}

Sent to_sent(const HttpRequest& request) {
    const std::string root = "https://sheets.googleapis.com/v4/spreadsheets";
    std::string url = request.fullUrl();
    EXPECT_EQ(url.rfind(root, 0), 0u) << url;
    return {to_string(request.method()), decoded(url.substr(root.size())), request.body()};
}

foundation::json::Value parsed(const std::string& text) {
    return text.empty() ? foundation::json::Value() : foundation::json::parse(text);
}

} // namespace

bool Sent::operator==(const Sent& other) const {
    return method == other.method && target == other.target && parsed(body) == parsed(other.body);
}

void PrintTo(const Sent& sent, std::ostream* out) {
    *out << sent.method << ' ' << sent.target << ' ' << sent.body;
}

Reply refusal(int status, const std::string& message) {
    const std::string code = std::to_string(status);
    return {"{\n  \"error\": {\n    \"code\": " + code + ",\n    \"message\": \"" + message +
                "\",\n    \"status\": \"INVALID_ARGUMENT\"\n  }\n}\n",
            status};
}

ScriptedService::ScriptedService()
    : sink_(std::make_shared<foundation::log::CollectingSink>()), mask_(getLogger().level_mask()) {
    foundation::set_environment_variable("ZX_ACCESS_TOKEN", u"the-secret-token");
    foundation::set_environment_variable("ZX_API_KEY", u"");
    getLogger().add_sink(sink_);
    getLogger().set_level_mask(~std::uint32_t{0});
    client().sent.clear();
    client().replies.clear();
}

ScriptedService::~ScriptedService() {
    book_.reset();
    getLogger().set_level_mask(mask_);
    getLogger().remove_sink(sink_);
    EXPECT_TRUE(client().replies.empty()) << "not asked for";
    EXPECT_TRUE(log_lines(kToken).empty());
}

void ScriptedService::answer(std::vector<Reply> replies) {
    for (Reply& reply : replies)
        client().replies.push_back(std::move(reply));
}

std::vector<Sent> ScriptedService::requests() {
    std::vector<Sent> seen;
    for (const HttpRequest& request : std::exchange(client().sent, {}))
        seen.push_back(to_sent(request));
    return seen;
}

std::vector<std::string> ScriptedService::last_headers() const {
    std::vector<std::string> lines;
    for (const auto& [name, value] : client().sent.back().headers())
        lines.push_back(name + ": " + value);
    return lines;
}

std::vector<std::string> ScriptedService::log_lines(const std::string& part) const {
    std::vector<std::string> lines;
    for (const foundation::log::Record& record : sink_->records())
        if (record.text.find(part) != std::string::npos) lines.push_back(record.text);
    return lines;
}

bool ScriptedService::is_logged(const std::string& line) const {
    const auto found = log_lines(line);
    return std::find(found.begin(), found.end(), line) != found.end();
}

std::shared_ptr<IBook> ScriptedService::open(const std::string& metadata) {
    answer(metadata);
    book_ = load_book_from_file_with_sheet_index(u"book", book::format::GSHEET,
                                                 book::interactive::google, 0);
    requests();
    return book_;
}

std::shared_ptr<ISheet> ScriptedService::open_sheet(int rows, int columns) {
    return open(metadata({sheet_json("Data", 7, rows, columns)}))->sheet(std::size_t{0});
}

std::string sheet_json(const std::string& title, int id, int rows, int columns,
                       const std::string& more) {
    return R"({"properties": {"title": ")" + title + R"(", "sheetId": )" + std::to_string(id) +
           R"(, "sheetType": "GRID", "gridProperties": {"rowCount": )" + std::to_string(rows) +
           R"(, "columnCount": )" + std::to_string(columns) + "}}" + more + "}";
}

std::string metadata(const std::vector<std::string>& sheets) {
    std::string text;
    for (const std::string& sheet : sheets)
        text += (text.empty() ? "" : ",\n") + sheet;
    return "{\n\"properties\": {\"title\": \"Title\"},\n\"sheets\": [" + text + "]}";
}

} // namespace spreadsheet::test
