// SPDX-License-Identifier: Apache-2.0
//
// Formats that are added to a styles part; all else in it stays.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "workbook/error.h"
#include "workbook/xlsx/reading/styles_reader.h"
#include "workbook/xlsx/writing/styles_writer.h"

namespace workbook {
namespace {

std::string with_date_format(const std::string& part) {
    test::MemorySource first(part), second(part);
    CellFormats styles = read_styles(first);
    const std::size_t known = styles.size();
    styles.add({22});
    return append_cell_formats(second, styles, known, styles.size());
}

const std::string kHead = "<?xml version=\"1.0\"?>";
const std::string kXf = "xf numFmtId=\"22\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" "
                        "applyNumberFormat=\"1\"/>";

TEST(StylesWriter, AppendsFormats) {
    const struct {
        const char* what;
        std::string before, after;
    } cases[] = {
        {"behind the others",
         "<styleSheet><!-- x --><cellXfs count=\"1\"><xf "
         "numFmtId=\"14\"/></cellXfs><dxfs/></styleSheet>",
         "<styleSheet><!-- x --><cellXfs count=\"2\"><xf numFmtId=\"14\"/><" + kXf +
             "</cellXfs><dxfs/></styleSheet>"},
        {"white space stays", "<styleSheet>\n  <cellXfs>\n    <xf/>\n  </cellXfs>\n</styleSheet>",
         "<styleSheet>\n  <cellXfs count=\"2\">\n    <xf/><" + kXf +
             "\n  </cellXfs>\n</styleSheet>"},
        {"a wrong count is put right", "<styleSheet><cellXfs count=\"9\"/></styleSheet>",
         "<styleSheet><cellXfs count=\"1\"><" + kXf + "</cellXfs></styleSheet>"},
        {"prefix",
         "<x:styleSheet xmlns:x=\"urn:x\"><x:cellXfs "
         "count=\"1\"><x:xf/></x:cellXfs></x:styleSheet>",
         "<x:styleSheet xmlns:x=\"urn:x\"><x:cellXfs count=\"2\"><x:xf/><x:" + kXf +
             "</x:cellXfs></x:styleSheet>"},
        {"made in its place", "<styleSheet><cellStyleXfs/><cellStyles/><dxfs/></styleSheet>",
         "<styleSheet><cellStyleXfs/><cellXfs count=\"1\"><" + kXf +
             "</cellXfs><cellStyles/><dxfs/></styleSheet>"},
        {"made at the end", "<styleSheet><fonts/></styleSheet>",
         "<styleSheet><fonts/><cellXfs count=\"1\"><" + kXf + "</cellXfs></styleSheet>"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(with_date_format(kHead + c.before), kHead + c.after) << c.what;
    EXPECT_THROW(with_date_format("<html/>"), Error);
}

TEST(StylesWriter, ExtendsTheDefaultPart) {
    test::MemorySource part(with_date_format(std::string(default_styles_part())));
    const CellFormats styles = read_styles(part);
    ASSERT_EQ(styles.size(), 2u);
    EXPECT_FALSE(styles.is_date(0));
    EXPECT_TRUE(styles.is_date(1));
    EXPECT_TRUE(styles[1].locked);
}

} // namespace
} // namespace workbook
