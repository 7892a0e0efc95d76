// SPDX-License-Identifier: Apache-2.0
//
// Replies that the real service once gave, recorded by others: each is taken, and says what it
// says.
#include <cstddef>
#include <fstream>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "foundation/unicode.h"
#include "spreadsheet/gsheet/cell_reply.h"
#include "tests/spreadsheet/gsheet/scripted_service.h"

namespace spreadsheet {
namespace {

using foundation::json::Object;

const std::string kRecordings = ZX_SHARED_DATA "/google/recordings/gspread-exchanges.jsonl";

class RecordedReplies : public test::ScriptedService {
  protected:
    /// Calls `check(reply, body)` for every recorded success of a GET with that member, and returns
    /// how many there were.
    static std::size_t
    for_each_reply(const char* member,
                   const std::function<void(const Object&, const std::string&)>& check) {
        std::ifstream lines(kRecordings);
        std::size_t count = 0;
        for (std::string line; std::getline(lines, line);) {
            const Object exchange = foundation::json::parse(line).as_object();
            if (exchange.at("method") != "GET" || exchange.at("status") != 200) continue;
            const std::string body(exchange.at("body").as_string().c_str());
            if (body.find("\"" + std::string(member) + "\"") == std::string::npos) continue;
            const auto reply = foundation::json::parse(body);
            if (!reply.is_object() || !reply.get_object().contains(member)) continue;
            SCOPED_TRACE(exchange.at("url").as_string().c_str());
            check(reply.get_object(), body);
            ++count;
        }
        return count;
    }
    void SetUp() override {
        if (!std::ifstream(kRecordings)) GTEST_SKIP() << "there are no recordings";
    }
};

TEST_F(RecordedReplies, OpenAsBooks) {
    std::size_t books = 0;
    const auto check = [&](const Object& reply, const std::string& body) {
        // The members that books are opened with; others were asked for parts only.
        if (body.find("\"sheetType\"") == std::string::npos) return;
        const auto& sheets = reply.at("sheets").as_array();
        ++books;
        const auto book = open(body);
        ASSERT_EQ(book->num_sheets(), sheets.size());
        for (std::size_t index = 0; index < sheets.size(); ++index) {
            const Object& properties = sheets[index].as_object().at("properties").as_object();
            EXPECT_EQ(foundation::unicode::to_utf8(
                          book->get_sheet_name(static_cast<int>(index)).value_or(u"")),
                      properties.at("title").as_string().c_str());
            EXPECT_EQ(book->sheet_type(index), sheet::type::worksheet);
            EXPECT_EQ(book->sheet(index)->hidden() == sheet::hidden::hidden,
                      properties.contains("hidden"));
        }
    };
    for_each_reply("sheets", check);
    EXPECT_GT(books, 100u);
}

TEST_F(RecordedReplies, HaveTheirNumberOfValues) {
    const auto check = [](const Object& reply, const std::string& body) {
        EXPECT_EQ(gsheet::count_values(body), reply.at("values").as_array().size());
    };
    EXPECT_GT(for_each_reply("values", check), 100u);
}

TEST_F(RecordedReplies, GiveTheirCells) {
    const auto check = [](const Object&, const std::string& body) {
        EXPECT_NO_THROW(gsheet::parse_cells(body, {0, 0, 99, 25}));
    };
    EXPECT_GT(for_each_reply("sheets", check), 100u);
}

} // namespace
} // namespace spreadsheet
