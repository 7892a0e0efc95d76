// SPDX-License-Identifier: Apache-2.0
//
// The workbook part of an otherwise sound package.
#include "fuzz/parse.h"
#include "tests/workbook/zip_builder.h"
#include "workbook/xlsx/reading/workbook_part.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return workbook::fuzz::run(data, size, [](const std::string& text) {
        const std::string relationships =
            R"(<Relationships><Relationship Id="rId1" Type="worksheet" Target="s.xml"/></Relationships>)";
        workbook::OpcPackage package(foundation::files::memory_file(workbook::test::build_zip(
            {{.name = "xl/workbook.xml", .content = text, .stored = true},
             {.name = "xl/_rels/workbook.xml.rels", .content = relationships, .stored = true},
             {.name = "xl/s.xml", .content = "<worksheet/>", .stored = true}})));
        const workbook::WorkbookPart book = workbook::read_workbook_part(package);
        for (const workbook::DefinedName& name : book.defined_names)
            workbook::find_named_cells(book.defined_names, name.name, 0, u"Data");
    });
}
