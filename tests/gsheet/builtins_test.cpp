// SPDX-License-Identifier: Apache-2.0
//
// The host's functions: order of the checks, requests byte for byte, outputs, errors.
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>

#include "foundation/features.h"
#include "foundation/files.h"
#include "foundation/oauth_keys.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "tests/gsheet/builtins_call.h"
#include "tests/gsheet/scripted_service.h"

namespace gsheet::test {
namespace {

using http::HttpMethod;
using testing::HasSubstr;

const std::string kGsheet = "Zentra:spreadsheet:gsheet:";
const std::string kInternalBookError = "Zentra:spreadsheet:book:internalError";

constexpr struct {
    Builtin call;
    int least, most; ///< inputs
} kBuiltins[] = {{createGoogleWorkbookBuiltin, 0, 2},
                 {deleteGoogleSpreadsheet, 1, 1},
                 {fileAttributesForGoogleSheet, 1, 1},
                 {mimeTypeForGoogleSheet, 1, 1},
                 {readGoogleSheet, 3, 5},
                 {writeToGoogleSheet, 3, 3},
                 {uploadSheetToGdrive, 1, 1}};

std::vector<HostArrayPtr> texts(int count) {
    std::vector<HostArrayPtr> list;
    for (int i = 0; i < count; ++i)
        list.push_back(text(u"text"));
    return list;
}

class BuiltinsTest : public ScriptedServiceTest {
  protected:
    BuiltinsTest() { set_endpoints({u"https://s", u"https://d", u"https://u"}); }
    ~BuiltinsTest() override { set_endpoints({}); }

