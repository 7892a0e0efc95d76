// SPDX-License-Identifier: Apache-2.0
//
// How the program fails: exit codes and the sentence on standard error.
#include <algorithm>

#include "tests/zxsheet/program.h"

namespace zxsheet::test {
namespace {

const std::string kWeather = ZX_EXAMPLES "/weather.xlsx";

TEST(ExitCode, TellsFailuresApart) {
    const TemporaryPath plain_text("text.xlsx");
    const TemporaryPath cut_off("cut.xlsx");
    const TemporaryPath encrypted("encrypted.xlsx");
    const TemporaryPath old_format("old.xls");
    const TemporaryPath chart("chart.xlsx");
    const TemporaryPath target("target.csv");
    const TemporaryPath many_lines("lines.xlsx");
    plain_text.fill("a,b\n1,2\n");
    cut_off.fill(make_book({{"Data", "", "<sheetData/>"}}).substr(0, 300));
    encrypted.fill(std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) + std::string(600, '\0'));
    old_format.fill("anything");
    chart.fill(make_book({{"Chart", "", "", true}, {"Data", "", "<sheetData/>"}}));
    many_lines.fill(make_book({{"two&#10;lines", "", "<sheetData><row r='0'/></sheetData>"}}));
    const std::string folder = testing::TempDir();
    const struct {
        std::vector<std::string> arguments;
        int code;
        std::string mentioned; ///< in the sentence
    } cases[] = {
        {{}, 2, "A command is missing"},
        {{"unknown"}, 2, "no command 'unknown'"},
        {{"--wrong", "unknown"}, 2, "no option '--wrong'"},
        {{"read", kWeather, "--to"}, 2, "--to needs exactly one value"},
        {{"read", kWeather, "-r", "A1", "-r", "B2"}, 2, "--range needs exactly one value"},
        {{"read", kWeather, "surplus"}, 2, "'zxsheet read --help'"},
        {{"read"}, 2, "BOOK"},
        {{"read", kWeather, "--to", "xml"}, 2, "csv, tsv"},
        {{"read", kWeather, "--merged-rows", "never"}, 2, "omit"},
        {{"read", kWeather, "-o", kWeather}, 2, kWeather},
        {{"read", "no such file.xlsx"}, 3, "no such file.xlsx"},
        {{"sheets", "no such file.xls"}, 3, "no such file.xls"},
        {{"info", folder}, 3, "folder"},
        {{"read", plain_text.text()}, 4, plain_text.text()},
        {{"read", many_lines.text()}, 4, "two lines"},
        {{"info", cut_off.text()}, 4, cut_off.text()},
        {{"sheets", encrypted.text()}, 4, encrypted.text()},
        {{"read", old_format.text()}, 4, old_format.text()},
        {{"read", kWeather, "-s", "Nowhere"}, 5, "Nowhere"},
        {{"read", kWeather, "-s", "0"}, 5, "'0'"},
        {{"read", kWeather, "-s", "3"}, 5, "'3'"},
        {{"types", kWeather, "-r", "A1:"}, 5, "A1:"},
        {{"types", kWeather, "-r", "XFE1"}, 5, "XFE1"},
        {{"read", kWeather, "-r", "RainByStation"}, 5, "Readings"}, // a name of the other sheet
        {{"read", chart.text(), "-s", "Chart"}, 5, "chart"},
        {{"read", kWeather, "-o", target.text() + "/below/nothing"}, 6, target.text()},
        {{"read", kWeather, "-s", "Summary", "--merged-columns", "error"}, 1, "Merged columns"},
        {{"--google-root", "http://127.0.0.1:1", "read", "gsheet:abc"}, 7, "gsheet:abc"},
        {{"--google-root", "http://127.0.0.1:1", "google", "size", "abc"}, 7, "abc: The request"},
        {{"--google-root", "http://example.org", "google", "size", "abc"}, 2, "https://HOST"},
        {{"google"}, 2, "A command is missing; see 'zxsheet google --help'"},
        {{"google", "unknown"}, 2, "no command 'unknown'"},
        {{"google", "read", "abc", "Data"}, 2, "RANGE"},
        {{"read", kWeather, "--app"}, 8, "application"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        const Outcome outcome = run_program(c.arguments);
        EXPECT_EQ(outcome.code, c.code) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find(c.mentioned), std::string::npos) << outcome.err;
        const auto lines = std::count(outcome.err.begin(), outcome.err.end(), '\n');
        EXPECT_EQ(lines, 1) << outcome.err;
        EXPECT_TRUE(outcome.err.starts_with("zxsheet: ") && outcome.err.ends_with(".\n"))
            << outcome.err;
    }
    EXPECT_TRUE(run_program({"read", kWeather}).err.empty()) << "the book is still whole";
}

TEST(ExitCode, NamesTheCauseOfAFailedLoad) {
    const TemporaryPath encrypted("encrypted.xlsx");
    encrypted.fill(std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) + std::string(600, '\0'));
    const std::string sentence = run_program({"info", encrypted.text()}).err;
    EXPECT_EQ(sentence.find("[LIBXL"), std::string::npos) << sentence;
    EXPECT_EQ(sentence.find("Could not load"), std::string::npos)
        << "a cause is known: " << sentence;
    EXPECT_NE(run_program({"info", "no such file.xlsx"}).err, sentence);
}

TEST(ExitCode, IsSixWhenTheStreamTakesNothing) {
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    out.setstate(std::ios::badbit);
    EXPECT_EQ(run({"read", kWeather}, in, out, err), 6);
}

TEST(Help, IsNoFailure) {
    for (const char* flag : {"--help", "--version"}) {
        const Outcome outcome = run_program({flag});
        EXPECT_EQ(outcome.code, 0);
        EXPECT_NE(outcome.out.find("zxsheet"), std::string::npos);
    }
    EXPECT_NE(run_program({"read", "--help"}).out.find("--merged-columns"), std::string::npos);
}

} // namespace
} // namespace zxsheet::test
