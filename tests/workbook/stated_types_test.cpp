// SPDX-License-Identifier: Apache-2.0
//
// Content types of parts that a change of the book makes.
#include <gtest/gtest.h>

#include "tests/workbook/structured_book.h"
#include "workbook/io/text_source.h"
#include "workbook/opc/content_types.h"
#include "workbook/opc/part_name.h"

namespace workbook {
namespace {

// Producers may state every part's type for itself.
TEST(NewParts, HaveATypeInAPackageWithoutDefaults) {
    std::vector<test::ZipItem> items = test::structured_book();
    std::string& types = items.front().content;
    const std::string usual = "<Default Extension=\"rels\"";
    const auto at = types.find(usual);
    ASSERT_NE(at, std::string::npos);
    types.replace(at, usual.size(), "<Override PartName=\"/xl/_rels/workbook.xml.rels\"");
    test::EditedBook book(items);
    book.editor().copy_sheet(0, u"Copy", book.sheet(0));
    book.editor().insert_sheet(0, u"New");
    const std::string text = book.saved("[Content_Types].xml");
    TextSource source("types", text);
    const ContentTypes stated(source);
    std::size_t links = 0;
    for (const auto& [part, content] : book.changed_parts()) {
        if (part == canonical_part_name("[Content_Types].xml")) continue;
        EXPECT_NE(stated.of(part), "") << part;
        links += part.ends_with(".rels") ? 1 : 0;
    }
    EXPECT_EQ(links, 2u) << "of the workbook and of the copied sheet";
}

} // namespace
} // namespace workbook
