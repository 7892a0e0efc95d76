// SPDX-License-Identifier: Apache-2.0
//
// Several books in one call.
#include "tests/zxsheet/program.h"
#include "zxsheet/several_books.h"

namespace zxsheet::test {
namespace {

TEST(SeveralBooks, NameTheirLines) {
    const TemporaryPath a("a, b.xlsx"), b("b.xlsx");
    for (const auto* book : {&a, &b})
        ASSERT_EQ(run_program({"write", book->text()}, "x,\"two\nlines, \"\"\"\n1,\n").code, 0);
    const std::string quoted = '"' + a.text() + '"';
    const struct {
        std::vector<std::string> options;
        std::string of_a, of_b;
    } cases[] = {
        {{},
         quoted + ",x,\"two\nlines, \"\"\"\n" + quoted + ",1,\n",
         b.text() + ",x,\"two\nlines, \"\"\"\n" + b.text() + ",1,\n"},
        {{"-r", "A1", "--to", "csv", "--delimiter", "|", "--crlf"},
         a.text() + "|x\r\n",
         b.text() + "|x\r\n"},
        {{"-r", "A1", "--to", "cells"}, a.text() + "\tA1\ttext\tx\n", b.text() + "\tA1\ttext\tx\n"},
        {{"-r", "A1:A2", "--to", "jsonl"},
         "[" + quoted + ",\"x\"]\n[" + quoted + ",1]\n",
         "[\"" + b.text() + "\",\"x\"]\n[\"" + b.text() + "\",1]\n"},
        {{"-r", "A1:A2", "--to", "jsonl", "--header"},
         "{\"file\":" + quoted + ",\"x\":1}\n",
         "{\"file\":\"" + b.text() + "\",\"x\":1}\n"},
        {{"-r", "A2", "--to", "cells.jsonl"},
         "{\"file\":" + quoted + ",\"cell\":\"A2\",\"type\":\"number\",\"value\":1}\n",
         "{\"file\":\"" + b.text() + "\",\"cell\":\"A2\",\"type\":\"number\",\"value\":1}\n"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> arguments{"read", a.text(), b.text()};
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        const Outcome outcome = run_program(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(outcome.out, c.of_a + c.of_b);
    }
    EXPECT_EQ(run_program({"read", a.text(), b.text(), "-r", "A1", "--bom"}).out,
              "\xEF\xBB\xBF" + quoted + ",x\n" + b.text() + ",x\n");
    EXPECT_EQ(run_program({"sheets", a.text(), b.text()}).out,
              a.text() + "\tSheet1\n" + b.text() + "\tSheet1\n");
    EXPECT_EQ(run_program({"sheets", a.text(), b.text(), "--json"}).out,
              "{\"path\":" + quoted + ",\"sheets\":[\"Sheet1\"]}\n{\"path\":\"" + b.text() +
                  "\",\"sheets\":[\"Sheet1\"]}\n");
    EXPECT_EQ(run_program({"info", a.text(), b.text()}).out,
              run_program({"info", a.text()}).out + "\n" + run_program({"info", b.text()}).out);
}

TEST(SeveralBooks, AreReadBesideOnesThatCannotBe) {
    const TemporaryPath good("good.xlsx"), bad("bad.xlsx");
    ASSERT_EQ(run_program({"write", good.text()}, "1\n").code, 0);
    bad.fill("no book");
    for (const char* command : {"read", "info", "sheets"}) {
        const std::string alone = run_program({command, good.text(), good.text()}).out;
        Outcome outcome = run_program({command, bad.text(), good.text(), "gone.xlsx", good.text()});
        EXPECT_EQ(outcome.code, 4);
        EXPECT_EQ(outcome.out, alone);
        EXPECT_NE(outcome.err.find(bad.text() + ": "), std::string::npos);
        EXPECT_NE(outcome.err.find("gone.xlsx: There is no"), std::string::npos) << outcome.err;
        outcome = run_program({command, "gone.xlsx", bad.text()});
        EXPECT_EQ(outcome.code, 3);
        EXPECT_EQ(outcome.out, "");
    }
}

TEST(SeveralBooks, EndWithTheirOutput) {
    const TemporaryPath book("book.xlsx");
    std::string rows; // more than is collected before any goes out
    for (int i = 0; i < 20'000; ++i)
        rows += "1\n";
    ASSERT_EQ(run_program({"write", book.text()}, rows).code, 0);
    std::istringstream in;
    std::ostringstream out, err;
    out.setstate(std::ios::badbit);
    EXPECT_EQ(run({"read", book.text(), book.text()}, in, out, err), 6);
    EXPECT_TRUE(err.str().starts_with("zxsheet: standard output: It cannot be written"));
    EXPECT_EQ(err.str().find('\n'), err.str().size() - 1) << "once";
}

} // namespace
} // namespace zxsheet::test
