// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "workbook/xlsx/reading/styles_reader.h"
#include "workbook/xlsx/reading/workbook_locator.h"
#include "workbook/xlsx/reading/workbook_part.h"
#include "workbook/xlsx/reading/worksheet_reader.h"
#include "workbook/xlsx/writing/blank_package.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {
namespace {

using std::chrono::sys_days;
using std::chrono::system_clock;
using ::testing::HasSubstr;

constexpr system_clock::time_point kNow =
    sys_days(std::chrono::year(2031) / 2 / 3) + std::chrono::hours(4) + std::chrono::seconds(65);

TEST(BlankPackage, HoldsWellFormedPartsOfKnownTypes) {
    const auto package = make_blank_package(kNow);
    for (const ZipEntry& entry : package->archive().entries()) {
        EXPECT_NO_THROW(read_tree(*package->open_part(entry.name))) << entry.name;
        EXPECT_NE(package->content_types().of(entry.name), "") << entry.name;
    }
    for (const std::string part : {"", "xl/workbook.xml"})
        for (const Relationship& relationship : package->relationships(part))
            EXPECT_TRUE(package->has_part(relationship.target)) << relationship.target;
}

TEST(BlankPackage, IsAWorkbookWithoutSheets) {
    const auto package = make_blank_package(kNow);
    EXPECT_EQ(locate_workbook(*package), "xl/workbook.xml");
    const auto styles_part = package->open_part("xl/styles.xml");
    const CellFormats styles = read_styles(*styles_part);
    ASSERT_EQ(styles.size(), 1u);
    EXPECT_EQ(styles[0].num_format, 0u);
    const std::string core = test::read_all(*package->open_part("docprops/core.xml"));
    EXPECT_THAT(core,
                HasSubstr("<dcterms:created xsi:type=\"dcterms:W3CDTF\">2031-02-03T04:01:05Z<"));
    EXPECT_THAT(core,
                HasSubstr("<dcterms:modified xsi:type=\"dcterms:W3CDTF\">2031-02-03T04:01:05Z<"));
}

TEST(BlankPackage, HasAThemeWithAllColours) {
    const auto package = make_blank_package(kNow);
    const auto tree = read_tree(*package->open_part("xl/theme/theme1.xml"));
    const auto elements = child_element(root_element(tree, "theme"), "themeElements");
    const auto count = [](pugi::xml_node node) {
        return std::distance(node.children().begin(), node.children().end());
    };
    EXPECT_EQ(count(child_element(elements, "clrScheme")), 12);
    EXPECT_EQ(count(child_element(elements, "fontScheme")), 2);
    const auto formats = child_element(elements, "fmtScheme");
    for (const char* list : {"fillStyleLst", "lnStyleLst", "effectStyleLst", "bgFillStyleLst"})
        EXPECT_EQ(count(child_element(formats, list)), 3) << list;
}

} // namespace
} // namespace workbook
