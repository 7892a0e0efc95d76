// SPDX-License-Identifier: Apache-2.0
//
// Trees that are changed and written back: everything else stays as it was.
#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {
namespace {

std::string read_and_written(const std::string& text) {
    test::MemorySource part(text);
    return tree_text(read_editable_tree(part));
}

TEST(EditableTree, KeepsWhatItDoesNotKnow) {
    const struct {
        const char* what;
        std::string text;
    } cases[] = {
        {"declaration", "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><a/>"},
        {"white space", "<?xml version=\"1.0\"?><a>\n  <b> </b>\n\t<c/> </a>"},
        {"comments and instructions",
         "<?xml version=\"1.0\"?><!-- before --><a><?do this?><!-- in --></a><!-- behind -->"},
        {"CDATA", "<?xml version=\"1.0\"?><a><![CDATA[<&>]]></a>"},
        {"references",
         "<?xml version=\"1.0\"?><a b=\"&lt;&amp;&quot;&#10;&#13;\">&amp;&lt;&gt;</a>"},
        {"carriage return", "<?xml version=\"1.0\"?><a>one&#13;two</a>"},
        {"prefixes", "<?xml version=\"1.0\"?><x:a xmlns:x=\"urn:x\" x:b=\"'\"><x:c/></x:a>"},
        {"other languages", "<?xml version=\"1.0\"?><a b=\"\xC3\xA4\">\xE2\x82\xAC</a>"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(read_and_written(c.text), c.text) << c.what;
}

TEST(EditableTree, BecomesUtf8) {
    const std::string narrow = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>\xE9</a>";
    std::string wide = "\xFF\xFE";
    for (const char c : narrow)
        wide.append({c, '\0'});
    EXPECT_EQ(read_and_written(wide), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC3\xA9</a>");
    EXPECT_EQ(read_and_written("\xEF\xBB\xBF<a/>"), "<?xml version=\"1.0\"?><a/>");
}

} // namespace
} // namespace workbook
