// SPDX-License-Identifier: Apache-2.0
//
// The program with --app over LibreOffice, which all commands of a test share.
#include <cstdlib>

#include <gmock/gmock.h>

#include "spreadsheet/book_factory.h"
#include "tests/automation/libreoffice/office_processes.h"
#include "tests/zxsheet/program.h"

namespace zxsheet::test {
namespace {

using testing::HasSubstr;

bool has_office() {
    return std::getenv("ZX_SOFFICE") != nullptr ||
           std::system("command -v soffice libreoffice >/dev/null 2>&1") == 0;
}

/// A command, what it reads, and what is expected of it. Words with a dot are files of the folder.
struct Step {
    std::vector<std::string> arguments;
    std::string input;
    int code;
    std::string out;      ///< exactly
    const char* err = ""; ///< a part of it
};

class ApplicationProgram : public testing::Test {
  protected:
    void SetUp() override {
        if (!has_office()) GTEST_SKIP() << "LibreOffice is not installed";
        std::filesystem::create_directory(folder_.text());
        spreadsheet::initialize();
    }
    void TearDown() override {
        if (!has_office()) return;
        spreadsheet::release();
        EXPECT_THAT(spreadsheet::office_processes(), testing::IsEmpty());
    }

    std::string file(const std::string& name) const { return folder_.text() + '/' + name; }

    void run_steps(const std::vector<Step>& steps) const {
        for (const Step& step : steps) {
            std::vector<std::string> arguments;
            std::string line;
            for (const std::string& word : step.arguments) {
                const bool is_file = word.find('.') != std::string::npos;
                arguments.push_back(is_file ? file(word) : word);
                line += word + ' ';
            }
            SCOPED_TRACE(line);
            const Outcome outcome = run_program(arguments, step.input);
            EXPECT_EQ(outcome.code, step.code) << outcome.err;
            EXPECT_EQ(outcome.out, step.out);
            EXPECT_THAT(outcome.err, HasSubstr(step.err));
        }
    }

