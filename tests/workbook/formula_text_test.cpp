// SPDX-License-Identifier: Apache-2.0
//
// Formulas that are moved, and formulas whose sheets are named otherwise or gone.
#include <gtest/gtest.h>

#include "workbook/xlsx/formula/formula_text.h"
#include "workbook/xlsx/formula/stored_formula.h"

namespace workbook {
namespace {

TEST(TranslateFormula, MovesReferencesWithoutDollars) {
    struct Case {
        const char* formula;
        int rows, columns;
        const char* moved;
    } const cases[] = {
        {"A1", 1, 1, "B2"},
        {"$A1+A$1+$A$1", 1, 1, "$A2+B$1+$A$1"},
        {"SUM(A1:B2)*2", 2, 0, "SUM(A3:B4)*2"},
        {"Z9+AZ9+ZZ9", 0, 1, "AA9+BA9+AAA9"},
        {"A:C", 5, 1, "B:D"},
        {"$A:C", 5, 1, "$A:D"},
        {"1:3+$1:3", 2, 9, "3:5+$1:5"},
        {"A1:B2 B2:C3", 1, 0, "A2:B3 B3:C4"},
        {"(A1,B2)", 1, 0, "(A2,B3)"},
        {"A1:B2:C3", 1, 0, "A2:B3:C4"},
        {"a1", 0, 1, "B1"},
        {"A1", -1, 0, "#REF!"},
        {"SUM(A1:B2)", -1, 0, "SUM(#REF!)"},
        {"XFD1048576", 1, 0, "#REF!"},
        {"XFD1", 0, 1, "#REF!"},
        {"A:B", 0, -1, "#REF!"},
        {"Sheet1!A1", -1, 0, "Sheet1!#REF!"},
        {"Sheet1!A1:Sheet1!B2", 1, 0, "Sheet1!A2:Sheet1!B3"},
        {"'It''s A1'!A1", 1, 0, "'It''s A1'!A2"},
        {"A1!A1+Q1!B1:B2", 1, 0, "A1!A2+Q1!B2:B3"},
        {"Sheet1:Sheet3!A1", 1, 0, "Sheet1:Sheet3!A2"},
        {"A:C!B2+'A:C'!B2", 1, 0, "A:C!B3+'A:C'!B3"},
        {"[1]Sheet1!A1+'[Book 2.xlsx]A1'!A1+[1]!Rate", 1, 0,
         "[1]Sheet1!A2+'[Book 2.xlsx]A1'!A2+[1]!Rate"},
        {"LOG10(A1)+A1B+_xlfn.X1(A1)+ATAN2(1,A1)", 1, 0, "LOG10(A2)+A1B+_xlfn.X1(A2)+ATAN2(1,A2)"},
        {"R1C1+A1.x+x.A1+\\A1+A1_+ÄA1+A1Ä", 1, 0, "R1C1+A1.x+x.A1+\\A1+A1_+ÄA1+A1Ä"},
        {"XFE1+A1048577+A0+A01+ABCD1", 1, 0, "XFE1+A1048577+A0+A01+ABCD1"},
        {"\"A1\"&A1&\"say \"\"A1\"\"\"", 1, 0, "\"A1\"&A2&\"say \"\"A1\"\"\""},
        {"Table1[[#This Row],[A1]]+A1[A1]+[@A1]", 1, 0, "Table1[[#This Row],[A1]]+A1[A1]+[@A1]"},
        {"T[[a'[A1']]:[b']]]+A1", 1, 0, "T[[a'[A1']]:[b']]]+A2"},
        {"{1,2;\"A1\",#N/A}+A1", 1, 0, "{1,2;\"A1\",#N/A}+A2"},
        {"#REF!A1+#REF!+A1+#DIV/0!+#NAME?", 1, 0, "#REF!A1+#REF!+A2+#DIV/0!+#NAME?"},
        {"A1#+@A1:A9+-A1%", 1, 0, "A2#+@A2:A10+-A2%"},
        {"1.5E3+2E-5+.5+1e1+A1", 1, 0, "1.5E3+2E-5+.5+1e1+A2"},
        {"A1:INDEX(A:A,3)", 1, 0, "A2:INDEX(A:A,3)"},
        {"A1:Sheet1!B2", 1, 0, "A2:Sheet1!B3"},
        {"\"open", 1, 0, "\"open"},
        {"A1+'open", 1, 0, "A1+'open"},
        {"A1+T[open", 1, 0, "A1+T[open"},
        {"$+A$+$$A1", 1, 0, "$+A$+$$A2"},
        {"", 1, 0, ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(translate_formula(c.formula, c.rows, c.columns), c.moved) << c.formula;
}

TEST(StoredFormula, HasPrefixesThatAreNotShown) {
    const std::pair<const char*, const char*> cases[] = {
        {"XLOOKUP(A1,B:B,C:C)+SUM(1)", "_xlfn.XLOOKUP(A1,B:B,C:C)+SUM(1)"},
        {"SORT(FILTER(A:A,STDEV.S(B:B)>0))",
         "_xlfn._xlws.SORT(_xlfn._xlws.FILTER(A:A,_xlfn.STDEV.S(B:B)>0))"},
        {"\"IFS(\"&IFS(A1,\"IFS(1)\")&IFS", "\"IFS(\"&_xlfn.IFS(A1,\"IFS(1)\")&IFS"},
        {"Sheet1!IFS(1)+T[IFS]+'IFS'!A1", "Sheet1!IFS(1)+T[IFS]+'IFS'!A1"},
        {"SINGLE(A1#)+SUM(S!$A$1#)",
         "_xlfn.SINGLE(_xlfn.ANCHORARRAY(A1))+SUM(_xlfn.ANCHORARRAY(S!$A$1))"},
        {"LET(x,Rate#,x#)+#REF!",
         "_xlfn.LET(_xlpm.x,_xlfn.ANCHORARRAY(Rate),_xlfn.ANCHORARRAY(_xlpm.x))+#REF!"},
        {"ANCHORARRAY(INDEX(A:A,1))", "_xlfn.ANCHORARRAY(INDEX(A:A,1))"},
        {"NETWORKDAYS.INTL(1,2)+ISO.CEILING(1)", "NETWORKDAYS.INTL(1,2)+ISO.CEILING(1)"},
        // A name is known after its value, until the parenthesis.
        {"LET( x , x+1,f,LAMBDA(a, [b] ,a+b+X),f(x,{1,2}))+x",
         "_xlfn.LET( _xlpm.x , x+1,_xlpm.f,_xlfn.LAMBDA(_xlpm.a, _xlop.b "
         ",_xlpm.a+_xlpm.b+_xlpm.X),_xlpm.f(_xlpm.x,{1,2}))+x"},
        {"LET(\xC3\x84,1,\xC3\xA4+T[x]+S!\xC3\x84)",
         "_xlfn.LET(_xlpm.\xC3\x84,1,_xlpm.\xC3\xA4+T[x]+S!\xC3\x84)"},
        {"LET(x,LET(y,1,y),(x,y))", "_xlfn.LET(_xlpm.x,_xlfn.LET(_xlpm.y,1,_xlpm.y),(_xlpm.x,y))"},
        {"LET(x,{1,2},y,Rate,x+y)", "_xlfn.LET(_xlpm.x,{1,2},_xlpm.y,Rate,_xlpm.x+_xlpm.y)"},
        {"MAP(A:A,LAMBDA(v,v*2))", "_xlfn.MAP(A:A,_xlfn.LAMBDA(_xlpm.v,_xlpm.v*2))"},
    };
    for (const auto& [shown, stored] : cases) {
        EXPECT_EQ(stored_formula(shown), stored);
        EXPECT_EQ(stored_formula(stored), stored);
        EXPECT_EQ(shown_formula(stored), shown);
    }
    EXPECT_EQ(stored_formula("xlookup(1)"), "_xlfn.XLOOKUP(1)");
    // Without these the formula could not be written as it was.
    for (const char* stored :
         {"_xlfn.NOTYET(1)", "_xlfn.FILTER(1)", "_xlws.SORT(1)", "_xlfn.SUM(1)", "_xlfn.ifs(1)",
          "_xlfn.LET(_xlpm.x,1,_xlpm.x+x)", "_xlfn.LET(_xlpm.x1,1,_xlpm.x1)", "\"_xlfn.IFS(1)\"",
          "_xlfn.ANCHORARRAY(", "_xlfn.ANCHORARRAY(A1:B2)", "_xlpm.x", ")_xlfn.IFS(",
          "_xlfn.IFS(\"open"})
        EXPECT_EQ(stored_formula(shown_formula(stored)), stored);
    EXPECT_EQ(shown_formula("_xlfn.LET(_xlpm.x,1,_xlpm.x+x)"), "_xlfn.LET(_xlpm.x,1,_xlpm.x+x)");
    EXPECT_EQ(rename_sheets("_xlfn.LET(_xlpm.x,S!A1,_xlfn.IFS(_xlpm.x,1))",
                            [](std::string_view) { return "New"; }),
              "_xlfn.LET(_xlpm.x,New!A1,_xlfn.IFS(_xlpm.x,1))");
}

TEST(TranslateFormula, StaysWholeForHugeDistances) {
    EXPECT_EQ(translate_formula("A1", 2147483647, 0), "#REF!");
    EXPECT_EQ(translate_formula("B2", -2147483647 - 1, 0), "#REF!");
}

/// "Old" and "It's" get the name `name`, "Gone" and "Gone 2" are gone.
std::string renamed(const char* formula, const std::string& name) {
    const auto map = [&](std::string_view sheet) -> std::optional<std::string> {
        if (sheet == "Old" || sheet == "It's") return name;
        if (sheet == "Gone" || sheet == "Gone 2") return {};
        return std::string{sheet};
    };
    return rename_sheets(formula, map).value_or("unchanged");
}

TEST(RenameSheets, ReplacesNamesOfThisBookOnly) {
    struct Case {
        const char *formula, *changed;
    } const cases[] = {
        {"Old!A1", "New!A1"},
        {"'Old'!A1", "New!A1"},
        {"'It''s'!$A$1:$B$2", "New!$A$1:$B$2"},
        {"SUM(Old!A1:Old!B2,Other!A1)", "SUM(New!A1:New!B2,Other!A1)"},
        {"A1:Old!B2", "A1:New!B2"},
        {"Old!A:A+Old!1:1+Old!Rate+Old!A1#", "New!A:A+New!1:1+New!Rate+New!A1#"},
        {"Old!Macro(1)", "New!Macro(1)"},
        {"Old:Other!A1", "'New:Other'!A1"},
        {"'Old:Other'!A1+'Old':'Other'!A1", "'New:Other'!A1+'New:Other'!A1"},
        {"'Other one:Old'!A1", "'Other one:New'!A1"},
        {"Gone!A1", "#REF!"},
        {"Gone!A1:B2+1", "#REF!+1"},
        {"SUM(Gone!A1:Gone!B2)", "SUM(#REF!)"},
        {"'Gone 2'!$A:$C,Old!A1", "#REF!,New!A1"},
        {"Gone!A1#+Gone!#REF!+Gone!Rate", "#REF!+#REF!+#REF!"},
        {"Gone!A1:INDEX(A:A,1)", "#REF!:INDEX(A:A,1)"},
        {"Gone!A1:Old!B2", "#REF!:New!B2"},
        {"Gone:Old!A1+Other:Gone!A1", "New!A1+Other!A1"},
        {"Gone:'Gone 2'!A1", "#REF!"},
        {"[1]Old!A1", "unchanged"},
        {"[1]Old:Gone!A1", "unchanged"},
        {"'[Book.xlsx]Old'!A1+'C:\\x\\[b]Gone'!A1", "unchanged"},
        {"Excel|'Old'!R1C1", "unchanged"},
        {"\"Old!A1\"&Other!A1", "unchanged"},
        {"Old+Gone[Old!]+T[Old!]", "unchanged"},
        {"\"Gone!A1", "unchanged"},
        {"Old!A1+'open", "unchanged"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(renamed(c.formula, "New"), c.changed) << c.formula;
}

TEST(RenameSheets, QuotesNamesThatNeedIt) {
    struct Case {
        const char *name, *changed;
    } const cases[] = {
        {"Data_1.x", "Data_1.x!A1"}, {"A", "A!A1"},
        {"ABCD1", "ABCD1!A1"},       {"A b", "'A b'!A1"},
        {"It's", "'It''s'!A1"},      {"2020", "'2020'!A1"},
        {".x", "'.x'!A1"},           {"A1", "'A1'!A1"},
        {"xfd77", "'xfd77'!A1"},     {"R", "'R'!A1"},
        {"c3", "'c3'!A1"},           {"R1C1", "'R1C1'!A1"},
        {"rc", "'rc'!A1"},           {"true", "'true'!A1"},
        {"a-b", "'a-b'!A1"},         {"Данные", "'Данные'!A1"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(renamed("Old!A1", c.name), c.changed) << c.name;
    EXPECT_EQ(renamed("Old:Other!A1", "AB"), "'AB:Other'!A1");
    EXPECT_EQ(renamed("'2020'!A1+2020!A1+Данные!A1+Old!A1", "B"),
              "'2020'!A1+2020!A1+Данные!A1+B!A1");
}

TEST(RenameSheets, AsksForWholeSpansWhereItCan) {
    const auto keep = [](std::string_view name) { return std::string{name}; };
    const auto spans = [](const SheetPrefixNames& span) -> std::optional<SheetPrefixNames> {
        if (span.first == "Gone") return {};
        return SheetPrefixNames{span.first, span.last == "B" ? "B2" : span.first};
    };
    EXPECT_EQ(rename_sheets("A:B!A1", keep, spans), "'A:B2'!A1");
    EXPECT_EQ(rename_sheets("Data:Z!A1:A2", keep, spans), "Data!A1:A2");
    EXPECT_EQ(rename_sheets("SUM(Gone:Z!A1)", keep, spans), "SUM(#REF!)");
}

TEST(RenameTables, ReplacesTheTableBeforeItsColumns) {
    const auto map = [](std::string_view name) -> std::optional<std::string> {
        if (name == "T1") return "T1_2";
        return {};
    };
    struct Case {
        const char *formula, *changed;
    } const cases[] = {
        {"SUM(Tab[a])", "unchanged"},
        {"\"Tax[a]\"&[@a]&[1]!Tax", "unchanged"},
        {"Tax(1)+S!Tax", "unchanged"},
        {"SUM(Tax[a],Tax[[#This Row],[Tax]])+ROWS(Tax)",
         "SUM(New[a],New[[#This Row],[Tax]])+ROWS(New)"},
        {"Tax[open", "unchanged"},
    };
    EXPECT_FALSE(rename_tables("T1+1", map)) << "a cell, not a table";
    const auto tax = [](std::string_view name) -> std::optional<std::string> {
        if (name == "Tax") return "New";
        return {};
    };
    for (const Case& c : cases)
        EXPECT_EQ(rename_tables(c.formula, tax).value_or("unchanged"), c.changed) << c.formula;
}

} // namespace
} // namespace workbook
