// SPDX-License-Identifier: Apache-2.0
//
// Relationships parts and content types.
#include "fuzz/parse.h"
#include "workbook/opc/content_types.h"
#include "workbook/opc/relationships.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return workbook::fuzz::run(data, size, [](const std::string& text) {
        workbook::test::MemorySource types(text);
        workbook::ContentTypes(types).of("xl/workbook.xml");
        workbook::test::MemorySource part(text);
        workbook::read_relationships(part, "xl/workbook.xml");
    });
}