    /// The one request that was sent since the last call.
    http::HttpRequest sent() {
        if (client.requests.size() != 1) {
            ADD_FAILURE() << client.requests.size() << " requests";
            return {HttpMethod::Get, "none"};
        }
        http::HttpRequest request = client.requests[0];
        client.requests.clear();
        return request;
    }
};

TEST_F(BuiltinsTest, LookAtTheSwitchBeforeAnythingElse) {
    foundation::features::set("GOOGLESHEETS", false);
    for (const auto& builtin : kBuiltins) {
        EXPECT_EQ(call(builtin.call, texts(9), 5).error, kGsheet + "FeatureFlag");
        EXPECT_EQ(call(builtin.call, {}, 0).error, kGsheet + "FeatureFlag");
    }
    foundation::features::set("GOOGLESHEETS", true);
    EXPECT_EQ(log.lines().at(0),
              "Feature GOOGLESHEETS needs to be turned on for further processing.");
    EXPECT_TRUE(client.requests.empty());
}

TEST_F(BuiltinsTest, CountArguments) {
    for (const auto& builtin : kBuiltins) {
        EXPECT_EQ(call(builtin.call, texts(builtin.most + 1), 2).error,
                  "Zentra:builtins:TooManyOutputs");
        EXPECT_EQ(call(builtin.call, texts(builtin.most + 1)).error,
                  "Zentra:builtins:TooManyInputs");
        if (builtin.least > 0) {
            EXPECT_EQ(call(builtin.call, texts(builtin.least - 1), 0).error,
                      "Zentra:builtins:TooFewInputs");
        }
    }
    EXPECT_TRUE(client.requests.empty());
}

TEST_F(BuiltinsTest, RefuseWhatIsNoText) {
    const std::string no_text = "Zentra:string:MustBeStringScalarOrCharacterVector";
    const std::string missing = "Zentra:string:MissingNotSupported";
    const auto cell = [](HostArrayPtr element) {
        auto array = std::make_unique<CellArray>(1, 1);
        array->data()[0] = std::move(element);
        return array;
    };
    for (const auto& builtin : kBuiltins) {
        for (int wrong = 0; wrong < builtin.least; ++wrong) {
            const auto error_for = [&](HostArrayPtr array) {
                auto list = texts(builtin.least);
                list[static_cast<std::size_t>(wrong)] = std::move(array);
                return call(builtin.call, list).error;
            };
            EXPECT_EQ(error_for(number(1)), no_text);
            EXPECT_EQ(error_for(nullptr), no_text);
            EXPECT_EQ(error_for(truth(true)), no_text);
            EXPECT_EQ(error_for(std::make_unique<CharacterArray>(2, 2)), no_text);
            EXPECT_EQ(error_for(std::make_unique<CharacterArray>(2, 1)), no_text);
            EXPECT_EQ(error_for(strings({u"a", u"b"})), no_text);
            EXPECT_EQ(error_for(strings({})), no_text);
            EXPECT_EQ(error_for(cell(text(u"a"))), no_text);
            EXPECT_EQ(error_for(std::make_unique<StringsWithMissing>(
                          std::vector<std::u16string>{u""}, 0u)),
                      missing);
        }
    }
    EXPECT_EQ(call(createGoogleWorkbookBuiltin, inputs(text(u"a"), cell(number(1)))).error,
              no_text);
    EXPECT_EQ(call(createGoogleWorkbookBuiltin, inputs(text(u"a"), cell(nullptr))).error, no_text);
    EXPECT_EQ(call(createGoogleWorkbookBuiltin,
                   inputs(text(u"a"), HostArrayPtr(std::make_unique<StringsWithMissing>(
                                          std::vector<std::u16string>{u"x", u"y"}, 1u))))
                  .error,
              missing);
    EXPECT_TRUE(client.requests.empty());
}

TEST_F(BuiltinsTest, TurnFailuresIntoTheHostsErrors) {
    const Outcome busy = reply(503, "{\"message\": \"too busy\"}");
    const struct {
        Outcome outcome;
        std::string error, argument;
    } cases[] = {
        {busy, kGsheet + "ServiceUnavailable", "too busy"},
        {reply(400, "{\"message\": \"wrong\"}"), kGsheet + "InternalError", "wrong"},
        {failure(http::HttpRequestException("No way.")), kInternalBookError, "No way."},
    };
    for (const auto& builtin : kBuiltins) {
        const bool is_upload = builtin.call == uploadSheetToGdrive;
        if (is_upload || builtin.call == deleteGoogleSpreadsheet) continue; // tests of their own
        for (const auto& c : cases) {
            client.script.assign(20, c.outcome);
            const CallResult result = call(builtin.call, texts(builtin.least));
            EXPECT_EQ(result.error, c.error);
            EXPECT_EQ(result.argument, c.argument);
            EXPECT_EQ(result.output, nullptr);
        }
    }
}

TEST_F(BuiltinsTest, WorkWithoutRoomForOutputs) {
    client.script = {reply(200, "{}")};
    createGoogleWorkbookBuiltin(0, nullptr, 0, nullptr);
    EXPECT_EQ(sent().body(), R"({"properties":{"title":""}})");
}

TEST_F(BuiltinsTest, CreateSpreadsheets) {
    const auto cell_of_texts = [] {
        auto cells = std::make_unique<CellArray>(2, 1);
        cells->data()[0] = text(u"One");
        cells->data()[1] = strings({u"\"Zwei\" ü"});
        return cells;
    };
    const std::string title = R"("properties":{"title":"Budget"})";
    const struct {
        std::vector<HostArrayPtr> arguments;
        std::string body;
    } cases[] = {
        {inputs(text(u"Budget")), "{" + title + "}"},
        {inputs(strings({u"Budget"}), strings({})), "{" + title + "}"},
        {inputs(text(u"Budget"), text(u"One")),
         "{" + title + R"(,"sheets":[{"properties":{"title":"One"}}]})"},
        {inputs(text(u"Budget"), strings({u"One", u"Two"})),
         "{" + title +
             R"(,"sheets":[{"properties":{"title":"One"}},{"properties":{"title":"Two"}}]})"},
        {inputs(text(u"Budget"), cell_of_texts()),
         "{" + title +
             R"(,"sheets":[{"properties":{"title":"One"}},)"
             R"({"properties":{"title":"\"Zwei\" ü"}}]})"},
    };
    for (const auto& c : cases) {
        client.script = {reply(200, "{\n  \"spreadsheetId\": \"ü\"\n}\n")};
        EXPECT_EQ(call(createGoogleWorkbookBuiltin, c.arguments).text(),
                  "{\n  \"spreadsheetId\": \"ü\"\n}\n");
        const http::HttpRequest request = sent();
        EXPECT_EQ(request.method(), HttpMethod::Post);
        EXPECT_EQ(request.fullUrl(), "https://s/v4/spreadsheets");
        EXPECT_EQ(request.headers(), (http::HttpHeaders{{"Content-Type", "application/json"},
                                                        {"Authorization", "Bearer token"}}));
        EXPECT_EQ(request.body(), c.body);
    }
}

