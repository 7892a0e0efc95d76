// SPDX-License-Identifier: Apache-2.0
//
// Random sheets and random changes: what is written reads back as the cells in memory.
#include <charconv>
#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include "tests/workbook/rewrite.h"
#include "workbook/cells/cell_name.h"
#include "workbook/xlsx/writing/cell_markup.h"

namespace workbook::test {
namespace {

class RandomSheet {
  public:
    explicit RandomSheet(unsigned seed) : random_(seed) {}

    std::string source() {
        std::string rows;
        int row = 0;
        for (int count = below(12); count > 0; --count) {
            row = std::max(0, row + (below(8) == 0 ? below(7) - 3 : below(3)));
            rows += below(6) == 0 ? "<row" : "<row r=\"" + std::to_string(row + 1) + "\"";
            if (below(3) == 0) rows += " spans=\"1:3\" ht=\"12\"";
            rows += below(9) == 0 ? "/>" : ">" + cells(row) + "</row>";
            if (below(5) == 0) rows += "\n <!-- c -->";
        }
        return "<worksheet><dimension ref=\"A1\"/><sheetData>" + rows + "</sheetData></worksheet>";
    }

    std::string changes() {
        std::string script;
        for (int count = 1 + below(8); count > 0; --count) {
            const std::string place = cell_name(below(16), below(7));
            const std::string values[] = {"=" + std::to_string(below(100)), "=true", "=blank",
                                          "=#5", "/2=0.25"};
            if (below(4) == 0)
                script += "clear " + place + ":" + cell_name(below(16), below(7)) + ";";
            else
                script += place + values[below(5)] + ";";
        }
        return script;
    }

  private:
    int below(int end) { return std::uniform_int_distribution(0, end - 1)(random_); }

    std::string cells(int row) {
        std::string markup;
        int column = 0;
        for (int count = below(6); count > 0; --count, ++column) {
            column = std::max(0, column + (below(9) == 0 ? below(5) - 2 : below(2)));
            markup += below(5) == 0 ? "<c" : "<c r=\"" + cell_name(row, column) + "\"";
            const std::string contents[] = {
                "/>",
                "><v>1.5</v></c>",
                " t=\"s\"><v>3</v></c>",
                " t=\"str\"><f t=\"shared\" si=\"0\" ref=\"A1:C9\">A1+1</f><v>x</v></c>",
                "><f t=\"shared\" si=\"0\"/><v>2</v></c>",
                "><f t=\"array\" ref=\"" + cell_name(row, column) + ":" +
                    cell_name(row + below(3), column + below(3)) + "\">Q</f><v>3</v></c>",
                " t=\"inlineStr\"><is><t>&lt;row r=\"1\"></t></is></c>"};
            markup += contents[below(7)];
            if (below(7) == 0) markup += " <!--<c-->";
        }
        return markup;
    }

    std::mt19937 random_;
};

TEST(RewriteWorksheet, ReadsBackAsTheCellsInMemory) {
    for (unsigned seed = 0; seed < 1000; ++seed) {
        RandomSheet random(seed);
        const std::string source = random.source(), changes = random.changes();
        SCOPED_TRACE(source + "\n" + changes);
        RewrittenSheet sheet(source, {}, seed % 2 == 0 ? 7 : 1u << 20);
        sheet.apply(changes);
        const std::string text = sheet.write();
        ASSERT_EQ(describe_part(text), describe_cells(sheet.cells)) << text;
        const std::string again = sheet.write_over(text);
        ASSERT_EQ(describe_part(again), describe_part(text)) << again;
        // Array formulas that overlap, which no application writes, fall apart step by step.
        const bool has_arrays = source.find("array") != std::string::npos;
        ASSERT_TRUE(has_arrays || again == text) << again;
        pugi::xml_document tree;
        ASSERT_TRUE(tree.load_string(text.c_str())) << text;
    }
}

TEST(AppendNumber, IsTheShortestTextThatReadsBack) {
    std::mt19937_64 random(1);
    const auto check = [](double value) {
        char text[kNumberRoom + 1] = {}, shortest[kNumberRoom + 1] = {};
        *append_number(text, value) = '\0';
        std::to_chars(shortest, shortest + kNumberRoom, value);
        const double back = std::strtod(text, nullptr);
        ASSERT_EQ(back, value) << text;
        ASSERT_EQ(std::signbit(back), std::signbit(value)) << text;
        // Fixed notation is kept where the exponent would save a character or two.
        ASSERT_LE(std::string(text).size(), std::string(shortest).size() + 4) << text;
    };
    for (double value : {0.0, -0.0, 5e-324, -2.2250738585072014e-308, 1.7976931348623157e308, 1e15,
                         999999999999999.0, -1e15 + 1, 0.0001, 0.00011, 1e11 + 0.25, 123456.7891})
        check(value);
    for (int i = 0; i < 200'000; ++i) {
        double value;
        const std::uint64_t bits = random();
        std::memcpy(&value, &bits, sizeof value);
        if (std::isfinite(value)) check(value);
        check(static_cast<double>(static_cast<std::int64_t>(bits) >> (i % 64)) / 10000.0);
    }
}

} // namespace
} // namespace workbook::test
