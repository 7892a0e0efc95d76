// SPDX-License-Identifier: Apache-2.0
//
// What it costs to read a large reply of Google Sheets: the library from the reply to the cell
// types of the range, against Boost.JSON parsing the same text into a tree. Both times, their
// ratio, and the peak of memory against the size of the text.
//
//   google_reply [ROWS [COLUMNS]] [--compact]    --compact leaves the white space out
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <boost/json.hpp>

#include "foundation/http/http_client.h"
#include "foundation/services.h"
#include "spreadsheet/book_factory.h"

namespace {

using namespace spreadsheet;
namespace http = foundation::http;

/// Writes JSON as the service does, two blanks for each level.
class Writer {
  public:
    explicit Writer(bool compact) : compact_(compact) {}

    void open(const char* key, char bracket) {
        begin(key);
        text_ += bracket;
        ++depth_;
        first_ = true;
    }
    void close(char bracket) {
        --depth_;
        line();
        text_ += bracket;
        first_ = false;
    }
    void put(const char* key, const std::string& value) {
        begin(key);
        text_ += value;
    }
    std::string take() { return std::move(text_); }
    std::size_t size() const { return text_.size(); }
    void reserve(std::size_t bytes) { text_.reserve(bytes); }

  private:
    void begin(const char* key) {
        if (!first_) text_ += ',';
        first_ = false;
        if (depth_ > 0) line();
        if (key != nullptr) text_.append(1, '"').append(key).append(compact_ ? "\":" : "\": ");
    }
    void line() {
        if (!compact_) text_.append(1, '\n').append(2 * depth_, ' ');
    }

    bool compact_;
    std::string text_;
    std::size_t depth_ = 0;
    bool first_ = true;
};

void put_format(Writer& json, const char* key) {
    json.open(key, '{');
    json.open("numberFormat", '{');
    json.put("type", "\"DATE\"");
    json.put("pattern", "\"yyyy-mm-dd\"");
    json.close('}');
    json.close('}');
}

/// Numbers, texts and dates in turns.
void put_cell(Writer& json, int row, int column) {
    const int kind = (row + column) % 4;
    const char* const key = kind == 1 ? "stringValue" : "numberValue";
    std::string value = std::to_string(40'000 + row % 5'000);
    if (kind == 0) value = std::to_string(row) + "." + std::to_string(100 + column) + "25";
    if (kind == 1) value = "\"text " + std::to_string(row) + "\"";
    json.open(nullptr, '{');
    for (const char* part : {"userEnteredValue", "effectiveValue"}) {
        json.open(part, '{');
        json.put(key, value);
        json.close('}');
    }
    if (kind == 2)
        for (const char* part : {"userEnteredFormat", "effectiveFormat"})
            put_format(json, part);
    json.close('}');
}

std::string make_reply(int rows, int columns, bool compact) {
    Writer json(compact);
    json.reserve(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns) *
                 (compact ? 120 : 480));
    json.open(nullptr, '{');
    json.open("sheets", '[');
    json.open(nullptr, '{');
    json.open("data", '[');
    json.open(nullptr, '{');
    json.open("rowData", '[');
    for (int row = 0; row < rows; ++row) {
        json.open(nullptr, '{');
        json.open("values", '[');
        for (int column = 0; column < columns; ++column)
            put_cell(json, row, column);
        json.close(']');
        json.close('}');
    }
    for (const char bracket : {']', '}', ']', '}', ']', '}'})
        json.close(bracket);
    std::string text = json.take();
    text.shrink_to_fit();
    return text;
}

/// Answers with the metadata of one sheet, then with whatever it was given.
class CannedClient : public http::HttpClient {
  public:
    http::HttpClientConfiguration defaultConfiguration() const override { return {}; }
    void configure(http::HttpClientConfiguration) override {}
    http::HttpResponse send(http::HttpRequest&&) override {
        return {200, "OK", {}, std::move(body)};
    }
    std::string body;
};

double seconds_since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The peak of the process's memory in bytes since it was last set back; 0 where it is not known.
double peak_bytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (word == "VmHWM:" && status >> word) return std::stod(word) * 1024.0;
    return 0.0;
}
void set_peak_back() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

struct Cost {
    double seconds;
    double peak;
};

/// Beside the copy of the text that the caller keeps, which does not count.
template <class Action>
Cost cost_of(const std::string& reply, Action action) {
    set_peak_back();
    std::string body = reply;
    const auto start = std::chrono::steady_clock::now();
    action(std::move(body));
    const double seconds = seconds_since(start);
    return {seconds, peak_bytes() - static_cast<double>(reply.size())};
}

/// The least time and the greatest peak of some rounds.
template <class Action>
Cost best_cost_of(const std::string& reply, Action action) {
    Cost best{1e9, 0};
    for (int round = 0; round < 3; ++round) {
        const Cost cost = cost_of(reply, action);
        best = {std::min(best.seconds, cost.seconds), std::max(best.peak, cost.peak)};
    }
    return best;
}

void print(const char* what, const Cost& cost, const Cost& tree, double bytes) {
    std::printf("%-24s %7.2f s  %5.2f of the tree  peak %5.2f of the text\n", what, cost.seconds,
                cost.seconds / tree.seconds, cost.peak / bytes);
}

} // namespace

int main(int argc, char** argv) {
    const bool compact = argc > 1 && std::strcmp(argv[argc - 1], "--compact") == 0;
    const int rows = argc > 1 && std::atoi(argv[1]) > 0 ? std::atoi(argv[1]) : 500'000;
    const int columns = argc > 2 && std::atoi(argv[2]) > 0 ? std::atoi(argv[2]) : 4;
    const auto client = std::make_shared<CannedClient>();
    foundation::services::bundle_context().RegisterService<http::HttpClient>(client);
    client->body =
        R"({"sheets": [{"properties": {"sheetId": 0, "title": "S", "sheetType": "GRID"}}]})";
    const auto book = load_book_from_file_with_sheet_index(u"book", book::format::GSHEET,
                                                           book::interactive::google, 0);
    const auto sheet = book->sheet(std::size_t{0});
    const std::string reply = make_reply(rows, columns, compact);
    const double bytes = static_cast<double>(reply.size());
    std::printf("%d rows x %d columns, %.0f MB\n", rows, columns, bytes / 1e6);

    const auto read_cells = [&](std::string body) {
        client->body = std::move(body);
        const auto types = sheet->cell_types(Range{0, 0, rows - 1, columns - 1});
        if (std::count(types.begin(), types.end(), cell_type::empty) != 0) std::abort();
    };
    const auto make_tree = [](std::string body) {
        if (!boost::json::parse(body).is_object()) std::abort();
    };
    // In this order: what a tree leaves behind in the heap would count as memory of the cells.
    const Cost cells = best_cost_of(reply, read_cells);
    const Cost tree = best_cost_of(reply, make_tree);
    print("tree of Boost.JSON", tree, tree, bytes);
    print("cells of the library", cells, tree, bytes);
    return 0;
}