TEST_F(BuiltinsTest, DeleteFilesAndNeverThrowForThat) {
    const struct {
        Outcome outcome;
        bool deleted;
        std::string said; ///< on standard error
        std::string logged;
    } cases[] = {
        {reply(204), true, "", "Successfully deleted file with URL:https://d/drive/v3/files/a%2Fb"},
        {reply(200, "{}"), false, "",
         "[RESPONSE CODE]:200[RESPONSE CODE REASON]:Reason[RESPONSE BODY STRING:]{}"},
        {reply(404, "none", "Not Found"), false, "",
         "[RESPONSE CODE]:404[RESPONSE CODE REASON]:Not Found[RESPONSE BODY STRING:]none"},
        {time_out(), false,
         "deleteGoogleSpreadsheet failed with error: The server did not answer in time.\n",
         "[REQUEST TIMED OUT]"},
    };
    for (const auto& c : cases) {
        client.script.assign(20, c.outcome);
        testing::internal::CaptureStderr();
        const CallResult result = call(deleteGoogleSpreadsheet, inputs(text(u"a/b")));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.said);
        ASSERT_NE(result.output, nullptr) << result.error;
        ASSERT_EQ(result.output->size(), 1u);
        EXPECT_EQ(*result.output->logicals(), c.deleted);
        EXPECT_THAT(log.lines(), testing::Contains(c.logged));
        const http::HttpRequest request = sent();
        EXPECT_EQ(request.method(), HttpMethod::Delete);
        EXPECT_EQ(request.fullUrl(), "https://d/drive/v3/files/a%2Fb");
        EXPECT_EQ(request.headers(), (http::HttpHeaders{{"Authorization", "Bearer token"}}));
    }
}

TEST_F(BuiltinsTest, TellTheSizeOfAFile) {
    const std::string internal = kGsheet + "InternalError";
    const struct {
        const char* body;
        double bytes; ///< unless there is an error
        std::string error, argument;
    } cases[] = {
        {R"({"quotaBytesUsed": "0"})", 0, "", ""},
        {R"({"quotaBytesUsed": "2147483647"})", 2147483647.0, "", ""},
        {R"({"quotaBytesUsed": " -12 bytes"})", -12, "", ""},
        {R"({"quotaBytesUsed": "2147483648"})", 0, internal, "stoi argument out of range"},
        {R"({"quotaBytesUsed": "3000000000"})", 0, internal, "stoi argument out of range"},
        {R"({"quotaBytesUsed": "99999999999999999999999"})", 0, internal,
         "stoi argument out of range"},
        {R"({"quotaBytesUsed": "a lot"})", 0, internal, "invalid stoi argument"},
        {R"({"quotaBytesUsed": ""})", 0, internal, "invalid stoi argument"},
        {R"({"quotaBytesUsed": 12})", 0, internal, "the reply has no text \"quotaBytesUsed\""},
        {"{}", 0, internal, "the reply has no text \"quotaBytesUsed\""},
        {"RATE_LIMIT_EXCEEDED", 0, kGsheet + "TooManyRequests", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.body);
        client.script = {reply(200, c.body)};
        const CallResult result = call(fileAttributesForGoogleSheet, inputs(strings({u"id"})));
        EXPECT_EQ(result.error, c.error);
        EXPECT_EQ(result.argument, c.argument);
        if (c.error.empty()) {
            ASSERT_NE(result.output, nullptr);
            EXPECT_EQ(*result.output->doubles(), c.bytes);
        }
        const http::HttpRequest request = sent();
        EXPECT_EQ(request.method(), HttpMethod::Get);
        EXPECT_EQ(request.fullUrl(), "https://d/drive/v3/files/id?fields=quotaBytesUsed");
        EXPECT_EQ(request.headers().back().second, "Bearer token");
    }
}

TEST_F(BuiltinsTest, TellWhetherAFileIsASpreadsheet) {
    const std::string native = "application/vnd.google-apps.spreadsheet";
    client.script = {reply(200, "{\"mimeType\": \"" + native + "\"}"),
                     reply(200, "{\"mimeType\": \"text/csv\"}")};
    EXPECT_EQ(call(mimeTypeForGoogleSheet, inputs(text(u"id"))).text(), native);
    EXPECT_EQ(sent().fullUrl(), "https://d/drive/v3/files/id?fields=mimeType");
    const CallResult other = call(mimeTypeForGoogleSheet, inputs(text(u"id")));
    EXPECT_EQ(other.error, kGsheet + "UnknownMimeType");
    EXPECT_EQ(other.argument, "text/csv");
}

