// SPDX-License-Identifier: Apache-2.0
//
// Formula texts: what is moved there and back, or renamed to the same names, must not change
// further.
#include <cstdlib>

#include "fuzz/parse.h"
#include "workbook/xlsx/formula/formula_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace workbook;
    return fuzz::run(data, size, [](const std::string& text) {
        const std::string once = translate_formula(text, 0, 0);
        if (translate_formula(once, 0, 0) != once) std::abort();
        translate_formula(text, 3, -2);
        const auto keep = [](std::string_view name) { return std::string{name}; };
        if (rename_sheets(text, keep)) std::abort();
        rename_sheets(text, [](std::string_view) { return std::string("It's"); });
        rename_sheets(text, [](std::string_view) { return std::nullopt; });
    });
}
