// SPDX-License-Identifier: Apache-2.0
//
// How the program fails: exit codes and the sentence on standard error.
#include <algorithm>

#include "tests/zxsheet/program.h"
#include "zxsheet/library_error.h"

namespace zxsheet::test {
namespace {

const std::string kWeather = ZX_EXAMPLES "/weather.xlsx";

TEST(ExitCode, SeparatesKindsOfFailure) {
    const TemporaryPath plain_text("text.xlsx");
    const TemporaryPath cut_off("cut.xlsx");
    const TemporaryPath old_format("old.xls");
    const TemporaryPath target("target.csv");
    const TemporaryPath many_lines("lines.xlsx");
    plain_text.fill("a,b\n1,2\n");
    cut_off.fill(make_book({{"Data", "", "<sheetData/>"}}).substr(0, 300));
    old_format.fill("anything");
    many_lines.fill(make_book({{"two&#10;lines", "", "<sheetData><row r='0'/></sheetData>"}}));
    target.fill("a,b\n");
    const std::string folder = testing::TempDir();
    const struct {
        std::vector<std::string> arguments;
        int code;
        std::string mentioned; ///< in the sentence
    } cases[] = {
        {{}, 2, "A command is missing"},
        {{"--wrong", "unknown"}, 2, "no option '--wrong'"},
        {{"raed", kWeather}, 2, "no command 'raed'; did you mean 'read'?"},
        {{"read", kWeather, "--wdith", "9"}, 2, "no option '--wdith'; did you mean '--width'?"},
        {{"help", "sheet", "ad"}, 2, "did you mean 'sheet add'?"},
        {{"read", kWeather, "--to"}, 2, "--to needs exactly one value"},
        {{"read", kWeather, "-r", "A1", "-r", "B2"}, 2, "--range needs exactly one value"},
        {{"clear", kWeather, "-r", ""}, 2, "--range: The value is empty"},
        {{"new", "-"}, 2, "the name of a file"},
        {{"new", "x.xlsx", "--sheets", "1e3"}, 2, "'1e3' is not a whole number from 1 to 65,535"},
        {{"types", kWeather, "surplus"}, 2, "'zxsheet types --help'"},
        {{"read", kWeather, "--to", "xml"}, 2, "csv, tsv"},
        {{"read", kWeather, "--merged-rows", "never"}, 2, "omit"},
        {{"read", kWeather, "-o", kWeather}, 2, kWeather},
        {{"read", "no such file.xlsx"}, 3, "no such file.xlsx"},
        {{"sheets", "no such file.xls"}, 3, "no such file.xls"},
        {{"info", folder}, 3, "folder"},
        {{"read", kWeather, "-o", folder}, 6, "It is a folder"},
        {{"read", target.text()}, 4, "'zxsheet write BOOK"},
        {{"read", plain_text.text()}, 4, plain_text.text()},
        {{"read", many_lines.text()}, 4, "two lines"},
        {{"info", cut_off.text()}, 4, cut_off.text()},
        {{"sheets", ZX_BAD_BOOKS "/encrypted.xlsx"}, 4, "The workbook is encrypted"},
        {{"read", ZX_BAD_BOOKS "/zip_bomb.xlsx"}, 1, "larger than allowed"},
        {{"read", old_format.text()}, 4, "text file"},
        {{"read", kWeather, "-s", "Nowhere"}, 5, "Nowhere"},
        {{"read", kWeather, "-s", "3"}, 5, "'3'"},
        {{"types", kWeather, "-r", "A1:"}, 5, "A1:"},
        {{"read", kWeather, "-s", "Readings", "-r", "RainByStation"}, 5, "Readings"},
        {{"read", kWeather, "-s", "Readings", "-r", "Summary!A1"}, 2, "another sheet"},
        {{"read", kWeather, "-s", "Reading"}, 5, "did you mean 'Readings'?"},
        {{"read", kWeather, "-r", "Nowhere!A1"}, 5, "no sheet 'Nowhere'"},
        {{"read", kWeather, "--dates", "%Q"}, 2, "'%Q'"},
        {{"read", kWeather, "--dates", "german"}, 2, "pattern"},
        {{"read", kWeather, "--delimiter", "::"}, 2, "one character"},
        {{"read", kWeather, "--width", "0"}, 2, "number nor none"},
        {{"read", kWeather, "--to", "json", "--bom"}, 2, "--bom"},
        {{"read", kWeather, "--header"}, 2, "--header"},
        {{"read", kWeather, kWeather, "--to", "json"}, 2, "lines name their book"},
        {{"read", kWeather, "-"}, 2, "first book"},
        {{"read", kWeather, kWeather, "-o", kWeather}, 2, kWeather},
        {{"write", target.text() + ".xlsx", "--from", "cells", "-r", "A1"}, 2, "--range"},
        {{"write", target.text() + ".xlsx", "--from", "cells", "--text"}, 2, "--text"},
        {{"read", kWeather, "-o", target.text() + "/below/nothing"}, 6, target.text()},
        {{"read", kWeather, "-s", "Summary", "--merged-columns", "error"}, 1, "Merged columns"},
        {{"--google-root", "http://127.0.0.1:1", "read", "gsheet:abc"}, 7, "gsheet:abc"},
        {{"--google-root", "http://127.0.0.1:1", "google", "size", "abc"}, 7, "abc: The request"},
        {{"--google-root", "http://example.org", "google", "size", "abc"}, 2, "https://HOST"},
        {{"google"}, 2, "A command is missing; see 'zxsheet google --help'"},
        {{"google", "read", "abc", "Data"}, 2, "RANGE"},
        {{"read", "--app", kWeather}, 8, "install"},
        {{"--app", "google", "size", "abc"}, 2, "no use for --app"},
        {{"--google-root", "http://127.0.0.1:1", "read", "--app", "gsheet:abc"}, 7, "The request"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        const Outcome outcome = run_program(c.arguments);
        EXPECT_EQ(outcome.code, c.code) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find(c.mentioned), std::string::npos) << outcome.err;
        const auto lines = std::count(outcome.err.begin(), outcome.err.end(), '\n');
        EXPECT_EQ(lines, 1) << outcome.err;
        EXPECT_TRUE(outcome.err.starts_with("zxsheet: ") &&
                    (outcome.err.ends_with(".\n") || outcome.err.ends_with("?\n")))
            << outcome.err;
    }
    EXPECT_TRUE(run_program({"read", kWeather}).err.empty()) << "the book is still whole";
}

// What a file cannot bring about: kinds of causes and the service's replies.
TEST(ExitCode, FollowsOperationAndCause) {
    using spreadsheet::error_id;
    using Kind = spreadsheet::FailureKind;
    const struct {
        const char* book;
        error_id id;
        spreadsheet::Failure failure;
        ExitCode code;
        const char* sentence;
    } cases[] = {
        {"a.xlsx",
         error_id::book_not_loaded,
         {Kind::OutOfMemory, "Too large."},
         ExitCode::Failed,
         "a.xlsx: Too large."},
        {"a.xlsx",
         error_id::book_not_created,
         {Kind::Limit, "Too many."},
         ExitCode::Failed,
         "a.xlsx: Too many."},
        {"a.xlsx",
         error_id::book_not_saved,
         {Kind::OutOfMemory, "Too large."},
         ExitCode::Failed,
         "out.xlsx: Too large."},
        {"a.xlsx",
         error_id::book_not_saved,
         {Kind::FileNotReadable, "Changed."},
         ExitCode::NotWritten,
         "out.xlsx: Changed."},
        {"a.xlsx",
         error_id::write_failed,
         {Kind::Limit, "Too many."},
         ExitCode::Failed,
         "a.xlsx: Too many."},
        {"a.xlsx",
         error_id::book_not_loaded,
         {Kind::FileNotReadable, "Denied."},
         ExitCode::NotReadable,
         "a.xlsx: Denied."},
        {"a.xlsx",
         error_id::book_not_loaded,
         {Kind::NoApplication, "None."},
         ExitCode::NoApplication,
         "a.xlsx: None."},
        {"gsheet:a",
         error_id::google_unavailable,
         {Kind::Service, "Not now.", {}, {400, "INVALID_ARGUMENT", "", "Not now."}},
         ExitCode::Service,
         "gsheet:a: Not now (INVALID_ARGUMENT)."},
        {"gsheet:a",
         error_id::google_sheet_not_found,
         {Kind::Service, "Gone.", {}, {404, "NOT_FOUND", "", "Gone."}},
         ExitCode::NotReadable,
         "gsheet:a: Google Sheet not found. The service says: Gone (NOT_FOUND)."},
        {"gsheet:a",
         error_id::google_identity_required,
         {Kind::Service, "No.", {}, {403, "PERMISSION_DENIED", "SCOPE_TOO_SMALL", "No."}},
         ExitCode::Service,
         "gsheet:a: Access was refused; set ZX_ACCESS_TOKEN to a token that may "
         "use the file, or ZX_API_KEY for reading a public spreadsheet. The "
         "service says: No (SCOPE_TOO_SMALL)."},
    };
    for (const auto& c : cases) {
        const CommandError error =
            command_error(c.id, c.failure, {BookLocation(c.book), "out.xlsx"});
        EXPECT_STREQ(error.what(), c.sentence);
        EXPECT_EQ(error.code(), c.code) << c.sentence;
    }
}

TEST(ExitCode, IsSixWhenTheStreamTakesNothing) {
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    out.setstate(std::ios::badbit);
    for (const char* word : {"read", "help"})
        EXPECT_EQ(run({word, word == std::string("help") ? "read" : kWeather}, in, out, err), 6);
    EXPECT_EQ(err.str().find("breaks off"), std::string::npos) << "nobody knows where";
}

TEST(Help, IsNotAFailure) {
    for (const char* flag : {"--help", "--version"}) {
        const Outcome outcome = run_program({flag});
        EXPECT_EQ(outcome.code, 0);
        EXPECT_NE(outcome.out.find("zxsheet"), std::string::npos);
    }
    EXPECT_NE(run_program({"read", "--help"}).out.find("--merged-columns"), std::string::npos);
    EXPECT_EQ(run_program({"help", "sheet", "add"}).out,
              run_program({"sheet", "add", "--help"}).out);
    EXPECT_EQ(run_program({"help"}).out, run_program({"--help"}).out);
    for (const char* kind : {"--man", "--bash", "--zsh", "--fish"}) {
        const std::string text = run_program({"help", kind}).out;
        for (const char* word : {"unprotect", "cells.jsonl", "google", "merged"})
            EXPECT_TRUE(kind == std::string("--man") || text.find(word) != std::string::npos)
                << kind << word;
    }
}

} // namespace
} // namespace zxsheet::test