TEST_F(BuiltinsTest, NameTheFileThatIsNotThere) {
    for (const Builtin builtin : {fileAttributesForGoogleSheet, mimeTypeForGoogleSheet}) {
        client.script = {reply(404)};
        const CallResult result = call(builtin, inputs(text(u"ü-id")));
        EXPECT_EQ(result.error, kGsheet + "NotFound");
        EXPECT_EQ(result.argument, "ü-id");
    }
    client.script = {reply(404)};
    EXPECT_EQ(call(readGoogleSheet, texts(3)).error, kGsheet + "InternalError");
}

TEST_F(BuiltinsTest, ReadValuesWithTheStoredKey) {
    foundation::oauth::store_key("apikey", "gsheets-readtable", "K");
    const struct {
        const char16_t *sheet, *range;
        std::string values;
    } cases[] = {
        {u"Data", u"A1:B2", "%27Data%27!A1:B2"},
        {u"Bob's data", u"A:C", "%27Bob%27%27s%20data%27!A:C"},
        {u"ü", u"$A$1", "%27%C3%BC%27!$A$1"},
        {u"a?b", u"A1?x=/#\r\n ü", "%27a%3Fb%27!A1%3Fx=%2F%23%0D%0A%20%C3%BC"},
    };
    for (const auto& c : cases) {
        client.script = {reply(200, "{\"values\": []}")};
        const auto arguments =
            inputs(text(u"id"), text(c.sheet), text(c.range), truth(true), truth(false));
        EXPECT_EQ(call(readGoogleSheet, arguments).text(), "{\"values\": []}");
        const http::HttpRequest request = sent();
        EXPECT_EQ(request.method(), HttpMethod::Get);
        EXPECT_EQ(request.fullUrl(), "https://s/v4/spreadsheets/id/values/" + c.values +
                                         "?majorDimension=COLUMNS&key=K");
        for (const auto& [name, value] : request.headers())
            EXPECT_NE(name, "Authorization");
    }
    foundation::oauth::store_key("apikey", "gsheets-readtable", "");
}

TEST_F(BuiltinsTest, ReadValuesAndLogTheKeyForDebuggingOnly) {
    const Credentials key("token", "K-e-y");
    client.script = {reply(200), reply(200)};
    call(readGoogleSheet, texts(3));
    for (const std::string& line : log.lines())
        EXPECT_EQ(line.find("K-e-y"), std::string::npos) << line;
    auto& logger = spreadsheet::getLogger();
    const std::uint32_t mask = logger.level_mask();
    logger.set_level_mask(mask | foundation::log::debug);
    call(readGoogleSheet, texts(3));
    logger.set_level_mask(mask);
    const std::string url = "https://s/v4/spreadsheets/text/values/%27text%27!text"
                            "?majorDimension=COLUMNS";
    EXPECT_THAT(log.lines(), testing::IsSupersetOf({std::string("The key is K-e-y"),
                                                    "The URI for data access is:  " + url,
                                                    "URL for Google SpreadSheet is " + url}));
}

TEST_F(BuiltinsTest, ReadValuesWithLogicalFlagsOnly) {
    for (int flag = 3; flag < 5; ++flag) {
        std::vector<HostArrayPtr> arguments = texts(3);
        if (flag == 4) arguments.push_back(truth(true));
        arguments.push_back(number(1));
        EXPECT_EQ(call(readGoogleSheet, arguments).error, "Zentra:builtins:MustBeLogicalScalar");
        arguments.back() = std::make_unique<LogicalArray>(1, 2);
        EXPECT_EQ(call(readGoogleSheet, arguments).error, "Zentra:builtins:MustBeLogicalScalar");
        arguments[0] = number(1);
        EXPECT_THAT(call(readGoogleSheet, arguments).error, HasSubstr("MustBeStringScalar"));
    }
    EXPECT_TRUE(client.requests.empty());
}

