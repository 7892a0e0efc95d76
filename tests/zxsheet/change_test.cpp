// SPDX-License-Identifier: Apache-2.0
//
// The commands that make books and change sheets and ranges.
#include <algorithm>
#include <filesystem>

#include "tests/zxsheet/program.h"

namespace zxsheet::test {
namespace {

namespace fs = std::filesystem;

class Changes : public testing::Test {
  protected:
    Changes() {
        book_.fill(make_book(
            {{"One", "",
              "<sheetData><row r='1'><c r='A1'><v>1</v></c><c r='B1' t='inlineStr'><is><t>a text "
              "that is wider than its column</t></is></c></row><row r='2'><c r='A2'><v>2</v></c>"
              "</row></sheetData><mergeCells><mergeCell ref='A1:A2'/></mergeCells>"},
             {"Two", "state='hidden'", "<sheetData/>"},
             {"Chart", "", "", true},
             {"Safe", "", "<sheetProtection sheet='1'/><sheetData/>"}},
            "<definedNames><definedName name='Top'>One!$A$1:$B$1</definedName></definedNames>"));
    }

    /// Runs a command on the book: its name, of one or two words, before the book's path.
    Outcome run_on_book(const std::string& command, std::vector<std::string> options = {}) const {
        std::vector<std::string> arguments;
        std::istringstream words(command);
        for (std::string word; words >> word;)
            arguments.push_back(word);
        arguments.push_back(book_.text());
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run_program(arguments);
    }

    /// The sentence that the command ends with, without the book.
    std::string done(const std::string& command, std::vector<std::string> options = {}) const {
        const Outcome outcome = run_on_book(command, std::move(options));
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        const std::string before = "zxsheet: " + book_.text() + ": ";
        EXPECT_TRUE(outcome.err.starts_with(before)) << outcome.err;
        return outcome.err.substr(std::min(before.size(), outcome.err.find(';')),
                                  outcome.err.find(';') - before.size());
    }

    std::string sheets() const { return run_on_book("sheets").out; }
    /// The lines of `info` about sheets, blanks squeezed.
    bool info_has(const std::string& part) const {
        return run_on_book("info", {"--json"}).out.find(part) != std::string::npos;
    }

