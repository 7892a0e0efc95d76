// SPDX-License-Identifier: Apache-2.0
//
// Styles parts, and the input as a number format code.
#include "fuzz/parse.h"
#include "workbook/number_format/date_format.h"
#include "workbook/xlsx/reading/styles_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return workbook::fuzz::run(data, size, [](const std::string& text) {
        workbook::is_date_format(text);
        workbook::test::MemorySource part(text);
        const workbook::CellFormats styles = workbook::read_styles(part);
        styles.is_date(styles.size());
    });
}
