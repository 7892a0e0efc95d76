// SPDX-License-Identifier: Apache-2.0
#include "tests/spreadsheet/gsheet/scripted_service.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "spreadsheet/book_factory.h"

namespace spreadsheet::test {

namespace {

using foundation::http::HttpRequest;

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

ScriptedService::ScriptedService() : mask_(getLogger().level_mask()) {
    getLogger().set_level_mask(~std::uint32_t{0});
    client_.requests.clear();
    client_.script.clear();
    client_.retries = false;
}

ScriptedService::~ScriptedService() {
    book_.reset();
    getLogger().set_level_mask(mask_);
    EXPECT_TRUE(client_.script.empty()) << "not asked for";
    EXPECT_TRUE(log_lines(kToken).empty());
}

void ScriptedService::answer(const std::vector<Reply>& replies) {
    for (const Reply& reply : replies)
        client_.script.push_back(reply.is_time_out ? gsheet::test::time_out()
                                                   : gsheet::test::reply(reply.status, reply.body));
}

std::vector<Sent> ScriptedService::requests() {
    std::vector<Sent> seen;
    for (const HttpRequest& request : std::exchange(client_.requests, {}))
        seen.push_back(to_sent(request));
    return seen;
}

std::vector<std::string> ScriptedService::log_lines(const std::string& part) const {
    std::vector<std::string> lines = log_.lines();
    std::erase_if(lines,
                  [&](const std::string& line) { return line.find(part) == std::string::npos; });
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
