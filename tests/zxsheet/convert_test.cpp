// SPDX-License-Identifier: Apache-2.0
//
// Books into other formats, through streams, and compared.
#include <algorithm>

#include "tests/zxsheet/program.h"
#include "zxsheet/command_error.h"
#include "zxsheet/streamed_book.h"

namespace zxsheet::test {
namespace {

const std::string kWeather = ZX_EXAMPLES "/weather.xlsx";

/// Standard output of a command that must succeed.
std::string output(const std::vector<std::string>& arguments, const std::string& input = {}) {
    const Outcome outcome = run_program(arguments, input);
    EXPECT_EQ(outcome.code, 0) << testing::PrintToString(arguments) << outcome.err;
    return outcome.out;
}

std::string bytes_of(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

TEST(ConvertCommand, KeepsValuesInEveryFormat) {
    const std::string csv = output({"read", kWeather});
    for (const char* name : {"out.xlsm", "out.XLTX", "out.xls", "out.csv"}) {
        SCOPED_TRACE(name);
        const TemporaryPath out(name), back("back.xlsx");
        output({"convert", kWeather, out.text()});
        if (std::string(name) == "out.csv") {
            EXPECT_EQ(out.bytes(), csv);
            continue;
        }
        EXPECT_EQ(output({"read", out.text()}), csv);
        EXPECT_EQ(output({"read", out.text(), "-s", "Summary", "--to", "json"}),
                  output({"read", kWeather, "-s", "Summary", "--to", "json"}));
        const std::string said = run_program({"convert", out.text(), back.text()}).err;
        EXPECT_EQ(said.find("macros") != said.npos, std::string(name) == "out.xlsm") << said;
        EXPECT_EQ(output({"diff", kWeather, back.text(), "-s", "Summary"}), "");
    }
    const TemporaryPath folder("sheets"), wide("wide.xlsx"), old("old.xls");
    output({"convert", kWeather, "--each-sheet", folder.text(), "--to", "jsonl"});
    EXPECT_EQ(bytes_of(folder.text() + "/Summary.jsonl"),
              output({"read", kWeather, "-s", "Summary", "--to", "jsonl"}));
    wide.fill(make_book({{"W", "",
                          "<sheetData><row r='70000'><c r='A70000'><v>1</v></c></row>"
                          "</sheetData>"}}));
    const struct {
        std::vector<std::string> arguments;
        int code;
        const char* mentioned;
    } cases[] = {
        {{"convert", wide.text(), old.text()}, 6, "larger than a sheet of an XLS book"},
        {{"convert", kWeather}, 2, "either OUT"},
        {{"convert", kWeather, kWeather}, 2, "replace the book"},
        {{"convert", kWeather, wide.text(), "--to", "csv"}, 2, "is text"},
        {{"convert", kWeather, "--each-sheet", folder.text(), "-s", "1"}, 2, "--sheet"},
        {{"convert", kWeather, "gsheet:abc"}, 2, "google upload"},
        {{"convert", kWeather, "-"}, 0, "standard output: Converted"},
        {{"convert", kWeather, wide.text() + ".pdf"}, 6, ".xlsx"},
        {{"convert", kWeather, old.text(), "-s", "Summary"}, 2, "--sheet"},
        {{"read", kWeather, "-o", old.text()}, 2, "convert"},
    };
    for (const auto& c : cases) {
        const Outcome outcome = run_program(c.arguments);
        EXPECT_EQ(outcome.code, c.code) << outcome.err;
        EXPECT_NE(outcome.err.find(c.mentioned), std::string::npos) << outcome.err;
    }
    EXPECT_FALSE(old.exists());
}

TEST(ConvertCommand, GoesByTheContentOfTheBook) {
    const TemporaryPath named_xls("a.xls"), made("made.xls"), back("back.xlsx"), misnamed("b.xlsx");
    named_xls.fill(bytes_of(kWeather));
    output({"convert", named_xls.text(), made.text()});
    EXPECT_TRUE(made.bytes().starts_with("\xD0\xCF")) << "an XLS file";
    misnamed.fill(made.bytes());
    EXPECT_TRUE(output({"info", misnamed.text()}).find("XLS\n") != std::string::npos);
    output({"convert", misnamed.text(), back.text()});
    EXPECT_TRUE(back.bytes().starts_with("PK"));
    EXPECT_EQ(output({"read", back.text()}), output({"read", kWeather}));
}

TEST(ConvertCommand, GivesEverySheetAFileOfItsOwn) {
    const TemporaryPath book("names.xlsx"), folder("files");
    const auto sheet = [](const char* name, const char* value) {
        return MadeSheet{name, "",
                         std::string("<sheetData><row r='1'><c r='A1'><v>") + value +
                             "</v></c></row></sheetData>"};
    };
    book.fill(make_book({sheet("a&lt;b", "1"), sheet("a|b", "2"), sheet("A_B", "3")}));
    output({"convert", book.text(), "--each-sheet", folder.text()});
    for (const auto& [name, content] :
         {std::pair("a_b", "1\n"), {"a_b (2)", "2\n"}, {"A_B (3)", "3\n"}})
        EXPECT_EQ(bytes_of(folder.text() + '/' + name + ".csv"), content);
}

TEST(Streams, CarryBooksInAndOut) {
    const std::string book = bytes_of(kWeather);
    EXPECT_EQ(output({"read", "-"}, book), output({"read", kWeather}));
    const std::string changed = output({"clear", "-", "-r", "A2:F2", "-o", "-"}, book);
    const TemporaryPath saved("saved.xlsx");
    saved.fill(changed);
    EXPECT_EQ(output({"read", saved.text(), "-r", "A2:B2"}), ",\n");
    EXPECT_EQ(output({"read", kWeather, "-r", "A1", "-o", "-"}),
              output({"read", kWeather, "-r", "A1"}));
    EXPECT_EQ(output({"convert", "-", "-", "--to", "csv"}, book), output({"read", kWeather}));
    const TemporaryPath macros("saved.xlsm");
    output({"clear", "-", "-r", "A1", "-o", macros.text()}, book);
    Outcome outcome = run_program({"clear", "-", "-r", "A1"}, book);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_NE(outcome.err.find("--output"), std::string::npos) << outcome.err;
    outcome = run_program({"read", "-"}, "no book");
    EXPECT_EQ(outcome.code, 4);
    EXPECT_NE(outcome.err.find("standard input: "), std::string::npos) << outcome.err;
    EXPECT_EQ(run_program({"write", "-", "-o", "-"}, book).code, 2);

    std::istringstream endless(std::string(1 << 20, 'x'));
    BookLocation location("-");
    StreamedBook streamed;
    EXPECT_THROW(streamed.fetch(location, {}, endless, 1 << 19), CommandError);
}

TEST(DiffCommand, ListsCellsThatDiffer) {
    const auto sheet = [](const char* name, const char* rows) {
        return MadeSheet{name, "", std::string("<sheetData>") + rows + "</sheetData>"};
    };
    const TemporaryPath before("a.xlsx"), after("b.xlsx");
    before.fill(make_book(
        {sheet("One", "<row r='1'><c r='A1'><v>1</v></c><c r='B1' t='str'><v>x</v></c></row>"
                      "<row r='900'><c r='C900' s='1'/></row>"
                      "<row r='1000'><c r='A1000'><v>5</v></c></row>"),
         sheet("Gone", "<row r='2'><c r='B2' t='b'><v>1</v></c></row>")}));
    after.fill(make_book(
        {sheet("New", "<row r='1'><c r='A1' t='e'><v>#N/A</v></c></row>"),
         sheet("one", "<row r='1'><c r='A1' t='str'><v>1</v></c><c r='B1' t='str'><v>x</v></c>"
                      "<c r='XFD1' s='1'><v>61</v></c></row>")}));
    const Outcome outcome = run_program({"diff", before.text(), after.text()});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "'One'!A1\t1\t\"1\"\n'One'!XFD1\tnull\t1900-03-01\n"
                           "'One'!A1000\t5\tnull\n'Gone'!B2\ttrue\tnull\n"
                           "'New'!A1\tnull\t#N/A\n");
    EXPECT_EQ(run_program({"diff", before.text(), after.text(), "-s", "one", "--to", "json"}).out,
              "[\n{\"cell\":\"'One'!A1\",\"old\":1,\"old_type\":\"number\",\"new\":\"1\",\"new_"
              "type\":\"text\"},\n"
              "{\"cell\":\"'One'!XFD1\",\"old\":null,\"old_type\":\"empty\",\"new\":\"1900-03-01\","
              "\"new_type\":\"date\"},\n"
              "{\"cell\":\"'One'!A1000\",\"old\":5,\"old_type\":\"number\",\"new\":null,\"new_"
              "type\":\"empty\"}\n]\n");
    EXPECT_EQ(output({"diff", before.text(), before.text(), "--to", "json"}), "[]\n");
    const Outcome online =
        run_program({"--google-root", "http://127.0.0.1:1", "diff", before.text(), "gsheet:abc"});
    EXPECT_EQ(online.code, 7) << online.err;
    EXPECT_NE(online.err.find("gsheet:abc: "), std::string::npos) << online.err;
    const Outcome missing = run_program({"diff", before.text(), "missing.xlsx"});
    EXPECT_EQ(missing.code, 3);
    EXPECT_NE(missing.err.find("missing.xlsx: There is no"), std::string::npos) << missing.err;
}

} // namespace
} // namespace zxsheet::test
