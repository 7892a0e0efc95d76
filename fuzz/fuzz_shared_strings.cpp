// SPDX-License-Identifier: Apache-2.0
//
// Shared strings parts, read in small pieces.
#include "fuzz/parse.h"
#include "workbook/xlsx/reading/shared_strings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return workbook::fuzz::run(data, size, [](const std::string& text) {
        workbook::test::MemorySource part(text, 100);
        workbook::StringPool strings;
        workbook::read_shared_strings(part, UINT64_MAX, strings);
    });
}
