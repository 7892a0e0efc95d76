// SPDX-License-Identifier: Apache-2.0
//
// What the commands print.
#include "tests/zxsheet/program.h"
#include "zxsheet/online_cells.h"
#include "zxsheet/output_sink.h"

namespace zxsheet::test {
namespace {

const std::string kWeather = ZX_EXAMPLES "/weather.xlsx";

/// A sheet with every kind of cell, odd texts and merged regions.
const MadeSheet kData{
    "Data", "",
    "<sheetProtection sheet='1'/><sheetData>"
    "<row r='2'><c r='B2' t='inlineStr'><is><t>say \"hi\", all</t></is></c>"
    "<c r='C2' t='inlineStr'><is><t xml:space='preserve'> two&#10;lines\t</t></is></c>"
    "<c r='D2' s='1'/></row>"
    "<row r='3'><c r='B3' s='1'><v>60</v></c><c r='C3' t='b'><v>1</v></c>"
    "<c r='D3' t='e'><v>#N/A</v></c></row>"
    "<row r='4'><c r='B4'><v>1e300</v></c><c r='D4' "
    "t='inlineStr'><is><t>\xC3\xA9</t></is></c></row>"
    "</sheetData><mergeCells><mergeCell ref='B4:C4'/><mergeCell ref='D2:D3'/></mergeCells>"};

class Commands : public testing::Test {
  protected:
    Commands() {
        book_.fill(make_book({kData,
                              {"Chart", "", "", true},
                              {"2", "state='hidden'", "<sheetData/>"},
                              {"Far", "state='veryHidden'",
                               "<sheetData><row r='9'><c r='A9'><v>7</v></c></row></sheetData>"}},
                             "<definedNames><definedName name='Corner'>Data!$B$2:$C$3</definedName>"
                             "</definedNames>"));
    }

    /// Standard output of a command on the book.
    std::string output(const std::string& command, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {command, book_.text()});
        const Outcome outcome = run_program(options);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }

