// SPDX-License-Identifier: Apache-2.0
//
// Formulas of defined names.
#include "fuzz/parse.h"
#include "workbook/xlsx/reading/defined_names.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return workbook::fuzz::run(data, size,
                               [](const std::string& text) { workbook::parse_named_area(text); });
}