    TemporaryPath book_{"book.xlsx"};
};

TEST(NewCommand, MakesBooksAndReplacesNone) {
    const TemporaryPath book("made.xlsx");
    Outcome outcome = run_program({"new", book.text(), "--sheets", "3"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_TRUE(outcome.err.starts_with("zxsheet: " + book.text() + ": Made with 3 sheets; "))
        << outcome.err;
    EXPECT_EQ(run_program({"sheets", book.text()}).out, "Sheet1\nSheet2\nSheet3\n");
    const std::string bytes = book.bytes();
    outcome = run_program({"new", book.text()});
    EXPECT_EQ(outcome.code, 6);
    EXPECT_NE(outcome.err.find("--force"), std::string::npos) << outcome.err;
    EXPECT_TRUE(book.bytes() == bytes);
    EXPECT_EQ(run_program({"new", book.text(), "--force"}).code, 0);
    EXPECT_EQ(run_program({"sheets", book.text()}).out, "Sheet1\n");
}

TEST_F(Changes, AddRemoveRenameAndMoveSheets) {
    EXPECT_EQ(done("sheet add", {"Last"}), "Added sheet 'Last' as number 5");
    EXPECT_EQ(done("sheet add", {"Copy", "--at", "1", "--copy", "one"}),
              "Added sheet 'Copy' as number 1, a copy of 'One'");
    EXPECT_EQ(sheets(), "Copy\nOne\nTwo\nChart\nSafe\nLast\n");
    EXPECT_EQ(run_on_book("read", {"-s", "Copy", "-r", "A1:A2"}).out, "1\n2\n");
    EXPECT_EQ(done("sheet move", {"Chart", "--to", "1"}), "Moved sheet 'Chart' to place 1");
    EXPECT_EQ(done("sheet move", {"2", "--to", "6"}), "Moved sheet 'Copy' to place 6");
    EXPECT_EQ(sheets(), "Chart\nOne\nTwo\nSafe\nLast\nCopy\n");
    EXPECT_EQ(done("sheet rename", {"Two", "add"}), "Renamed sheet 'Two' to 'add'");
    EXPECT_EQ(done("sheet rename", {"add", "Bob's"}), "Renamed sheet 'add' to 'Bob''s'");
    EXPECT_EQ(done("sheet remove", {"chart"}), "Removed sheet 'Chart'");
    EXPECT_EQ(done("sheet remove", {"1"}), "Removed sheet 'One'");
    EXPECT_EQ(sheets(), "Bob's\nSafe\nLast\nCopy\n");
    EXPECT_EQ(run_on_book("read", {"-s", "Copy", "-r", "A1:A2"}).out, "1\n2\n");
}

TEST_F(Changes, HideShowAndProtectSheets) {
    EXPECT_EQ(done("sheet show", {"Two"}), "Made sheet 'Two' visible");
    EXPECT_TRUE(info_has("\"Two\",\"kind\":\"worksheet\",\"visibility\":\"visible\""));
    EXPECT_EQ(done("sheet hide", {"One"}), "Made sheet 'One' hidden");
    EXPECT_TRUE(info_has("\"One\",\"kind\":\"worksheet\",\"visibility\":\"hidden\""));
    EXPECT_EQ(done("sheet hide", {"One", "--very"}), "Made sheet 'One' very hidden");
    EXPECT_TRUE(info_has("\"visibility\":\"very hidden\""));
    EXPECT_EQ(done("sheet protect", {"Two"}), "Protected sheet 'Two'");
    EXPECT_EQ(done("sheet protect", {"Two"}), "Sheet 'Two' was protected already");
    EXPECT_EQ(done("sheet unprotect", {"Safe"}), "Unprotected sheet 'Safe'");
    EXPECT_TRUE(info_has("\"Safe\",\"kind\":\"worksheet\",\"visibility\":\"visible\","
                         "\"used_range\":null,\"protected\":false"));
    EXPECT_TRUE(info_has("\"used_range\":null,\"protected\":true"));
}

TEST_F(Changes, ClearUnmergeAndFitRanges) {
    EXPECT_EQ(done("unmerge", {"-r", "A1:B1"}), "Split the merged cells in 'One'!A1:B1");
    const std::vector<std::string> repeated{"--merged-rows", "repeat", "-r", "A1:A2"};
    EXPECT_EQ(run_on_book("read", repeated).out, "1\n1\n") << "only partly inside";
    EXPECT_EQ(done("unmerge", {"-r", "A:A"}), "Split the merged cells in 'One'!A1:A2");
    EXPECT_EQ(run_on_book("read", repeated).out, "1\n2\n");
    EXPECT_EQ(done("autofit"), "Fitted the columns of 'One'!A1:B2");
    EXPECT_EQ(done("clear", {"-r", "top"}), "Cleared 'One'!A1:B1");
    EXPECT_EQ(run_on_book("read").out, "2\n");
    const TemporaryPath other("other.xlsx");
    const Outcome outcome = run_on_book("clear", {"-r", "A2", "-o", other.text()});
    EXPECT_TRUE(outcome.err.starts_with("zxsheet: " + other.text())) << outcome.err;
    EXPECT_EQ(run_program({"read", other.text()}).out, "");
    EXPECT_EQ(run_on_book("read").out, "2\n");
}

TEST_F(Changes, RefuseWhatCannotBeAndLeaveTheBookAlone) {
    const TemporaryPath single("single.xlsx");
    single.fill(make_book({{"Only", "", "<sheetData/>"}}));
    const std::string book = book_.text();
    const std::string folder = testing::TempDir();
    const std::string nowhere = "--google-root=http://127.0.0.1:1";
    const struct {
        std::vector<std::string> arguments;
        int code;
        const char* mentioned;
    } cases[] = {
        {{"new", book, "--sheets", "0"}, 2, "--sheets"},
        {{"new", book, "--sheets", "65536"}, 2, "--sheets"},
        {{"sheet"}, 2, "A command is missing; see 'zxsheet sheet --help'"},
        {{"sheet", "drop", book}, 2, "no command 'drop'; see 'zxsheet sheet --help'"},
        {{"sheet", "add", book}, 2, "see 'zxsheet sheet add --help'"},
        {{"sheet", "add", book, "New", "--at", "0"}, 2, "--at"},
        {{"sheet", "add", book, "a:b"}, 2, "cannot be named"},
        {{"sheet", "rename", book, "One", "a?"}, 2, "cannot be named"},
        {{"sheet", "move", book, "One"}, 2, "--to"},
        {{"clear", book}, 2, "--range"},
        {{"sheet", "add", "no such.xlsx", "New"}, 3, "no such.xlsx"},
        {{"sheet", "remove", book, "Three"}, 5, "'Three'"},
        {{"sheet", "add", book, "New", "--at", "6"}, 5, "place 6"},
        {{"sheet", "add", book, "New", "--copy", "Three"}, 5, "'Three'"},
        {{"sheet", "move", book, "One", "--to", "5"}, 5, "place 5"},
        {{"sheet", "hide", book, "Chart"}, 5, "chart sheet"},
        {{"clear", book, "-r", "A0"}, 5, "'A0'"},
        {{"autofit", book, "-s", "Two"}, 5, "empty"},
        {{"sheet", "add", book, "ONE"}, 6, "ONE"},
        {{"sheet", "add", book, "'One"}, 6, "apostrophe"},
        {{"sheet", "rename", book, "One", "two"}, 6, "two"},
        {{"sheet", "remove", single.text(), "1"}, 6, "sheet"},
        {{"sheet", "hide", single.text(), "1"}, 6, "visible"},
        {{"clear", book, "-s", "Safe", "-r", "A1"}, 6, "protected"},
        {{"sheet", "add", book, "New", "-o", book + ".xlsm"}, 6, "end with .xlsx"},
        {{"sheet", "add", book, "New", "-o", folder + "/" + std::string(300, 'x') + ".xlsx"},
         6,
         "xxx"},
        {{"new", folder + "/nowhere/x.xlsx"}, 6, "x.xlsx"},
        {{"new", "x.ods"}, 6, ".xlsm"},
        {{"new", "gsheet:abc"}, 2, "google create"},
        {{nowhere, "sheet", "remove", "gsheet:abc", "1"}, 7, "gsheet:abc: The request failed"},
        {{"new", "no such.xlsx", "--app"}, 8, "install"},
        {{"--app", "sheet", "show", book, "Two"}, 8, "install"},
    };
    const std::string bytes = book_.bytes();
    const std::string single_bytes = single.bytes();
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        const Outcome outcome = run_program(c.arguments);
        EXPECT_EQ(outcome.code, c.code) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find(c.mentioned), std::string::npos) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(outcome.err.find("[LIBXL"), std::string::npos) << outcome.err;
    }
    EXPECT_TRUE(book_.bytes() == bytes);
    EXPECT_TRUE(single.bytes() == single_bytes);
}

// A file stands where a folder would have to be, a folder where the file would.
TEST_F(Changes, LeaveNothingBehindWhenTheTargetCannotBe) {
    const TemporaryPath folder("folder");
    fs::create_directories(fs::path(folder.text()) / "target.xlsx");
    for (const std::string target : {"target.xlsx", "none/target.xlsx"}) {
        const Outcome outcome =
            run_on_book("sheet add", {"New", "-o", folder.text() + "/" + target});
        EXPECT_EQ(outcome.code, 6) << outcome.err;
        EXPECT_NE(outcome.err.find(target), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.text()), {}), 1);
    EXPECT_TRUE(fs::is_empty(fs::path(folder.text()) / "target.xlsx"));
}

TEST(ChangingCommands, HaveHelpWithAnExample) {
    for (const std::string name : {"new", "write", "clear", "unmerge", "autofit", "sheet add",
                                   "sheet remove", "sheet rename", "sheet move", "sheet hide",
                                   "sheet show", "sheet protect", "sheet unprotect"}) {
        std::vector<std::string> arguments;
        std::istringstream words(name);
        for (std::string word; words >> word;)
            arguments.push_back(word);
        arguments.push_back("--help");
        const Outcome outcome = run_program(arguments);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_NE(outcome.out.find("Example: zxsheet " + name + " book.xlsx"), std::string::npos)
            << outcome.out;
    }
}

} // namespace
} // namespace zxsheet::test
