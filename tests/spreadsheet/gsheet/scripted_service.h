// SPDX-License-Identifier: Apache-2.0
//
// The service as a script for books and sheets: requests are recorded and answered in turn, and no
// request is repeated.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/json.h"
#include "spreadsheet/book.h"
#include "spreadsheet/sheet.h"
#include "tests/gsheet/scripted_service.h"

namespace spreadsheet::test {

/// A request as it was sent, or as it is expected.
struct Sent {
    std::string method;
    std::string target; ///< behind ".../v4/spreadsheets", percent-decoded, with its query
    std::string body{}; ///< JSON, or empty

    /// Bodies are equal when their values are, whatever the order of members.
    bool operator==(const Sent& other) const;
};
void PrintTo(const Sent& sent, std::ostream* out);

struct Reply {
    std::string body = "{}";
    int status = 200;
    bool is_time_out = false; ///< in place of a reply
};

/// The error reply of the service, spaced as it does.
Reply refusal(int status, const std::string& message);

/// A fixture with an access token. At the end nothing may be left of the script, and no line of the
/// log may hold the token.
class ScriptedService : public testing::Test {
  protected:
    static constexpr const char* kToken = "the-secret-token";

    ScriptedService();
    ~ScriptedService() override;

    void answer(const std::vector<Reply>& replies);
    void answer(const std::string& body) { answer({Reply{body}}); }
    /// The requests since the last call.
    std::vector<Sent> requests();
    /// The log's lines since the last call that contain `part`.
    std::vector<std::string> log_lines(const std::string& part) const;
    bool is_logged(const std::string& line) const;

    /// A book over a spreadsheet "book" with these metadata.
    std::shared_ptr<IBook> open(const std::string& metadata);
    /// The same with one sheet "Data", identifier 7, and its object.
    std::shared_ptr<ISheet> open_sheet(int rows = 1000, int columns = 26);

  private:
    gsheet::test::ScriptedClient& client_ = gsheet::test::scripted_client();
    gsheet::test::Credentials credentials_{kToken, ""};
    gsheet::test::Log log_;
    std::uint32_t mask_;
    std::shared_ptr<IBook> book_;
};

/// An element of "sheets" of the metadata.
std::string sheet_json(const std::string& title, int id, int rows = 1000, int columns = 26,
                       const std::string& more = "");
std::string metadata(const std::vector<std::string>& sheets);

} // namespace spreadsheet::test