    TemporaryPath book_{"data.XLSX"};
};

TEST_F(Commands, ListSheets) {
    EXPECT_EQ(output("sheets"), "Data\nChart\n2\nFar\n");
}

TEST_F(Commands, DescribeTheBook) {
    EXPECT_EQ(
        output("info", {"--json"}),
        "{\"path\":\"" + book_.text() +
            "\",\"format\":\"XLSX\",\"date_system\":1900,\"sheets\":["
            "{\"index\":1,\"name\":\"Data\",\"kind\":\"worksheet\",\"visibility\":\"visible\","
            "\"used_range\":\"B2:D4\",\"protected\":true,\"cells\":8,\"formulas\":0,"
            "\"formulas_without_result\":0},"
            "{\"index\":2,\"name\":\"Chart\",\"kind\":\"chart\",\"visibility\":null,"
            "\"used_range\":null,\"protected\":null},"
            "{\"index\":3,\"name\":\"2\",\"kind\":\"worksheet\",\"visibility\":\"hidden\","
            "\"used_range\":null,\"protected\":false,\"cells\":0,\"formulas\":0,"
            "\"formulas_without_result\":0},"
            "{\"index\":4,\"name\":\"Far\",\"kind\":\"worksheet\",\"visibility\":\"very hidden\","
            "\"used_range\":\"A9\",\"protected\":false,\"cells\":1,\"formulas\":0,"
            "\"formulas_without_result\":0}],"
            "\"names\":[{\"name\":\"Corner\",\"sheet\":\"Data\",\"range\":\"B2:C3\","
            "\"scope\":null}],\"tables\":[]}\n");
    const std::string plain = output("info");
    for (const char* part : {"1900", "B2:D4", "chart", "very hidden", "protected"})
        EXPECT_NE(plain.find(part), std::string::npos) << part;
}

TEST_F(Commands, PrintCellsInEveryFormat) {
    const struct {
        std::vector<std::string> options;
        std::string expected;
    } cases[] = {
        {{},
         "\"say \"\"hi\"\", all\",\" two\nlines\t\",\n1900-02-29,true,#N/A\n1e+300,,\xC3\xA9\n"},
        {{"--to", "tsv", "-r", "2:2"}, "\"say \"\"hi\"\", all\"\t\" two\nlines\t\"\n"},
        {{"--to", "tsv", "-r", "2:2", "--all-cells"},
         "\"say \"\"hi\"\", all\"\t\" two\nlines\t\"\t\n"},
        {{"-r", "B3:C3", "--dates", "serial"}, "60,true\n"},
        {{"-r", "B3", "--to", "jsonl", "--dates", "serial"}, "[60]\n"},
        {{"-r", "a1:b2"}, ",\n,\"say \"\"hi\"\", all\"\n"},
        {{"-r", "B:B"}, "\"say \"\"hi\"\", all\"\n1900-02-29\n1e+300\n"},
        {{"-r", "corner", "--to", "jsonl"},
         "[\"say \\\"hi\\\", all\",\" two\\nlines\\t\"]\n[\"1900-02-29\",true]\n"},
        {{"--to", "json", "-r", "C2:D4"},
         "{\"sheet\":\"Data\",\"range\":\"C2:D4\","
         "\"types\":[[\"text\",\"other\"],[\"boolean\",\"error\"],[\"empty\",\"text\"]],"
         "\"values\":[[\" two\\nlines\\t\",null],[true,\"#N/A\"],[null,\"\xC3\xA9\"]]}\n"},
        {{"--to", "table", "-r", "B3:D4"},
         "   B           C     D\n3  1900-02-29  true  #N/A\n4      1e+300        \xC3\xA9\n"},
        {{"-s", "far"}, "7\n"},
        {{"-s", "4", "-r", "A8:A9"}, "\n7\n"},
        {{"-s", "2"}, ""}, // a name before a number, and no cell
        {{"-s", "2", "--to", "table"}, ""},
        {{"-s", "3", "--to", "json"},
         "{\"sheet\":\"2\",\"range\":null,\"types\":[],\"values\":[]}\n"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(output("read", c.options), c.expected) << testing::PrintToString(c.options);
}

TEST_F(Commands, ApplyMergedCellRules) {
    const struct {
        std::vector<std::string> options;
        std::string expected;
    } cases[] = {
        {{"--merged-columns", "first"}, "1e+300,,\xC3\xA9\n"},
        {{"--merged-columns", "last"}, ",1e+300,\xC3\xA9\n"},
        {{"--merged-columns", "repeat"}, "1e+300,1e+300,\xC3\xA9\n"},
        {{"--merged-columns", "omit"}, "\xC3\xA9\n"},
    };
    for (auto c : cases) {
        c.options.insert(c.options.end(), {"-r", "B4:D4"});
        EXPECT_EQ(output("read", c.options), c.expected) << c.options[1];
    }
    EXPECT_EQ(output("read", {"-r", "B2:D4", "--merged-rows", "omit", "--to", "jsonl"}),
              "[1e+300,null,\"\xC3\xA9\"]\n");
}

TEST_F(Commands, PrintTypes) {
    EXPECT_EQ(output("types"), "text\ttext\tother\ndate\tboolean\terror\nnumber\tempty\ttext\n");
    EXPECT_EQ(output("types", {"--json", "-r", "B2:C2"}),
              "{\"sheet\":\"Data\",\"range\":\"B2:C2\",\"types\":[[\"text\",\"text\"]]}\n");
}

// A sheet whose last cells have formats only, times, formulas, a table and names.
TEST(ReadCommand, PrintsWhatPeopleWorkWith) {
    const TemporaryPath book("work.xlsx"), out("out.jsonl");
    book.fill(make_book(
        {{"Log", "",
          "<sheetData><row r='1'><c r='A1' t='str'><v>when</v></c><c r='B1' t='str'><v>h</v></c>"
          "<c r='C1' t='str'><v>h</v></c></row><row r='2'><c r='A2' s='1'><v>45352.75</v></c>"
          "<c r='B2' s='2'><v>0.5451388888888889</v></c><c r='C2' s='3'><v>1.25</v></c>"
          "<c r='E2' s='1'/></row><row r='3'><c r='A3'><v>-1.5</v></c>"
          "<c r='B3'><f t='shared' ref='B3:C3' si='0'>SUM(A2:A3)</f></c>"
          "<c r='C3'><f t='shared' si='0'/><v>2</v></c></row>"
          "<row r='900000'><c r='XFD900000' s='1'/></row></sheetData>",
          false, "name='T' displayName='Hours' ref='A1:C2'"},
         {"It&apos;s 2", "", "<sheetData><row r='5'><c r='B5'><v>5</v></c></row></sheetData>"},
         {"Far apart", "",
          "<sheetData><row r='1'><c r='A1'><v>1</v></c></row><row r='1048576'>"
          "<c r='XFD1048576' t='b'><v>1</v></c></row></sheetData>"}},
        "<definedNames><definedName name='Mine' localSheetId='1'>'It''s 2'!$B$5</definedName>"
        "<definedName name='Cols'>Log!$A:$B</definedName></definedNames>"));
    const struct {
        std::vector<std::string> options;
        std::string expected;
    } cases[] = {
        {{}, "when,h,h\n2024-03-01T18:00:00,13:05:00,30:00:00\n-1.5,,2\n"},
        {{"-r", "B:C", "--dates", "serial"}, "h,h\n0.545138888888889,1.25\n,2\n"},
        {{"-r", "2:2", "--all-cells", "--dates", "%d.%m.%y %I %p %a %j%%"},
         "01.03.24 06 PM Fri 061%,13:05:00,30:00:00,,\n"},
        {{"-r", "A3:C3", "--formulas"}, "-1.5,=SUM(A2:A3),=SUM(B2:B3)\n"},
        {{"-r", "A3", "--decimal-comma"}, "-1,5\n"},
        {{"-r", "A3:C3", "--decimal-comma", "--bom", "--crlf"}, "\xEF\xBB\xBF-1,5;;2\r\n"},
        {{"-r", "A3:C3", "--delimiter", "|"}, "-1.5||2\n"},
        {{"-r", "hours", "--to", "records"},
         "[\n{\"when\":\"2024-03-01T18:00:00\",\"h\":0.545138888888889,\"h.1\":1.25}\n]\n"},
        {{"-r", "Log!C1:D3", "--to", "jsonl", "--header"},
         "{\"h\":1.25,\"column2\":null}\n{\"h\":2,\"column2\":null}\n"},
        {{"-r", "B2:E3", "--to", "cells"},
         "B2\tnumber\t13:05:00\nC2\tdate\t30:00:00\nC3\tnumber\t2\n"},
        {{"-r", "2:2", "--to", "cells.jsonl", "--all-cells", "-s", "1"},
         "{\"cell\":\"A2\",\"type\":\"date\",\"value\":\"2024-03-01T18:00:00\"}\n"
         "{\"cell\":\"B2\",\"type\":\"number\",\"value\":0.545138888888889}\n"
         "{\"cell\":\"C2\",\"type\":\"date\",\"value\":1.25}\n"
         "{\"cell\":\"E2\",\"type\":\"other\",\"value\":null}\n"},
        {{"-s", "Far apart", "--to", "cells"}, "A1\tnumber\t1\nXFD1048576\tboolean\ttrue\n"},
        {{"-r", "'It''s 2'!$B$5"}, "5\n"},
        {{"-r", "mine"}, "5\n"},
        {{"-r", "Cols"}, "when,h\n2024-03-01T18:00:00,13:05:00\n-1.5,\n"},
        {{"-r", "A1:C2", "--to", "table", "--width", "12"},
         "   A       …\n1  when    …\n2  2024-03-…\n"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> arguments{"read", book.text()};
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        const Outcome outcome = run_program(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(outcome.out, c.expected) << testing::PrintToString(c.options);
    }
    EXPECT_NE(run_program({"read", book.text()}).err.find("1 formula without"), std::string::npos);
    const Outcome refused = run_program({"read", book.text(), "-s", "Far apart"});
    EXPECT_EQ(refused.code, 2);
    EXPECT_EQ(refused.out, "");
    EXPECT_NE(refused.err.find("--to cells"), std::string::npos) << refused.err;
    EXPECT_EQ(run_program({"read", book.text(), "-r", "A1", "-o", out.text()}).code, 0);
    EXPECT_EQ(out.bytes(), "[\"when\"]\n");
    const std::string info = run_program({"info", book.text()}).out;
    for (const char* part : {"Log  A1:C3  2 formulas, 1 without a result\n", "'Log'!A1:C2\n",
                             "Mine  'It''s 2'!B5  of sheet 'It's 2'\n"})
        EXPECT_NE(info.find(part), std::string::npos) << part << info;
}

// More cells than are read at a time.
TEST(ReadCommand, JoinsBandsOfRows) {
    std::string rows;
    std::string expected;
    for (int row = 1; row <= 5000; ++row) {
        const std::string number = std::to_string(row);
        rows += "<row r='" + number + "'><c r='A" + number + "'><v>" + number + "</v></c><c r='Z" +
                number + "' t='e'><v>#REF!</v></c></row>";
        expected += number + std::string(25, ',') + "#REF!\n";
    }
    const TemporaryPath book("tall.xlsx");
    book.fill(make_book({{"Tall", "", "<sheetData>" + rows + "</sheetData>"}}));
    EXPECT_EQ(run_program({"read", book.text()}).out, expected);
    const Outcome table = run_program({"read", book.text(), "--to", "table", "-r", "A4999:A5000"});
    EXPECT_EQ(table.out, "      A\n4999  4999\n5000  5000\n");
}

TEST(OutputSink, SaysWhereItBreaksOff) {
    std::ostringstream out;
    OutputSink sink(out, "");
    sink.write("held back\n");
    EXPECT_EQ(sink.break_off_text(), "");
    sink.write(std::string(65'526, 'x'));
    EXPECT_EQ(sink.break_off_text(), " The output breaks off after 1 whole line (65,536 bytes).");
}

TEST(OnlineRowBlocks, CoverEachRowOnce) {
    Selection selection;
    for (const int last_column : {0, 3, 49, 18'277}) {
        selection.range = {5, 0, 1'200'000, last_column};
        int next = 5;
        for (const RowBlock& block : online_row_blocks(selection)) {
            EXPECT_EQ(block.first_row, next);
            const std::int64_t rows = std::int64_t{block.last_row} - block.first_row + 1;
            EXPECT_TRUE(rows >= 1 && rows <= 500'001 && rows * (last_column + 1) <= 2'000'000);
            next = block.last_row + 1;
        }
        EXPECT_EQ(next, 1'200'001);
    }
}

} // namespace
} // namespace zxsheet::test