    const TemporaryPath folder_{"application"};
};

TEST_F(ApplicationProgram, KeepsABookOfItsFormat) {
    const std::string table = "name,day,ok\n1.5,2024-03-01,true\n007,2024-03-02T12:00:00,false\n";
    run_steps({
        {{"--app", "write", "b.ods", "-s", "Data"}, table, 0, "", "Made the book"},
        {{"read", "--app", "b.ods"}, "", 0, table},
        {{"--app", "write", "b.ods", "-s", "Data", "-r", "B2"}, "x\n2024-01-01\n", 0, ""},
        {{"--app", "read", "b.ods", "-r", "A2:C3"}, "", 0, "1.5,x,true\n007,2024-01-01,false\n"},
        {{"--app", "types", "b.ods", "-r", "B2:B3"}, "", 0, "text\ndate\n"},
        {{"--app", "sheet", "add", "b.ods", "More"}, "", 0, ""},
        {{"--app", "sheet", "rename", "b.ods", "more", "Other"}, "", 0, ""},
        {{"--app", "sheet", "move", "b.ods", "Other", "--to", "1"}, "", 0, ""},
        {{"--app", "sheets", "b.ods"}, "", 0, "Other\nData\n"},
        {{"--app", "sheet", "move", "b.ods", "Other", "--to", "2"}, "", 0, ""},
        {{"--app", "sheet", "hide", "b.ods", "Other"}, "", 0, ""},
        {{"--app", "sheets", "b.ods"}, "", 0, "Data\nOther\n"},
        {{"--app", "sheet", "hide", "b.ods", "Data"}, "", 6, "", "b.ods"},
        {{"--app", "sheet", "remove", "b.ods", "Other"}, "", 0, ""},
        {{"--app", "sheets", "b.ods"}, "", 0, "Data\n"},
        {{"--app", "read", "b.ods", "-s", "Other"}, "", 5, "", "There is no sheet 'Other'"},
        {{"--app", "new", "n.ods", "--sheets", "2"}, "", 0, "", "2 sheets"},
        {{"--app", "sheets", "n.ods"}, "", 0, "Sheet2\nSheet1\n"},
    });
}

TEST_F(ApplicationProgram, ConvertsWithResultsThatItComputes) {
    // Formulas without results, and no more than that.
    std::ofstream(file("f.xlsx"), std::ios::binary) << make_book(
        {{"Data", "",
          "<sheetData><row r='1'><c r='A1'><v>2</v></c><c r='B1'><f>A1*21</f></c>"
          "<c r='C1' s='1'><f>45352+A1</f></c><c r='D1'><f>NA()</f></c></row></sheetData>"}});
    const std::string computed = "2,42,2024-03-03,#N/A\n";
    run_steps({{{"--app", "read", "f.xlsx"}, "", 0, computed}});
    for (const char* name : {"c.ods", "c.xls", "c.xlsx", "c.xlsm", "c.xltx"})
        run_steps({{{"--app", "convert", "f.xlsx", name}, "", 0, "", "Converted"},
                   {{"--app", "read", name}, "", 0, computed},
                   {{"--app", "read", name, "--dates", "serial", "-r", "C1"}, "", 0, "45354\n"}});
    run_steps({{{"read", "c.xls"}, "", 0, computed},
               {{"--app", "convert", "c.ods", "back.xlsx"}, "", 0, ""},
               {{"read", "back.xlsx"}, "", 0, computed},
               {{"read", "back.xlsx", "--formulas", "-r", "B1"}, "", 0, "=A1*21\n"},
               {{"read", "c.xls", "--formulas", "-r", "A1:B1"}, "", 0, "2,=A1*21\n"},
               {{"diff", "c.ods", "c.xls", "--app"}, "", 0, ""},
               {{"write", "w.xlsx", "--formulas"},
                "2,=A1*21,\"=IF(B1>$A$1,\"\"<\"\"&A1,1)\",=Sheet1!B1%\n"
                "\"=IFS(A1>1,CONCAT(A1:B1))\",\"=STDEV.S(A1,4,6)\"\n",
                0,
                "",
                "Made the book"},
               {{"--app", "read", "w.xlsx"}, "", 0, "2,42,<2,0.42\n242,2,,\n"},
               {{"--app", "convert", "c.ods", "c.csv"}, "", 0, ""},
               {{"--app", "read", "c.csv"}, "", 0, computed},
               {{"--app", "convert", "f.xlsx", "c.xlsb"}, "", 6, "", "c.xlsb"}});
}

TEST_F(ApplicationProgram, EndsWithTheCodeOfTheFailure) {
    std::ofstream(file("p.xlsx"), std::ios::binary)
        << make_book({{"Data", "",
                       "<sheetData><row r='1'><c r='A1'><v>2</v></c></row></sheetData>"
                       "<sheetProtection sheet='1'/>"}});
    std::ofstream(file("text.xlsx")) << "a,b\n";
    std::ofstream(file("r.xlsx"), std::ios::binary)
        << make_book({{"Data", "", "<sheetData/>"}}, "<fileSharing readOnlyRecommended='1'/>");
    run_steps({
        {{"--app", "convert", "p.xlsx", "p.ods"}, "", 0, ""},
        {{"--app", "write", "p.ods", "-r", "A1"}, "5", 6, "", "protected"},
        {{"--app", "clear", "p.ods", "-r", "A1"}, "", 6, "", "protected"},
        {{"--app", "read", "p.ods"}, "", 0, "2\n"},
        {{"read", "p.ods"}, "", 4, "", "--app"},
        {{"--app", "sheet", "add", "r.xlsx", "New"}, "", 6, "", "read-only"},
        {{"--app", "read", "none.ods"}, "", 3, "", "There is no such file"},
        {{"--app", "read", "text.xlsx"}, "", 4, "", "text.xlsx"},
        {{"--app", "convert", "p.ods", "no/such/folder.xlsx"}, "", 6, "", "folder.xlsx"},
    });
}

} // namespace
} // namespace zxsheet::test
