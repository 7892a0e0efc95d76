// SPDX-License-Identifier: Apache-2.0
//
// Tokens of BIFF8 formulas: whatever is rewritten can still be parsed, into as many tokens.
#include <cstdlib>

#include "fuzz/parse.h"
#include "workbook/io/little_endian.h"
#include "workbook/xls/formula/extern_sheets.h"
#include "workbook/xls/formula/formula_printer.h"
#include "workbook/xls/formula/token_rewriter.h"
#include "workbook/xls/formula/token_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace workbook;
    return fuzz::run(data, size, [](const std::string& input) {
        if (input.size() < 2) return;
        const std::size_t token_bytes = load_u16(input.data());
        std::string formula = input.substr(2);
        const auto tokens = biff::parse_tokens(formula, token_bytes);

        biff::ExternSheets sheets(formula, 0);
        biff::TokenChanges changes;
        changes.extern_sheet = [&](std::uint16_t entry) -> std::optional<std::uint16_t> {
            if (sheets.is_removed(entry)) return {};
            return sheets.for_copy(entry, 1, 2);
        };
        changes.name = [](std::uint32_t name) { return name + 1; };
        sheets.renumber({0, 1, {}, 2});
        biff::FormulaContext context;
        context.sheets = {"Data", "A b"};
        context.names = {{"Rate", {}}, {"Own", 1}};
        context.books = {{biff::SupportingBook::Kind::Own, {}, {}, {}},
                         {biff::SupportingBook::Kind::Other, "B.xls", {"S"}, {"Far"}}};
        context.entries = sheets;
        const auto text = biff::formula_text(formula, token_bytes, context);
        if (text && (!tokens || text->size() > 64u << 10)) std::abort();

        const auto alone = biff::formula_of_cell(formula, token_bytes, 65535, 255);
        if (alone.has_value() != tokens.has_value()) std::abort();
        const bool is_changed = biff::rewrite_tokens(formula, token_bytes, changes);
        if (!tokens) {
            if (is_changed) std::abort();
            return;
        }
        const auto again = biff::parse_tokens(formula, token_bytes);
        if (!again || again->size() != tokens->size()) std::abort();
        if (!biff::parse_tokens(*alone, token_bytes)) std::abort();
    });
}
