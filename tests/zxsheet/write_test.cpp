// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet write`: what it puts into books, seen through `zxsheet read`.
#include <algorithm>

#include "tests/zxsheet/program.h"

namespace zxsheet::test {
namespace {

const std::string kWeather = ZX_EXAMPLES "/weather.xlsx";

/// Standard output of a command that must succeed.
std::string output(const std::vector<std::string>& arguments) {
    const Outcome outcome = run_program(arguments);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    return outcome.out;
}

/// The sentence of a command that must succeed.
std::string sentence(const std::vector<std::string>& arguments, const std::string& input = {}) {
    const Outcome outcome = run_program(arguments, input);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    return outcome.err;
}

bool mentions(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(WriteCommand, MakesABookOfEveryFormat) {
    const std::string csv = "name,count,when,good\n"
                            "\"two\nlines\",-2.5,2024-03-01,true\n"
                            "007,1e3,2024-03-01 13:05:00,FALSE\n"
                            ",,,\n"
                            "\xF0\x9F\x98\x80\n";
    for (const char* name : {"new.xlsx", "new.XLSM", "new.xltx", "new.xltm"}) {
        const TemporaryPath book(name);
        const std::string done = sentence({"write", book.text()}, csv);
        EXPECT_TRUE(mentions(done, "Made the book, wrote 13 cells to 'Sheet1'!A1:D5; ")) << done;
        EXPECT_TRUE(mentions(done, " parts written.")) << done;
        EXPECT_EQ(output({"read", book.text()}), "name,count,when,good\n"
                                                 "\"two\nlines\",-2.5,2024-03-01,true\n"
                                                 "007,1000,2024-03-01T13:05:00,false\n"
                                                 ",,,\n"
                                                 "\xF0\x9F\x98\x80,,,\n");
        EXPECT_EQ(output({"types", book.text(), "-r", "A2:D4"}), "text\tnumber\tdate\tboolean\n"
                                                                 "text\tnumber\tdate\tboolean\n"
                                                                 "empty\tempty\tempty\tempty\n");
    }
}

TEST(WriteCommand, ReadsEveryKindOfInput) {
    const TemporaryPath csv("data.csv"), tsv("data.TSV"), json("data.json"), book("book.xlsx");
    csv.fill("a;b\n1,5;2\n");
    tsv.fill("b\t2\n");
    json.fill("{\"sheet\":\"J\",\"range\":\"B2\",\"types\":[[\"date\"]],\"values\":[[61]]}");
    const struct {
        std::vector<std::string> options;
        const char* input;
        const char* done;
    } cases[] = {
        {{"-s", "C", csv.text()}, "", "Made the book, wrote 4 cells to 'C'!A1:B2"},
        {{"-s", "c", "-r", "A2", "-", "--from", "tsv"}, "x,y\t3", "Wrote 2 cells to 'C'!A2:B2"},
        {{"-s", "T", tsv.text()}, "", "Added sheet 'T', wrote 2 cells to 'T'!A1:B1"},
        {{"-s", "2", "-r", "c1:d2", "--text"}, "007,1\n", "Wrote 2 cells to 'T'!C1:D1"},
        {{json.text()}, "", "Added sheet 'J', wrote 1 cell to 'J'!B2"},
        {{json.text(), "-s", "C", "-r", "D4"}, "", "Wrote 1 cell to 'C'!D4"},
        {{"-s", "Nothing"}, "", "Added sheet 'Nothing', wrote nothing to 'Nothing'"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> arguments{"write", book.text()};
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        const std::string done = sentence(arguments, c.input);
        EXPECT_TRUE(mentions(done, c.done)) << done << c.done;
    }
    EXPECT_EQ(output({"sheets", book.text()}), "C\nT\nJ\nNothing\n");
    EXPECT_EQ(output({"read", book.text()}), "a,b,,\n\"x,y\",3,,\n,,,\n,,,1900-03-01\n");
    EXPECT_EQ(output({"types", book.text(), "-s", "T"}), "text\tnumber\ttext\ttext\n");
    EXPECT_EQ(output({"read", book.text(), "-s", "J", "-r", "A1:B2"}), ",\n,1900-03-01\n");
}

TEST(WriteCommand, TakesBackWhatReadPrints) {
    for (const char* sheet : {"Readings", "Summary"}) {
        const TemporaryPath copy("copy.xlsx");
        std::string json = output({"read", kWeather, "-s", sheet, "--to", "json"});
        sentence({"write", copy.text(), "--from", "json"}, json);
        // Errors are what formulas have; there is no way to write them.
        for (std::size_t at; (at = json.find("\"error\"")) != std::string::npos;)
            json.replace(at, 7, "\"text\"");
        EXPECT_EQ(output({"read", copy.text(), "--to", "json"}), json);
        const TemporaryPath again("again.xlsx");
        const std::string csv = output({"read", kWeather, "-s", sheet});
        sentence({"write", again.text()}, csv);
        EXPECT_EQ(output({"read", again.text()}), csv);
    }
}

TEST(WriteCommand, KeepsDatesThatABookCannotShowAsText) {
    const TemporaryPath book("1904.xlsx");
    book.fill(make_book({{"Data", "", "<sheetData/>"}}, "<workbookPr date1904='1'/>"));
    sentence({"write", book.text()}, "2024-03-01T06:00:00,1904-01-02,1903-12-31\n");
    sentence({"write", book.text(), "--from", "json", "-r", "A2"},
             "{\"types\":[[\"date\",\"date\"]],\"values\":[[1463,1461]]}");
    EXPECT_EQ(output({"read", book.text()}),
              "2024-03-01T06:00:00,1904-01-02,1903-12-31\n1904-01-02,1903-12-31,\n");
    EXPECT_EQ(output({"types", book.text()}), "date\tdate\ttext\ndate\ttext\tempty\n");
}

TEST(WriteCommand, SplitsNoTextOfASingleColumn) {
    const TemporaryPath book("column.xlsx"), again("again.xlsx");
    sentence({"write", book.text()}, "\"a;b\"\nc;d\n");
    const std::string csv = output({"read", book.text()});
    sentence({"write", again.text()}, csv);
    EXPECT_EQ(output({"read", again.text(), "--to", "jsonl"}), "[\"a;b\"]\n[\"c;d\"]\n");
}

// More rows than are written at a time, of lengths that no rectangle fits.
TEST(WriteCommand, JoinsBlocks) {
    std::string csv;
    std::string expected;
    for (int row = 0; row < 70'000; ++row) {
        const int columns = row % 7000 == 6999 ? 20 : row % 3 + 1;
        std::string line;
        for (int column = 0; column < columns; ++column)
            line += (column == 0 ? "" : ",") + std::to_string(row * 100 + column);
        csv += line + '\n';
        expected += line + std::string(static_cast<std::size_t>(20 - columns), ',') + '\n';
    }
    const TemporaryPath book("ragged.xlsx");
    EXPECT_TRUE(mentions(sentence({"write", book.text()}, csv), "'Sheet1'!A1:T70000"));
    EXPECT_TRUE(output({"read", book.text()}) == expected);
}

TEST(WriteCommand, ReplacesTheWholeRectangle) {
    for (const bool keeps_format : {false, true}) {
        const TemporaryPath book("old.xlsx");
        book.fill(make_book({{"Old", "",
                              "<sheetData><row r='1'><c r='A1' s='1'><v>1</v></c>"
                              "<c r='B1' s='1'><v>2</v></c><c r='C1'><v>3</v></c></row>"
                              "<row r='2'><c r='A2'><v>4</v></c><c r='B2' s='1'><v>5</v></c>"
                              "<c r='C2'><v>6</v></c></row></sheetData>"}}));
        std::vector<std::string> arguments{"write", book.text()};
        arguments.insert(arguments.end(), {"-r", "A1"});
        if (!keeps_format) arguments.push_back("--plain");
        sentence(arguments, "61\n7,8\n");
        EXPECT_EQ(output({"read", book.text()}),
                  keeps_format ? "1900-03-01,,3\n7,1900-01-08,6\n" : "61,,3\n7,8,6\n");
        EXPECT_EQ(output({"types", book.text(), "-r", "B1"}), keeps_format ? "other\n" : "empty\n");
    }
}

// Rows after the last one, by names and without; nothing that stays; formats of dates.
TEST(WriteCommand, AddsToABookAndReplacesIt) {
    const std::string before =
        "<sheetData><row r='2'><c r='B2' t='str'><v>Name</v></c>"
        "<c r='C2' t='str'><v>day</v></c><c r='D2' t='str'><v>n</v></c></row>"
        "<row r='3'><c r='B3' t='str'><v>a</v></c><c r='C3' s='1'><v>61</v>"
        "</c><c r='D3' s='3'><v>1</v></c></row>"
        "<row r='9'><c r='C9' s='1'/></row></sheetData>";
    const struct {
        std::vector<std::string> options;
        std::string input;
        std::string expected; ///< `read -r B2:D5`
    } cases[] = {
        {{"--append"}, "b,1901-01-01\n", "Name,day,n\na,1900-03-01,24:00:00\nb,1901-01-01,\n,,\n"},
        {{"--append", "--header"},
         "N,name\n2,b\n3\n",
         "Name,day,n\na,1900-03-01,24:00:00\nb,,2\n,,3\n"},
        {{"--append", "--from", "jsonl"},
         "{\"day\":\"1901-01-01\",\"name\":\"b\"}\n {\"name\":null}",
         "Name,day,n\na,1900-03-01,24:00:00\nb,1901-01-01,\n,,\n"},
        {{"--replace", "-r", "B3"},
         "1901-01-01,7,2\n",
         ",,\n1901-01-01,1900-01-07,48:00:00\n,,\n,,\n"},
        {{"-r", "B3", "--plain"}, "b,7,2\n", "Name,day,n\nb,7,2\n,,\n,,\n"},
        {{"-r", "B3", "--from", "json"},
         "[[\"b\",\"x\"],[null,true]]",
         "Name,day,n\nb,x,24:00:00\n,true,\n,,\n"},
        {{"-r", "Data!D2:D5", "--from", "json"},
         "[{\"m\":1},{\"m\":2}]",
         "Name,day,m\na,1900-03-01,24:00:00\n,,2\n,,\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.options));
        const TemporaryPath book("log.xlsx");
        book.fill(make_book({{"Data", "", before}}));
        std::vector<std::string> arguments{"write", book.text()};
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        sentence(arguments, c.input);
        EXPECT_EQ(output({"read", book.text(), "-r", "B2:D5"}), c.expected);
    }
    // What read prints comes back the same.
    for (const char* format : {"csv", "tsv", "json", "jsonl", "records"}) {
        const TemporaryPath book("again.xlsx"), again("again2.xlsx");
        sentence({"write", book.text()}, "name,day,ok\n007,2024-03-01,true\n\"x,y\",,-1.5\n");
        const std::string printed = output({"read", book.text(), "--to", format});
        const std::string from = format == std::string("records") ? "json" : format;
        sentence({"write", again.text(), "--from", from}, printed);
        EXPECT_EQ(output({"read", again.text()}), output({"read", book.text()})) << format;
    }
}

TEST(WriteCommand, SavesIntoAnotherFile) {
    const TemporaryPath other("other.xlsx");
    const std::string before = output({"read", kWeather});
    const std::string done = sentence({"write", kWeather, "-r", "A1", "-o", other.text()}, "1\n");
    EXPECT_TRUE(done.starts_with("zxsheet: " + other.text() + ": Wrote 1 cell")) << done;
    EXPECT_TRUE(mentions(done, " kept, ")) << done;
    EXPECT_EQ(output({"read", kWeather}), before);
    EXPECT_EQ(output({"read", other.text(), "-r", "A1"}), "1\n");
    EXPECT_EQ(output({"read", other.text(), "-s", "Summary"}),
              output({"read", kWeather, "-s", "Summary"}));
    sentence({"write", kWeather, "-r", "rainbystation", "-o", other.text()}, "X,1\n");
    EXPECT_EQ(output({"read", other.text(), "-r", "Summary!A2:B3"}), "X,1\nSummit,2.4\n");
}

TEST(WriteCommand, LeavesTheBookAloneWhenItFails) {
    const TemporaryPath book("kept.xlsx"), damaged("damaged.xlsx"), missing("missing.xlsx");
    book.fill(
        make_book({{"Data", "", "<sheetData><row r='1'><c r='A1'><v>1</v></c></row></sheetData>"},
                   {"Locked", "", "<sheetProtection sheet='1'/><sheetData/>"},
                   {"Chart", "", "", true}}));
    damaged.fill("PK is no workbook");
    const std::string wide = std::string(16'384, ',') + '\n';
    const struct {
        std::vector<std::string> arguments;
        std::string input;
        int code;
        const char* mentioned;
    } cases[] = {
        {{book.text(), "--from", "xml"}, "1", 2, "csv, tsv, json"},
        {{book.text()}, "1", 2, "'Data' has values already; say where"},
        {{book.text(), kWeather}, "", 2, "is a workbook"},
        {{book.text(), "--append", "--replace"}, "1", 2, "either"},
        {{book.text(), "--append", "--header"}, "2\n1\n", 5, "no column '2'"},
        {{book.text(), "--append", "--from", "json"}, "[{\"1\":1},{\"b\":2}]", 1, "no \"b\""},
        {{book.text(), "--from", "jsonl", "-s", "1"}, "[1]\n[1,[2]]", 1, "Line 2, column 4"},
        {{book.text(), "-s", "a/b"}, "1", 2, "cannot be named 'a/b'"},
        {{missing.text(), "-s", "[x]"}, "1", 2, "cannot be named '[x]'"},
        {{book.text(), "no such.csv"}, "", 3, "no such.csv: There is no such file"},
        {{book.text(), testing::TempDir()}, "", 3, "folder"},
        {{damaged.text()}, "1", 4, "damaged.xlsx"},
        {{book.text(), "-s", "7"}, "1", 5, "'7'"},
        {{missing.text(), "-s", "2"}, "1", 5, "'2'"},
        {{book.text(), "-s", "Chart"}, "1", 5, "chart sheet"},
        {{book.text(), "-r", "A1:"}, "1", 5, "'A1:'"},
        {{book.text(), "-s", "Data", "-r", "Locked!A1"}, "1", 2, "another sheet than 'Data'"},
        {{book.text(), "-r", "XFD1"}, "1,2", 6, "room for 1 column "},
        {{book.text(), "-r", "A1048576"}, "1\n2\n", 6, "room for 1 row "},
        {{book.text(), "-r", "A1:B2"}, "1\n2\n3\n", 6, "room for 2 rows in 'Data'!A1:B2"},
        {{book.text(), "-s", "1"}, wide, 6, "Row 1 of the data has more columns"},
        {{book.text(), "-s", "1"},
         "1\n" + std::string(32'768, 'x'),
         6,
         "Row 2 of the data has text"},
        {{book.text(), "-s", "Locked"}, "1", 6, "'Locked'!A1 is protected"},
        {{book.text(), "-o", "other.xlsm"}, "1", 6, "other.xlsm: The name must end with .xlsx"},
        {{missing.text() + ".ods"}, "1", 6, ".xltm"},
        {{missing.text() + "/below.xlsx"}, "1", 6, "below.xlsx"},
        {{book.text(), "-s", "1"}, "1\n\"2", 1, "Line 2"},
        {{book.text(), "--from", "json"}, "{\"range\":\"A1\",\"values\":[[1],[2]", 1, "column 31"},
        {{"gsheet:abc", "-o", "other.xlsx"}, "1", 7, "gsheet:abc: The request failed"},
        {{missing.text(), "--app"}, "1", 8, "install"},
    };
    const std::string bytes = book.bytes();
    for (const auto& c : cases) {
        std::vector<std::string> arguments{"write"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        const Outcome outcome = run_program(arguments, c.input);
        EXPECT_EQ(outcome.code, c.code) << outcome.err;
        EXPECT_TRUE(mentions(outcome.err, c.mentioned)) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_TRUE(outcome.err.ends_with(".\n")) << outcome.err;
    }
    EXPECT_TRUE(book.bytes() == bytes);
    EXPECT_EQ(damaged.bytes(), "PK is no workbook");
    EXPECT_FALSE(missing.exists());
}

TEST(WriteCommand, MakesFormulasWhereAskedTo) {
    const TemporaryPath book("formulas.xlsx"), copy("copy.xlsx"), old("old.xls");
    const std::string data = "a,b,sum\n1,2,=A2+B2\n3,=,\"=SUM(A3,B3)&\"\"<\"\"\"\n";
    sentence({"write", book.text()}, data);
    EXPECT_EQ(output({"types", book.text(), "-r", "C2:C3"}), "text\ntext\n") << "data stays data";
    sentence({"write", book.text(), "--replace", "--formulas"}, data);
    EXPECT_EQ(output({"read", book.text(), "--formulas"}), data);
    Outcome outcome = run_program({"read", book.text()});
    EXPECT_EQ(outcome.out, "a,b,sum\n1,2,\n3,=,\n");
    EXPECT_TRUE(mentions(outcome.err, "2 formulas without a stored result")) << outcome.err;
    EXPECT_TRUE(mentions(output({"info", book.text()}), "2 formulas, 2 without a result"));
    // After them, in the columns of their names, without the rows that are left out.
    sentence({"write", book.text(), "--append", "--header", "--formulas"},
             "sum,a\n=CONCAT(A4),7\n");
    sentence({"write", book.text(), "-r", "E1", "--formulas", "--skip", "1"}, "=x y\n=A1\n");
    EXPECT_EQ(output({"read", book.text(), "--formulas"}),
              "a,b,sum,,=A1\n1,2,=A2+B2,,\n3,=,\"=SUM(A3,B3)&\"\"<\"\"\",,\n7,,=CONCAT(A4),,\n");
    sentence({"write", copy.text(), "--formulas"}, "=B1\nx\n=B2\n");
    EXPECT_EQ(output({"read", copy.text(), "--formulas"}), "=B1\nx\n=B2\n");
    // What is printed is taken, whatever the format.
    for (const char* format : {"csv", "tsv", "json", "jsonl", "cells", "cells.jsonl"}) {
        const std::string printed = output({"read", book.text(), "--formulas", "--to", format});
        sentence({"write", copy.text(), "--replace", "--formulas", "--from", format}, printed);
        EXPECT_EQ(output({"read", copy.text(), "--formulas", "--to", format}), printed);
    }
    const std::string before = book.bytes();
    const struct {
        std::vector<std::string> arguments;
        const char* input;
        const char* mentioned;
    } refusals[] = {
        {{book.text(), "-r", "B2"}, "1\n2,=1+\n", "'Sheet1'!C3: Not a formula: \"=1+\": "},
        {{book.text(), "-r", "B2", "--from", "cells"}, "", "--range"},
        {{book.text(), "--from", "cells"}, "D9\ttext\t=1+\n", "'Sheet1'!D9: \"=1+\": "},
        {{book.text(), "-r", "B2"},
         "=Missing!A1\n",
         "B2: the formula refers to a sheet \"Missing\""},
        {{book.text(), "-r", "B2"}, "=T[a]\n", "refers to a table \"T\""},
        {{old.text()}, "=1\n", "convert it to .xlsx"},
    };
    for (const auto& refusal : refusals) {
        std::vector<std::string> arguments{"write", "--formulas"};
        arguments.insert(arguments.end(), refusal.arguments.begin(), refusal.arguments.end());
        outcome = run_program(arguments, refusal.input);
        EXPECT_NE(outcome.code, 0) << refusal.mentioned;
        EXPECT_TRUE(mentions(outcome.err, refusal.mentioned)) << outcome.err;
    }
    EXPECT_EQ(book.bytes(), before);
    EXPECT_FALSE(old.exists());
}

TEST(WriteCommand, PutsCellsWhereTheirAddressesAre) {
    const TemporaryPath book("cells.xlsx"), copy("copy.xlsx");
    sentence({"write", book.text()}, "1,2,3\n4,5,6\n");
    EXPECT_TRUE(mentions(sentence({"write", book.text(), "--from", "cells"},
                                  "B1\tempty\t\nC2\ttext\t\"tab\tand\nline\"\nA3\tdate\t61\n"
                                  "B3\tdate\t2024-03-01T12:00:00\nC3\tboolean\ttrue\n"
                                  "XFD9\tnumber\t-01:30:00\n"),
                         "Wrote 5 cells to 'Sheet1'; "));
    EXPECT_EQ(output({"read", book.text(), "-r", "A1:C3"}),
              "1,,3\n4,5,\"tab\tand\nline\"\n1900-03-01,2024-03-01T12:00:00,true\n");
    EXPECT_EQ(output({"read", book.text(), "-r", "XFD9"}), "-0.0625\n");
    for (const char* format : {"cells", "cells.jsonl"}) {
        const std::string printed = output({"read", book.text(), "--to", format});
        sentence({"write", copy.text(), "-s", "Sheet1", "-r", "Z9"}, "to be replaced");
        sentence({"write", copy.text(), "--replace", "--from", format}, printed);
        EXPECT_EQ(output({"read", copy.text(), "--to", format}), printed);
    }
    const struct {
        const char* format;
        const char* input;
        const char* mentioned;
    } wrong[] = {
        {"cells", "A1\tnumber\t1\nA0\tnumber\t1\n", "Line 2 begins with 'A0', not a cell"},
        {"cells", "A1:B2\tnumber\t1\n", "not a cell"},
        {"cells", "XFE1\tnumber\t1\n", "not a cell"},
        {"cells", "A1\tnumber\n", "no address, type and value"},
        {"cells", "A1\tnumber\t1\t2\n", "no address, type and value"},
        {"cells", "A1\tnumber\t1e\n", "'1e' that is not of its type"},
        {"cells", "A1\tnumber\t1::2\n", "not of its type"},
        {"cells", "A1\tboolean\t1\n", "not of its type"},
        {"cells", "A1\tdate\tnow\n", "not of its type"},
        {"cells", "A1\tlist\t1\n", "a type 'list'"},
        {"cells.jsonl", "{\"cell\":\"A1\",\"type\":\"number\"}", "cell, type and value"},
        {"cells.jsonl", "[1]", "cell, type and value"},
        {"cells.jsonl", "{", "Line 1 is not an object"},
        {"cells.jsonl", "{\"cell\":\"A1\",\"type\":\"text\",\"value\":[]}", "no cell can have"},
    };
    const std::string before = book.bytes();
    for (const auto& c : wrong) {
        const Outcome outcome = run_program({"write", book.text(), "--from", c.format}, c.input);
        EXPECT_EQ(outcome.code, 1) << c.input;
        EXPECT_TRUE(mentions(outcome.err, c.mentioned)) << outcome.err;
    }
    EXPECT_EQ(book.bytes(), before);
}

} // namespace
} // namespace zxsheet::test