TEST_F(BuiltinsTest, WriteTheSameValueWhateverTheData) {
    client.script = {reply(200, "{\"updatedCells\": 1}")};
    const auto arguments = inputs(text(u"id"), text(u"'My sheet'!A17"), text(u"some data"));
    EXPECT_EQ(call(writeToGoogleSheet, arguments).text(), "{\"updatedCells\": 1}");
    const http::HttpRequest request = sent();
    EXPECT_EQ(request.method(), HttpMethod::Put);
    EXPECT_EQ(request.fullUrl(), "https://s/v4/spreadsheets/id/values/'My%20sheet'!A17/"
                                 "?valueInputOption=USER_ENTERED");
    EXPECT_EQ(request.body(), R"({
    "majorDimension": "COLUMNS",
    "range": "A17:A17",
    "values": [
        [
            345
        ]
    ]
    })");
    EXPECT_EQ(request.headers(), (http::HttpHeaders{{"Accept", "application/json"},
                                                    {"Content-Type", "application/json"},
                                                    {"Authorization", "Bearer token"}}));
}

/// A file in the folder for temporary files while it lives.
class UploadTest : public BuiltinsTest {
  protected:
    std::u16string make_file(const std::u16string& name, const std::string& bytes) {
        const std::u16string path = foundation::unicode::to_utf16(testing::TempDir()) + name;
        std::ofstream(foundation::files::native_path(path), std::ios::binary) << bytes;
        made_.push_back(path);
        return path;
    }
    ~UploadTest() override {
        for (const std::u16string& path : made_)
            std::filesystem::remove(foundation::files::native_path(path));
    }

  private:
    std::vector<std::u16string> made_;
};

TEST_F(UploadTest, SendsTheFileInTwoParts) {
    const std::string office = "application/vnd.openxmlformats-officedocument.spreadsheetml.";
    const std::string excel = "application/vnd.ms-excel";
    const std::string content("PK\0\r\n--foo\n", 11);
    const struct {
        std::u16string name;
        std::string type;
    } cases[] = {
        {u"a.xls", excel},
        {u"a.xlsx", office + "sheet"},
        {u"a.XlSm", excel + ".sheet.macroEnabled.12"},
        {u"a.xlsb", "pplication/vnd.ms-excel.sheet.binary.macroEnabled.12"},
        {u"a.xltm", excel + ".template.macroEnabled.12"},
        {u"a.xltx", office + "template"},
        {u"a.ods", "application/vnd.oasis.opendocument.spreadsheet"},
        {u"Größe 表.csv", "text/csv"},
        {u"a.txt", "application/octet-stream"},
        {u"a", "application/octet-stream"},
    };
    for (const auto& c : cases) {
        const std::u16string path = make_file(c.name, content);
        client.script = {reply(200, "{\"id\": \"x\"}")};
        EXPECT_EQ(call(uploadSheetToGdrive, inputs(text(path))).text(), "{\"id\": \"x\"}");
        const http::HttpRequest request = sent();
        EXPECT_EQ(request.method(), HttpMethod::Post);
        EXPECT_EQ(request.fullUrl(), "https://u/upload/drive/v3/files?uploadType=multipart");
        EXPECT_EQ(request.headers(),
                  (http::HttpHeaders{{"Content-Type", "multipart/related; boundary=foo_bar_baz"},
                                     {"Authorization", "Bearer token"}}));
        EXPECT_EQ(request.body(),
                  "--foo_bar_baz\r\nContent-Type: application/json; charset=UTF-8\r\n\r\n"
                  "{\n\"name\": \"" +
                      foundation::unicode::to_utf8(c.name) + "\",\n\"mimeType\": \"" + c.type +
                      "\"\n}\r\n--foo_bar_baz\r\nContent-Type: " + c.type + "\r\n\r\n" + content +
                      "\r\n--foo_bar_baz--");
    }
}

#ifndef _WIN32
TEST_F(UploadTest, KeepsMetadataWholeWhateverTheName) {
    const std::u16string path = make_file(u"a\", \"parents\": [\"x\\.csv", "");
    client.script = {reply(200)};
    call(uploadSheetToGdrive, inputs(text(path)));
    EXPECT_THAT(sent().body(), HasSubstr(R"("name": "a\", \"parents\": [\"x\\.csv",)"));
}
#endif

TEST_F(UploadTest, NamesAFileThatCannotBeRead) {
    for (const std::u16string path : {u"no such file ü.xlsx", u""}) {
        const CallResult result = call(uploadSheetToGdrive, inputs(text(path)));
        EXPECT_EQ(result.error, kInternalBookError);
        EXPECT_THAT(result.argument, HasSubstr(foundation::unicode::to_utf8(path) + ": "));
    }
    EXPECT_TRUE(client.requests.empty());
}

} // namespace
} // namespace gsheet::test
