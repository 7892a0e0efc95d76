// SPDX-License-Identifier: Apache-2.0
//
// Tokens of BIFF8 formulas, written as hexadecimal digits with a blank between tokens and a bar
// before what follows them.
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "foundation/files.h"
#include "workbook/cfb/compound_file.h"
#include "workbook/error.h"
#include "workbook/io/little_endian.h"
#include "workbook/library.h"
#include "workbook/xls/decryption.h"
#include "workbook/xls/formula/extern_sheets.h"
#include "workbook/xls/formula/formula_printer.h"
#include "workbook/xls/formula/token_rewriter.h"
#include "workbook/xls/formula/token_stream.h"

namespace workbook::biff {
namespace {

struct Formula {
    std::string bytes;
    std::size_t token_bytes = 0;
};

Formula formula_of(std::string_view digits) {
    Formula formula;
    bool has_bar = false;
    std::string pair;
    for (const char c : digits) {
        if (c == '|') has_bar = true;
        if (c == ' ' || c == '|') continue;
        pair += c;
        if (pair.size() < 2) continue;
        formula.bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
        pair.clear();
        if (!has_bar) formula.token_bytes = formula.bytes.size();
    }
    return formula;
}

TEST(ParseTokens, AcceptsNothingThatDoesNotFit) {
    const std::string_view formulas[] = {
        "44 01000280 03 1e 0500",
        "17 00 00 17 01 00 41 17 02 01 41004200",                      // strings of either width
        "19 04 0100 00000000 41 ff00",                                 // CHOOSE with one choice
        "60 00000000000000 |00 0000 01 0000000000000000",              // array of one number
        "60 00000000000000 |01 0000 02 0200 01 41004200 02 0000 00",   // of two strings
        "18 0b00000000 |01000000 1234abcd",                            // natural-language cells
        "26 00000000 0900 25 0000010000000100 |0100 0000010000000100", // memory token
    };
    for (const std::string_view digits : formulas) {
        SCOPED_TRACE(digits);
        const auto [bytes, token_bytes] = formula_of(digits);
        const std::string_view shorter = std::string_view(bytes).substr(0, bytes.size() - 1);
        const bool has_extra = bytes.size() > token_bytes;
        EXPECT_TRUE(parse_tokens(bytes, token_bytes));
        EXPECT_FALSE(parse_tokens(shorter, has_extra ? token_bytes : shorter.size()));
        EXPECT_FALSE(parse_tokens(bytes, bytes.size() + 1));
    }
    for (const std::string_view unknown : {"00", "1a", "1b", "30", "3e", "7f", "80", "c4 01000280"})
        EXPECT_FALSE(parse_tokens(formula_of(unknown).bytes, formula_of(unknown).token_bytes));
    EXPECT_TRUE(parse_tokens("", 0));
}

/// Every formula of BIFF8 records: the tokens' extra data must end where the record ends.
void check_formulas(std::string_view stream, int& formulas) {
    for (std::size_t at = 0; stream.size() - at >= 4;) {
        const std::uint16_t record = load_u16(stream.data() + at);
        const std::size_t size = load_u16(stream.data() + at + 2);
        const std::string_view body = stream.substr(at + 4, size);
        if (body.size() < size) return;
        at += 4 + size;
        const std::size_t header = record == 0x06    ? 22
                                   : record == 0x4BC ? 10
                                   : record == 0x221 ? 14
                                                     : 0;
        if (header == 0 || size < header) continue;
        const std::string_view formula = body.substr(header);
        const std::size_t token_bytes = load_u16(body.data() + header - 2);
        const auto tokens = parse_tokens(formula, token_bytes);
        ASSERT_TRUE(tokens) << at;
        std::size_t end = token_bytes;
        for (const FormulaToken& token : *tokens)
            end = std::max(end, token.extra + token.extra_bytes);
        EXPECT_EQ(end, formula.size()) << at;
        ++formulas;
    }
}

TEST(ParseTokens, SplitsEveryFormulaOfTheCorpus) {
    const std::filesystem::path folder(ZX_SHARED_DATA "/corpus/dev");
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no corpus";
    int formulas = 0;
    for (const auto& path : std::filesystem::directory_iterator(folder)) {
        if (path.path().extension() != ".xls") continue;
        SCOPED_TRACE(path.path());
        try {
            CompoundFile file(foundation::files::open_for_reading(path.path().u16string()));
            const CompoundEntry* entry = file.find_stream(u"Workbook");
            if (entry == nullptr) continue;
            std::string stream = file.read_stream(*entry);
            decrypt_workbook_stream(stream);
            constexpr std::uint16_t kBiff8 = 0x600;
            if (stream.size() > 8 && load_u16(stream.data() + 4) == kBiff8)
                check_formulas(stream, formulas);
        } catch (const Error&) {
        }
    }
    EXPECT_GT(formulas, 30'000);
}

TEST(RewriteTokens, ReplacesEntriesAndNames) {
    const struct {
        const char *before, *after;
    } cases[] = {
        {"5a 0000 05000200", "5a 0300 05000200"},
        {"5a 0200 05000200", "5a 0200 05000200"},
        {"3a 0100 05000200 1e 0100 03", "3c 0100 05000200 1e 0100 03"},
        {"7b 0100 0000010000000100", "7d 0100 0000010000000100"},
        {"43 05000000", "43 0f000000"},
        {"59 0000 07000000 59 0100 07000000", "59 0300 07000000 59 0100 07000000"},
        // A memory token whose second rectangle is gone, before an array.
        {"46 00000000 0f00 3a 0000 00000000 3a 0100 00000000 10 60 00000000000000"
         "|0200 0000000000000000 0000000000000000 00 0000 01 000000000000f03f",
         "47 17000000 0f00 3a 0300 00000000 3c 0100 00000000 10 60 00000000000000"
         "|00 0000 01 000000000000f03f"},
        // The lost reference follows what the memory token stands for.
        {"26 00000000 0900 25 0000010000000100 3a 0100 00000000 |0100 0000010000000100",
         "26 00000000 0900 25 0000010000000100 3c 0100 00000000 |0100 0000010000000100"},
        {"3a 0000 0500", "3a 0000 0500"}, // cut
    };
    TokenChanges changes;
    changes.extern_sheet = [](std::uint16_t entry) -> std::optional<std::uint16_t> {
        if (entry == 1) return {};
        return static_cast<std::uint16_t>(entry == 0 ? 3 : entry);
    };
    changes.name = [](std::uint32_t name) { return name + 10; };
    for (const auto& [before, after] : cases) {
        auto [bytes, token_bytes] = formula_of(before);
        const bool is_changed = rewrite_tokens(bytes, token_bytes, changes);
        EXPECT_EQ(bytes, formula_of(after).bytes) << before;
        EXPECT_EQ(is_changed, std::string_view(before) != after) << before;
    }
}

TEST(FormulaOfCell, TurnsOffsetsIntoReferences) {
    const struct {
        const char* shared;
        int row, column;
        const char* alone;
    } cases[] = {
        {"4c ffff ffc0 1e 0100 03", 10, 3, "44 0900 02c0 1e 0100 03"},
        {"6c ffff ffff", 10, 3, "64 0900 02c0"}, // all 14 bits of the column
        {"2c 0100 0580", 10, 3, "24 0b00 0580"},
        {"2c 0700 0540", 10, 3, "24 0700 0840"},
        {"4c ffff ffc0", 0, 0, "44 ffff ffc0"}, // wraps
        {"2d ffff 0100 00c0 01c0", 10, 3, "25 0900 0b00 03c0 04c0"},
        {"2d ffff 0100 00c0 01c0", 0, 0, "25 0100 ffff 00c0 01c0"},
        {"2d ffff 0500 0080 0000", 0, 0, "25 0500 ffff 0000 0080"}, // rows swap with their flags
        {"2d 0000 0100 fa40 0700", 0, 2, "25 0000 0100 0700 fc40"},
        {"24 0100 00c0 3a 0000 0100 00c0", 5, 5, "24 0100 00c0 3a 0000 0100 00c0"},
    };
    for (const auto& [shared, row, column, alone] : cases) {
        const auto [bytes, token_bytes] = formula_of(shared);
        EXPECT_EQ(formula_of_cell(bytes, token_bytes, row, column), formula_of(alone).bytes)
            << shared;
    }
    EXPECT_FALSE(formula_of_cell("\x2c", 1, 0, 0));
}

using Entries = std::vector<ExternSheet>;

TEST(FormulaText, IsWhatApplicationsShow) {
    FormulaContext context;
    context.sheets = {"Data", "It's", "Other"};
    context.names = {
        {"Rate", {}}, {"_xlnm.Print_Area", 0}, {"_xlfn.IFERROR", {}}, {"_xlfn.NEW", {}}, {"", {}},
        {"Own", 1},   {"_xlfn.STDEV.S", {}}};
    using Kind = SupportingBook::Kind;
    context.books = {{Kind::Own, {}, {}, {}},
                     {Kind::Other, "B 2.xls", {"S"}, {"Far"}},
                     {Kind::AddIn, {}, {}, {"EDATE"}},
                     {Kind::Unknown, {}, {}, {}}};
    // Own: Data, It's, Data to Other, the book, gone; then the other three.
    const std::string entries = formula_of("0900 0000 0000 0000 0000 0100 0100 0000 0000 0200"
                                           "0000 feff feff 0000 ffff ffff 0100 0000 0000"
                                           "0200 feff feff 0300 0000 0000 0100 0900 0900")
                                    .bytes;
    context.entries = ExternSheets(entries, 0);
    const struct {
        const char* digits;
        const char* text; ///< null for none
    } cases[] = {
        {"1e 0100 1e 0200 1e 0300 05 03", "1+2*3"},
        {"1e 0100 1e 0200 03 15 1e 0300 05", "(1+2)*3"},
        {"1e 0200 13 14", "-2%"},
        {"44 0000 00c0 44 0900 0140 0e", "A1<>B$10"},
        {"44 0000 0080 25 0000 ffff 0100 0200 11", "$A1:$B:$C"},
        {"25 0100 0300 00c0 ff c0", "2:4"},
        {"25 0100 0300 0000 ff00", "$2:$4"},
        {"24 0000 00c0 25 0000 0100 0000 0100 10", "A1,$A$1:$B$2"},
        {"17 03 00 612262 17 01 01 3d20 08", "\"a\"\"b\"&\"\xE2\x80\xBD\""},
        {"1d 01 1d 00 0b", "TRUE=FALSE"},
        {"1c 2a 1c 07 09", "#N/A<#DIV/0!"},
        {"1c 99", nullptr},
        {"1f 9a9999999999b93f", "0.1"},
        {"1f 0000000080842e41", "1000000"},
        {"1f 000000000000703d", "9.094947017729282E-13"},
        {"1f 000000000000f07f", nullptr},
        {"41 3500", nullptr}, // PtgFunc of a number that is none
        {"1e 0100 41 1800", "ABS(1)"},
        {"1e 0100 1e 0200 41 1b00", "ROUND(1,2)"},
        {"1e 0100 41 1b00", nullptr},         // an argument is missing
        {"1e 0100 1e 0200 41 0100", nullptr}, // IF takes several numbers of them
        {"1e 0100 16 42 02 0100", "IF(1,)"},
        {"42 00 4a00", "NOW()"},
        {"1e 0100 42 01 0080", nullptr}, // a command
        {"1e 0100 19 10 0000", "SUM(1)"},
        {"19 40 0100 1e 0100", "1"},
        {"23 01000000", "Rate"},
        {"23 02000000", "Print_Area"},
        {"23 05000000", nullptr},
        {"23 08000000", nullptr},
        {"23 00000000", nullptr},
        {"23 03000000 1e 0100 1e 0200 42 03 ff00", "IFERROR(1,2)"},
        {"23 04000000 42 01 ff00", "_xlfn.NEW()"},
        {"23 07000000 1e 0100 42 02 ff00", "STDEV.S(1)"},
        {"42 00 ff00", nullptr},
        {"5a 0000 0000 00c0", "Data!A1"},
        {"5a 0100 0000 00c0", "'It''s'!A1"},
        {"5b 0200 0000 ffff 00c0 01c0", "Data:Other!A:B"},
        {"5a 0300 0000 00c0", nullptr},
        {"5a 0400 0000 00c0", "#REF!"},
        {"5a 0500 0000 00c0", "'[B 2.xls]S'!A1"},
        {"5a 0600 0000 00c0", nullptr},
        {"5a 0700 0000 00c0", nullptr},
        {"5a 0800 0000 00c0", nullptr}, // a sheet that the other book does not have
        {"5a 0900 0000 00c0", nullptr},
        {"5c 0000 00000000", "Data!#REF!"},
        {"39 0300 06000000", "'It''s'!Own"},
        {"39 0500 01000000", "'B 2.xls'!Far"},
        {"39 0500 02000000", nullptr},
        {"39 0600 01000000 1e 0100 1e 0200 42 03 ff00", "EDATE(1,2)"},
        {"29 0700 25 0000 0000 00c0 01c0 42 01 0400", "SUM(A1:B1)"},
        {"60 00000000000000 |01 0100 01 000000000000f03f 02 0100 00 61 04 0100000000000000"
         "10 2a00000000000000",
         "{1,\"a\";TRUE,#N/A}"},
        {"60 00000000000000 |00 0000 00 0000000000000000", nullptr},
        {"18 0100000000", nullptr},
        {"2c 0000 00c0", nullptr},
        {"1e 0100 1e 0200", nullptr}, // two results
        {"03", nullptr},
        {"", nullptr},
    };
    for (const auto& c : cases) {
        const auto [bytes, token_bytes] = formula_of(c.digits);
        const auto text = formula_text(bytes, token_bytes, context);
        EXPECT_EQ(text, c.text ? std::optional<std::string>(c.text) : std::nullopt) << c.digits;
    }
    // What joining costs is limited.
    std::string deep = formula_of("1e 0100").bytes + std::string(8000, '\x13');
    EXPECT_FALSE(formula_text(deep, deep.size(), context));
}

TEST(FormulaText, IsAFormulaInEveryBookOfTheCorpus) {
    const std::filesystem::path folder(ZX_SHARED_DATA "/corpus/dev");
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no corpus";
    int formulas = 0;
    for (const auto& path : std::filesystem::directory_iterator(folder)) {
        if (path.path().extension() != ".xls") continue;
        const std::unique_ptr<Book> book = xlCreateBookW();
        if (!book->load(path.path().u16string())) continue;
        for (int i = 0; i < book->sheet_count(); ++i) {
            const Sheet* const sheet = book->get_sheet(i);
            if (sheet == nullptr || !sheet->knows_formulas()) continue;
            EXPECT_TRUE(sheet->visit_formulas(0, 65535, [&](const FormulaCell& formula) {
                ++formulas;
                const std::string problem = formula_problem(formula.text);
                const bool is_formula =
                    problem.empty() || formula.text.find(']') != formula.text.npos;
                EXPECT_TRUE(is_formula) << path.path() << ' ' << problem;
            }));
        }
    }
    EXPECT_GT(formulas, 30'000);
}

TEST(ExternSheets, FollowTheSheetsOfTheirBook) {
    const auto whole = kWholeBook, gone = kRemovedSheet;
    const struct {
        std::vector<std::optional<std::uint16_t>> now;
        Entries entries;
    } cases[] = {
        {{0, 1, 2, 3}, {{1, 0, 0}, {1, 1, 3}, {0, 2, 2}, {1, whole, whole}, {1, gone, gone}}},
        {{1, 2, 0, 3}, {{1, 1, 1}, {1, 2, 3}, {0, 2, 2}, {1, whole, whole}, {1, gone, gone}}},
        {{3, 2, 1, 0}, {{1, 3, 3}, {1, 0, 2}, {0, 2, 2}, {1, whole, whole}, {1, gone, gone}}},
        {{{}, {}, 0, 1},
         {{1, gone, gone}, {1, 0, 1}, {0, 2, 2}, {1, whole, whole}, {1, gone, gone}}},
        {{0, {}, 1, {}}, {{1, 0, 0}, {1, 1, 1}, {0, 2, 2}, {1, whole, whole}, {1, gone, gone}}},
        {{0}, {{1, 0, 0}, {1, gone, gone}, {0, 2, 2}, {1, whole, whole}, {1, gone, gone}}},
    };
    for (const auto& [now, entries] : cases) {
        ExternSheets sheets(formula_of("0500 010000000000 010001000300 000002000200"
                                       "0100feff feff 0100ffff ffff")
                                .bytes,
                            1);
        sheets.renumber(now);
        EXPECT_EQ(sheets.entries(), entries);
        EXPECT_EQ(ExternSheets(sheets.body(), 1).entries(), entries);
    }
}

TEST(ExternSheets, MakeEntriesForCopies) {
    ExternSheets sheets(formula_of("ffff 010000000000 010000000100 000000000000").bytes, 1);
    EXPECT_EQ(sheets.entries().size(), 3u); // of 65,535 that it claims
    EXPECT_EQ(sheets.for_copy(0, 0, 2), 3); // the source alone
    EXPECT_EQ(sheets.for_copy(0, 0, 2), 3); // once
    EXPECT_EQ(sheets.for_copy(1, 0, 2), 1); // a span
    EXPECT_EQ(sheets.for_copy(2, 0, 2), 2); // another book
    EXPECT_EQ(sheets.for_copy(9, 0, 2), 9); // no entry at all
    EXPECT_EQ(sheets.entries().back(), (ExternSheet{1, 2, 2}));
    EXPECT_FALSE(sheets.is_removed(3));
    EXPECT_TRUE(sheets.is_removed(9));
    const std::string full = "\xff\xff" + std::string(6 * 0xFFFF, '\0');
    EXPECT_FALSE(ExternSheets(full, 1).find_or_add(1, 2));
}

} // namespace
} // namespace workbook::biff
