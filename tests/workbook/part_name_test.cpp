// SPDX-License-Identifier: Apache-2.0
//
// Part names, relationships and content types as producers write them.
#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "workbook/error.h"
#include "workbook/opc/content_types.h"
#include "workbook/opc/part_name.h"
#include "workbook/opc/relationships.h"

namespace workbook {
namespace {

using test::MemorySource;

TEST(ResolveTarget, FollowsEveryFormOfTarget) {
    struct Case {
        const char *source, *target, *part;
    } const cases[] = {
        {"", "xl/workbook.xml", "xl/workbook.xml"},
        {"", "/xl/workbook.xml", "xl/workbook.xml"},
        {"xl/workbook.xml", "worksheets/sheet1.xml", "xl/worksheets/sheet1.xml"},
        {"xl/workbook.xml", "/xl/worksheets/sheet1.xml", "xl/worksheets/sheet1.xml"},
        {"xl/workbook.xml", "\\xl\\worksheets\\Sheet1.xml", "xl/worksheets/sheet1.xml"},
        {"xl/workbook.xml", "worksheets\\sheet1.xml", "xl/worksheets/sheet1.xml"},
        {"xl/worksheets/sheet1.xml", "../drawings/drawing1.xml", "xl/drawings/drawing1.xml"},
        {"xl/workbook.xml", "./a//b/./c.xml", "xl/a/b/c.xml"},
        {"xl/workbook.xml", "../../../a.xml", "a.xml"},
        {"xl/workbook.xml", "my%20sheet.xml#A1", "xl/my sheet.xml"},
        {"xl/workbook.xml", "100%.xml", "xl/100%.xml"},
        {"xl/workbook.xml", "%4", "xl/%4"},
        {"xl/workbook.xml", "", "xl"},
        {"workbook.xml", "..", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(resolve_target(c.source, c.target), c.part) << c.target;
}

TEST(RelationshipsPartName, StandsInTheFolderBeside) {
    EXPECT_EQ(relationships_part_name(""), "_rels/.rels");
    EXPECT_EQ(relationships_part_name("xl/workbook.xml"), "xl/_rels/workbook.xml.rels");
}

TEST(ReadRelationships, TakesTransitionalStrictAndExternal) {
    MemorySource part(R"(<?xml version="1.0"?><p:Relationships xmlns:p="x">
<p:Relationship Id="a" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet" Target="s.xml"/>
<p:Relationship Id="b" Type="http://purl.oclc.org/ooxml/officeDocument/relationships/styles" Target="/st.xml" TargetMode="Internal"/>
<p:Relationship Id="c" Type="hyperlink" Target="http://example.com/A%20b" TargetMode="External"/>
<p:Relationship/></p:Relationships>)");
    const std::vector<Relationship> found = read_relationships(part, "xl/workbook.xml");
    ASSERT_EQ(found.size(), 4u);
    EXPECT_EQ(found[0].type + " " + found[0].target, "worksheet xl/s.xml");
    EXPECT_EQ(found[1].type + " " + found[1].target, "styles st.xml");
    EXPECT_TRUE(found[2].is_external);
    EXPECT_EQ(found[2].target, "http://example.com/A%20b");
    EXPECT_EQ(found[3].id, "");
}

TEST(ReadRelationships, RefusesPartsThatAreNotWellFormed) {
    for (const char* text :
         {"", "plain", "<Relationships>", "<Relationships><a></b></Relationships>"}) {
        MemorySource part(text);
        EXPECT_THROW(read_relationships(part, ""), Error) << text;
    }
}

TEST(ReadRelationships, LimitsWhatALongFolderNameMakesOfTheTargets) {
    std::string text = "<Relationships>";
    for (int i = 0; i < 2000; ++i)
        text += "<Relationship Target='b'/>";
    MemorySource part(text + "</Relationships>");
    EXPECT_THROW(read_relationships(part, std::string(60'000, 'x') + "/w.xml"), Error);
}

TEST(ContentTypes, IgnoresCaseAndPrefersOverrides) {
    MemorySource part(R"(<Types><Default Extension="XML" ContentType="application/xml"/>
<Override PartName="/xl/Workbook.xml" ContentType="Text/Main+xml"/></Types>)",
                      3);
    const ContentTypes types(part);
    EXPECT_EQ(types.of("XL\\workbook.xml"), "text/main+xml");
    EXPECT_EQ(types.of("xl/other.Xml"), "application/xml");
    EXPECT_EQ(types.of("xl/noextension"), "");
    EXPECT_EQ(types.find_part([](std::string_view type) { return type == "text/main+xml"; }),
              "xl/workbook.xml");
}

} // namespace
} // namespace workbook
