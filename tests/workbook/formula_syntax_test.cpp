// SPDX-License-Identifier: Apache-2.0
//
// Which texts are formulas.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "workbook/library.h"

namespace workbook {
namespace {

TEST(FormulaProblem, IsEmptyForFormulas) {
    for (const std::string formula : {"1",
                                      "A1",
                                      " A1 + 1",
                                      "-A1%",
                                      "--A1",
                                      "A1:B2 B2:C3",
                                      "(A1,B2)",
                                      "A1:INDEX(A:A,3)",
                                      "SUM(A:A 1:1)",
                                      "IF(,,)",
                                      "NOW()",
                                      "Own.Function(1,)",
                                      "Rate*2",
                                      "A1=B1<>C1<=D1",
                                      "{1,-2;\"a\",#N/A}",
                                      "{TRUE}",
                                      "\"say \"\"hi\"\"\"&A1",
                                      "Sheet1!A1:Sheet1!B2",
                                      "'It''s'!$A$1",
                                      "A:C!B2",
                                      "Sheet1!Rate",
                                      "Sheet1!#REF!",
                                      "#REF!+1",
                                      "T[[#This Row],[a;b)]]",
                                      ".5+1e3",
                                      "SUM(\n A1 ,\tB1 )",
                                      "(1)%",
                                      "LET(x, 1, y,x, x+y)",
                                      "LAMBDA(x, [y] ,x)(1,2)(3)",
                                      "LAMBDA(1)",
                                      "SUM(A1#,Sheet1!$A$1#,Rate#)"})
        EXPECT_EQ(formula_problem(formula), "");
}

TEST(FormulaProblem, SaysWhatIsWrongAndWhere) {
    const struct {
        std::string formula;
        const char* reason;
        int character; ///< from 1, the equals sign included
    } cases[] = {
        {"", "something is missing", 2},
        {"1+", "something is missing", 4},
        {"+", "something is missing", 3},
        {"&A1", "'&' is not expected", 2},
        {"1 2", "'2' is not expected", 4},
        {"1.5.2", "'1.5.2' is not expected", 2},
        {"A1,B1", "',' is not expected", 4},
        {"(A1", "closing parenthesis is missing", 5},
        {"A1)", "no opening one", 4},
        {"F(1)(A1)", "operator missing", 6},
        {"SUM(1;2)", "separated by commas", 7},
        {"SUM(A1", "closing parenthesis is missing", 8},
        {"IF(1)", "IF has too few arguments", 2},
        {"1+pi(2)", "PI has too many arguments", 4},
        {"\"x", "no closing quote", 2},
        {"A1+'x", "not closed", 5},
        {"LET(x,1)", "LET takes names", 2},
        {"LET(x1,1,2)", "LET needs a name", 6},
        {"_xlfn.LET(x,1,[y],1,2)", "Table[[#This Row]", 16},
        {"LAMBDA(x,A1,1)", "LAMBDA needs a name", 11},
        {"{1,2;3}", "differ in length", 8},
        {"{1", "closing brace is missing", 4},
        {"{A1}", "'A1' is not expected", 3},
        {"Sheet1!", "no cells after", 9},
        {"[1]Sheet1!A1", "another book", 2},
        {"'[B.xlsx]S'!A1", "another book", 2},
        {"T[@a]", "[#This Row]", 2},
        {"[a]", "[#This Row]", 2},
        {"@A1", "'@' is not expected", 2},
        {"A1:B2#", "'#' is not expected", 7},
        {"\"\xC3\xA4\"&", "something is missing", 6}, // characters, not bytes
        {"A1\x01", "control character", 4},
    };
    for (const auto& c : cases) {
        const std::string problem = formula_problem(c.formula);
        EXPECT_THAT(problem, testing::HasSubstr(c.reason)) << c.formula;
        EXPECT_THAT(problem, testing::EndsWith("character " + std::to_string(c.character)));
    }
}

TEST(FormulaProblem, LimitsLengthAndNesting) {
    const auto nested = [](const std::string& open, std::size_t count) {
        std::string formula = "1";
        for (std::size_t i = 0; i < count; ++i)
            formula = open + formula + ")";
        return formula;
    };
    EXPECT_EQ(formula_problem(nested("ABS(", 64)), "");
    EXPECT_THAT(formula_problem(nested("ABS(", 65)), testing::HasSubstr("nested too deeply"));
    EXPECT_THAT(formula_problem(std::string(100'000, '(')), testing::HasSubstr("characters"));
    EXPECT_THAT(formula_problem(nested("(", 4000)), testing::HasSubstr("nested too deeply"));
    EXPECT_EQ(formula_problem('"' + std::string(8190, 'x') + '"'), "");
    EXPECT_THAT(formula_problem('"' + std::string(8191, 'x') + '"'),
                testing::HasSubstr("more than 8192 characters"));
}

} // namespace
} // namespace workbook
